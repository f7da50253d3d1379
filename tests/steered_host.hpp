// What tests see and steer of the host that they run on: here the shipped one. tests/foreign_host
// has another header of this name, found first where the tests run there.
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
constexpr bool kIsStrict =
    false;  // it tells locks and refusals, and withholds maps and memory when told to
constexpr bool kCutsFields =
    false;  // HostText_AppendPadded does, and does not append all of a longer text
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

// Locks taken (true) and given back since the last time, nested ones left out; what the host was
// asked for against its contract.
inline std::vector<std::pair<const HostLock *, bool>> takeLocks() {
    return {};
}
inline std::string takeRefusals() {
    return "";
}

// Whether a map can be had. Lets the n-th call from now on that needs memory fail, and with
// bFromThereOn the later ones too, until that is ended, which tells whether any did.
constexpr bool hasMaps() {
    return true;
}
inline void setMaps(bool) {}
inline void startFailing(int32_t, bool) {}
inline bool endFailing() {
    return false;
}

// Allocations, maps and locks not given back.
inline int64_t nLive() {
    return HostMem_GetNumLive();
}

// A stream of bytes to be read, and a text to be appended to, on a strict host nRoom bytes at most.
struct Input {
    Input(const char *pBytes, size_t nBytes)
        : pOwned(HostInputStream_CreateInMemory(pBytes, nBytes), HostInputStream_Close) {}
    std::unique_ptr<HostInputStream, decltype(&HostInputStream_Close)> pOwned;
    HostInputStream *pStream = pOwned.get();
};
struct Text {
    explicit Text(uint64_t /*nRoom*/) : pOwned(HostText_Create(), HostText_Destroy) {}
    std::string seen() const { return HostText_GetString(pText); }
    std::unique_ptr<HostText, decltype(&HostText_Destroy)> pOwned;
    HostText *pText = pOwned.get();
};

}  // namespace steered
