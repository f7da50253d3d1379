// What tests see and steer of the foreign host: a second implementation of the host services, with
// other internals than the shipped one and stricter. It stands for any other host that the module
// is moved to. Where its types do not differ it uses the shipped declarations.
#pragma once
#include <string>
#include <utility>
#include <vector>

#include "host/host_lock.h"
#include "host/host_stream.h"
#include "host/host_text.h"

// For one thread only.
struct ForeignHost {
    bool bFailMaps = false;                // no map can be created
    int32_t nErrors = 0, nAssertions = 0;  // reported
    // Locks taken (true) and given back, nested ones left out, the first few.
    std::vector<std::pair<const HostLock *, bool>> heldLocks = {};
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
