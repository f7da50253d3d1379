// What the tests see of the memory service, and how they make it fail, for the whole process. No
// library that a program links has it.
#pragma once

#include <cstdint>

#include "host/host_memory.h"

// Makes the nCountdown-th call from now (1: the next one) that allocates or resizes fail, and every
// later one too when bFromThereOn is non-zero. 0 lets every call through again. Also starts
// HostMem_GetNumCalls at 0.
void HostMem_FailAt(int64_t nCountdown, int32_t bFromThereOn);

// Makes every call fail from now on that asks for more than nBytes.
void HostMem_FailBeyond(uint64_t nBytes);

// The number of calls that allocated or resized, or were made to fail, since the last
// HostMem_FailAt or the start of the process.
int64_t HostMem_GetNumCalls();

// The number of allocations not given back yet.
int64_t HostMem_GetNumLive();
