// What tests see and steer of the foreign host: a second implementation of the host services, with
// other internals than the shipped one and stricter. It stands for any other host that the module
// is moved to. Where its types do not differ it uses the shipped declarations.
#pragma once
#include <atomic>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/host_lock.h"
#include "host/host_stream.h"
#include "host/host_text.h"

struct ForeignHost {
    std::atomic<int64_t> nFailAt{0};  // the n-th of the calls that need memory fails, locks, maps
                                      // and insertions too; 0: none
    std::atomic<bool> bFailFromThere{false};  // so do all later ones
    std::atomic<bool> bFailMaps{false};       // no map can be created
    std::atomic<int64_t> nLive{0};            // allocations, maps and locks not given back
    std::atomic<int64_t> nLockDepth{0};       // acquisitions not released
    std::atomic<int64_t> nErrors{0};          // errors reported
    std::atomic<int64_t> nAssertions{0};      // violated expectations reported
    // for one thread only:
    std::set<std::string> failedSites = {};  // the calls that were made to fail, each as FILE:LINE
    std::string refusals = {};               // what was asked for against the services' contracts
    std::vector<std::pair<const HostLock *, bool>> heldLocks =
        {};  // taken and given back, nested ones left out, the first few
};
extern ForeignHost g_foreignHost;

constexpr int32_t kForeignReadError = 77;

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
