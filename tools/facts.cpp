#include "tools/facts.hpp"

#include <algorithm>
#include <array>

namespace tool {
namespace {

void visitSegments(const NamesManager *mgr, const SpanVisitor &visit) {
    for (int32_t i = 0; i < mgr->nSegments; ++i) {
        const NameSegment &segment = mgr->pSegments[i];
        visit({segment.iBlock, segment.nOffset, segment.nBytes, segment.iFirst});
    }
}

void visitPositions(NamesManager *mgr, const SpanVisitor &visit) {
    std::array<int32_t, 4096> lengths;
    for (int32_t first = 0; first < mgr->nNames;) {
        const int32_t count = std::min(mgr->nNames - first, static_cast<int32_t>(lengths.size()));
        NamesManager_GetNameLengths(mgr, first, first + count - 1, 0, lengths.data());
        for (int32_t i = 0; i < count; ++i) {
            const NamePosition &position = mgr->pPositions[first + i];
            const int32_t nBytes = lengths[static_cast<size_t>(i)] + 1;
            visit({position.iBlock, position.nOffset, nBytes, first + i});
        }
        first += count;
    }
}

}  // namespace

void add(const BlockFacts &block, BlockFacts *pSum) {
    pSum->nSize += block.nSize;
    pSum->nUsed += block.nUsed;
    pSum->nDead += block.nDead;
    pSum->nNames += block.nNames;
}

void visitSpans(NamesManager *mgr, const SpanVisitor &visit) {
    if (mgr->pSegments) {
        visitSegments(mgr, visit);
    } else {
        visitPositions(mgr, visit);
    }
}

Facts gatherFacts(NamesManager *mgr) {
    Facts facts{.bPositions = mgr->pPositions != nullptr,
                .nLongest = NamesManager_GetMaxNameLength(mgr),
                .blocks = {}};
    std::vector<int32_t> live(static_cast<size_t>(mgr->nBlocks));
    visitSpans(mgr, [&live](const TextSpan &span) {
        live[static_cast<size_t>(span.iBlock)] += span.nBytes;
    });
    for (size_t i = 0; i < live.size(); ++i) {
        const NameStorageBlock &block = mgr->pBlocks[i];
        const int32_t nDead = block.nUsed - live[i];
        facts.blocks.push_back({block.nSize, block.nUsed, nDead, block.nNamesInBlock});
        facts.nLive += live[i];
        facts.nDead += nDead;
        facts.nFree += block.nSize - block.nUsed;
    }
    return facts;
}

}  // namespace tool
