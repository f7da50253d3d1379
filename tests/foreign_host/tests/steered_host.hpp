// What tests see and steer of the host that they run on: here the foreign one.
// tests/steered_host.hpp, in front of which this is found, tells what each of these is.
#pragma once

#include "foreign_host.h"

namespace steered {

constexpr bool kHoldsEqualKeys = false;
constexpr bool kIsStrict = true;
constexpr bool kCutsFields = true;
constexpr int32_t kEndOfInput = kForeignReadError;

struct Reports {
    int64_t nErrors, nAssertions;
};
inline Reports takeReports() {
    return {g_foreignHost.nErrors.exchange(0), g_foreignHost.nAssertions.exchange(0)};
}

inline auto takeLocks() {
    return std::exchange(g_foreignHost.heldLocks, {});
}
inline std::string takeRefusals() {
    return std::exchange(g_foreignHost.refusals, "");
}

inline bool hasMaps() {
    return !g_foreignHost.bFailMaps;
}
inline void setMaps(bool bMaps) {
    g_foreignHost.bFailMaps = !bMaps;
}
inline void startFailing(int32_t n, bool bFromThereOn) {
    g_foreignHost.failedSites.clear();
    g_foreignHost.bFailFromThere = bFromThereOn;
    g_foreignHost.nFailAt = n;
}
inline bool endFailing() {
    g_foreignHost.nFailAt = 0;
    return !g_foreignHost.failedSites.empty();
}

inline int64_t nLive() {
    return g_foreignHost.nLive;
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
