// What the tests see of the memory service, and how they make it fail, for the whole process. No
// library that a program links has it.
#pragma once

#include <cstdint>
#include <string>

#include "host/host_memory.h"

// A sanitizer keeps books on memory, even on what nobody touches, and fences allocations itself.
#if defined(__SANITIZE_ADDRESS__)
#define MEMORY_IS_WATCHED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MEMORY_IS_WATCHED
#endif
#endif

// Makes the nCountdown-th call from now (1: the next one) that allocates or resizes fail, and every
// later one too when bFromThereOn is non-zero. 0 lets every call through again.
void HostMem_FailAt(int64_t nCountdown, int32_t bFromThereOn);

// Counts as a call that obtains nBytes; false: it is to fail. For services that take memory
// elsewhere.
bool HostMem_MayObtain(uint64_t nBytes);

// While one lives, its thread's calls are neither counted nor made to fail.
struct SparedMemory {
    SparedMemory() { ++g_nDepth; }
    ~SparedMemory() { --g_nDepth; }
    static inline thread_local int g_nDepth = 0;
};

// Whether any call was made to fail since the last HostMem_FailAt.
bool HostMem_HasFailed();

// Makes every call fail from now on that asks for more than nBytes.
void HostMem_FailBeyond(uint64_t nBytes);

// The number of allocations not given back yet.
int64_t HostMem_GetNumLive();

// Notes what was asked for against a service's contract, where that is so; what was noted since the
// last time, a sentence each.
void HostMem_Refuse(bool bRefused, const char *szWhat);
std::string HostMem_TakeRefusals();
