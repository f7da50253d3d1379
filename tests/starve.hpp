// Scenarios without memory.
#pragma once

#include <gtest/gtest.h>

#include "tests/counted_host/counted_memory.h"

// Runs scenario with the first, then the second, then the n-th allocation failing, alone and with
// all later ones, until none fails any more.
template <typename Scenario>
void starve(Scenario scenario) {
    const int64_t nLive = HostMem_GetNumLive();
    for (const int32_t bFromThereOn : {0, 1}) {
        bool bFailed = true;
        for (int64_t n = 1; bFailed; ++n) {
            HostMem_FailAt(n, bFromThereOn);
            scenario();
            bFailed = HostMem_HasFailed();
            HostMem_FailAt(0, 0);
            ASSERT_EQ(nLive, HostMem_GetNumLive()) << "leak after failure " << n;
        }
    }
}
