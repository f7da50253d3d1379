// What tests see and steer of the host that they run on, beside its memory: here the shipped one.
// tests/foreign_host has another header of this name, found first where the tests run there.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/host_lock.h"
#include "host/host_report.h"
#include "host/host_stream.h"
#include "host/host_text.h"
#include "tests/counted_host/counted_memory.h"

namespace steered {

constexpr bool kHoldsEqualKeys = true;  // a map, given a key that it has already, holds both; else
                                        // it refuses and does not count it
constexpr bool kIsStrict = false;       // locks are noted, maps and room in texts can be withheld
constexpr bool kCutsFields = false;     // HostText_AppendPadded cuts a text longer than its field
constexpr int32_t kEndOfInput = HostStreamError_End;

// Reports since the last time, and from the first time on no longer printed.
struct Reports {
    int32_t nErrors, nAssertions;
};
inline Reports g_reports = {};
constexpr HostReportHandlers kCounting = {
    nullptr, [](void *, uint64_t, int32_t, int32_t, const char *) { ++g_reports.nErrors; },
    [](void *, uint64_t, int32_t, int32_t, const char *) { ++g_reports.nAssertions; }};
inline Reports takeReports() {
    Host_SetReportHandlers(&kCounting);
    return std::exchange(g_reports, {});
}

// Locks taken (true) and given back since the last time, nested ones left out.
inline std::vector<std::pair<const HostLock *, bool>> takeLocks() {
    return {};
}

// Whether a map can be had.
constexpr bool hasMaps() {
    return true;
}
inline void setMaps(bool) {}

// A stream of bytes to be read, and a text to be appended to, on a strict host nRoom bytes at most.
// Making them never fails.
struct Input {
    Input(const char *pBytes, size_t nBytes)
        : pOwned((SparedMemory(), HostInputStream_CreateInMemory(pBytes, nBytes)),
                 HostInputStream_Close) {}
    std::unique_ptr<HostInputStream, decltype(&HostInputStream_Close)> pOwned;
    HostInputStream *pStream = pOwned.get();
};
struct Text {
    explicit Text(uint64_t /*nRoom*/)
        : pOwned((SparedMemory(), HostText_Create()), HostText_Destroy) {}
    std::string seen() const { return HostText_GetString(pText); }
    std::unique_ptr<HostText, decltype(&HostText_Destroy)> pOwned;
    HostText *pText = pOwned.get();
};

}  // namespace steered
