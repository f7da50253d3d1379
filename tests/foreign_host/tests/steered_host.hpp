// What tests see and steer of the foreign host, a second implementation of the services with other
// internals than the shipped one and stricter. It stands for any other host that the module is
// moved to; where its types do not differ it uses the shipped declarations.
// tests/steered_host.hpp, before which this is found, says what each of these is.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/host_lock.h"
#include "host/host_stream.h"
#include "host/host_text.h"
#include "tests/counted_host/counted_memory.h"

// Delivers nLeft bytes and then fails, after handing out those that it still has.
struct HostInputStream {
    const char *pNext;
    uint64_t nLeft;
};

// Takes nRoom bytes and then fails; cuts a padded string that is longer than its field.
struct HostText {
    uint64_t nRoom;
    std::string text;
};

namespace steered {

constexpr bool kHoldsEqualKeys = false, kIsStrict = true, kCutsFields = true;
constexpr int32_t kEndOfInput = 77;

struct Reports {
    int32_t nErrors, nAssertions;
};
inline Reports g_reports = {};
inline Reports takeReports() {
    return std::exchange(g_reports, {});
}

using Locks = std::vector<std::pair<const HostLock *, bool>>;
inline Locks g_locks;  // the first few
inline Locks takeLocks() {
    return std::exchange(g_locks, {});
}

inline bool g_bMaps = true;
inline bool hasMaps() {
    return g_bMaps;
}
inline void setMaps(bool bMaps) {
    g_bMaps = bMaps;
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
