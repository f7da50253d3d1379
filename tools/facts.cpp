#include "tools/facts.hpp"

#include <algorithm>
#include <array>

namespace tool {

void add(BlockFacts &sum, const BlockFacts &block) {
    sum.size += block.size;
    sum.used += block.used;
    sum.dead += block.dead;
    sum.names += block.names;
}

void visitRuns(NamesManager *mgr, const std::function<void(const TextRun &run)> &visit) {
    for (int32_t i = 0; mgr->pSegments && i < mgr->nSegments; ++i) {
        const NameSegment &segment = mgr->pSegments[i];
        visit({segment.iBlock, segment.nOffset, segment.nBytes, segment.iFirst});
    }
    std::array<int32_t, 4096> lengths;
    for (int32_t first = 0; mgr->pPositions && first < mgr->nNames;) {
        const int32_t count = std::min(mgr->nNames - first, static_cast<int32_t>(lengths.size()));
        NamesManager_GetNameLengths(mgr, first, first + count - 1, 0, lengths.data());
        for (int32_t i = 0; i < count; ++i) {
            const NamePosition &position = mgr->pPositions[first + i];
            visit({position.iBlock, position.nOffset, lengths[static_cast<size_t>(i)] + 1,
                   first + i});
        }
        first += count;
    }
}

Facts gatherFacts(NamesManager *mgr) {
    Facts facts{.bPositions = mgr->pPositions != nullptr,
                .longest = NamesManager_GetMaxNameLength(mgr),
                .blocks = {}};
    std::vector<int32_t> live(static_cast<size_t>(mgr->nBlocks));
    visitRuns(mgr,
              [&live](const TextRun &run) { live[static_cast<size_t>(run.iBlock)] += run.nBytes; });
    for (size_t i = 0; i < live.size(); ++i) {
        const NameStorageBlock &block = mgr->pBlocks[i];
        facts.blocks.push_back(
            {block.nSize, block.nUsed, block.nUsed - live[i], block.nNamesInBlock});
        facts.live += live[i];
        facts.dead += block.nUsed - live[i];
        facts.free += block.nSize - block.nUsed;
    }
    return facts;
}

}  // namespace tool
