// What tests see and steer of the host that they run on: here the foreign one.
// tests/steered_host.hpp, before which this is found, says what each of these is.
#pragma once

#include "foreign_host.h"
#include "tests/counted_host/counted_memory.h"

namespace steered {

constexpr bool kHoldsEqualKeys = false;
constexpr bool kIsStrict = true;
constexpr bool kCutsFields = true;
constexpr int32_t kEndOfInput = kForeignReadError;

struct Reports {
    int32_t nErrors, nAssertions;
};
inline Reports takeReports() {
    return {std::exchange(g_foreignHost.nErrors, 0), std::exchange(g_foreignHost.nAssertions, 0)};
}
inline auto takeLocks() {
    return std::exchange(g_foreignHost.heldLocks, {});
}

inline bool hasMaps() {
    return !g_foreignHost.bFailMaps;
}
inline void setMaps(bool bMaps) {
    g_foreignHost.bFailMaps = !bMaps;
}

struct Input {
    Input(const char *pBytes, size_t nBytes) : input{pBytes, nBytes} {}
    HostInputStream input;
    HostInputStream *pStream = &input;
};
struct Text {
    explicit Text(uint64_t nRoom) : text{nRoom, ""} {}
    std::string seen() const { return text.text; }
    HostText text;
    HostText *pText = &text;
};

}  // namespace steered
