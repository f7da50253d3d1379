#include "host/host_problem.h"

#include "host/host_memory.h"

namespace {

constexpr uint64_t kSourceTag = 0x686f737470726f62;  // "hostprob"

}  // namespace

struct ZOLTproblem {};

int32_t ZOLTcreateprob(ZOLTprob *pProb) {
    *pProb = static_cast<ZOLTprob>(HostMem_AllocRecord(sizeof(ZOLTproblem), kSourceTag, __LINE__));
    return *pProb == nullptr ? 1 : 0;
}

int32_t ZOLTdestroyprob(ZOLTprob prob) {
    HostMem_Free(prob, kSourceTag, __LINE__);
    return 0;
}
