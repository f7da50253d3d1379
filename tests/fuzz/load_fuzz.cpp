// Loads any bytes into a manager that holds a name. What is accepted goes through whatever can be
// done with a manager; what is refused must leave what a clear does.
#include <iostream>

#include "tests/counted_host/counted_memory.h"
#include "tests/histories.hpp"
#include "tests/loaded_manager.hpp"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    HostMem_FailBeyond(64 * 1024);  // no time is to go into memory that images only claim
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t nBytes) {
    const int64_t nLive = HostMem_GetNumLive();
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
    NamesManager_AddName(mgr, 0, 0, "before");
    const std::string image = loaded::Record::bytesOf(pData, nBytes);
    const int32_t nStatus = loaded::load(mgr, image);
    std::string fault = loaded::faultAfterLoad(mgr, image, nStatus, nStatus == 0 ? 2 : 0);
    if (HostMem_GetNumLive() != nLive) { fault += "Memory was lost."; }
    if (fault.empty()) { return 0; }
    std::cerr << fault << '\n';
    std::abort();
}
