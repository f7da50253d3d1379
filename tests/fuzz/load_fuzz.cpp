// Loads any bytes, then does with what was accepted whatever can be done with a manager.
#include <iostream>

#include "tests/counted_host/counted_memory.h"
#include "tests/fuzz/seeds.hpp"
#include "tests/loaded_manager.hpp"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    std::vector<std::string> seeds;
    for (const loaded::Record &record : loaded::soundRecords())
        seeds.push_back(loaded::imageOf(record));
    writeSeeds(seeds);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t nBytes) {
    const std::string image = loaded::Record::bytesOf(pData, nBytes);
    const int64_t nLive = HostMem_GetNumLive();
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
    NamesManager_AddName(mgr, 0, 0, "before");
    const int32_t nStatus = loaded::load(mgr, image);
    std::string fault = loaded::faultAfterLoad(mgr, image, nStatus);
    NamesManager_Destroy(mgr);
    if (HostMem_GetNumLive() != nLive) fault += " Memory was lost.";
    if (!fault.empty()) {
        std::cerr << fault << '\n';
        std::abort();
    }
    return 0;
}
