#include "host/host_problem.h"

#include "host/host_memory.h"

namespace host {
constexpr uint64_t kProblemSourceTag = 0x686f737470726f62;  // "hostprob"
}  // namespace host

struct ZOLTproblem {};

int32_t ZOLTcreateprob(ZOLTprob *pProb) {
    *pProb = static_cast<ZOLTprob>(
        HostMem_AllocRecord(sizeof(ZOLTproblem), host::kProblemSourceTag, __LINE__));
    return *pProb == nullptr ? 1 : 0;
}

int32_t ZOLTdestroyprob(ZOLTprob prob) {
    HostMem_Free(prob, host::kProblemSourceTag, __LINE__);
    return 0;
}
