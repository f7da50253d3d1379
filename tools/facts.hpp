// How the blocks of a manager are filled.
#ifndef TOOLS_FACTS_HPP
#define TOOLS_FACTS_HPP

#include <cstdint>
#include <functional>
#include <vector>

#include "names/names_manager.h"

namespace tool {

// Of one block, or the sums of several. All sizes are in bytes, each name with its NUL.
struct BlockFacts {
    int64_t nSize = 0;
    int64_t nUsed = 0;
    int64_t nDead = 0;
    int64_t nNames = 0;
};

void add(const BlockFacts &block, BlockFacts *pSum);

// Sizes are in bytes as above, but that of the longest name is without its NUL.
struct Facts {
    bool bPositions;
    int32_t nLongest;
    int64_t nLive = 0;
    int64_t nDead = 0;
    int64_t nFree = 0;
    std::vector<BlockFacts> blocks;
};

Facts gatherFacts(NamesManager *mgr);

// Bytes of a block that belong to names without a gap: those of a segment, or in
// individual-positions mode those of one name.
struct TextSpan {
    int32_t iBlock;
    int32_t nOffset;
    int32_t nBytes;
    int32_t iFirst;  // index of the first name
};

// Calls visit for the spans of all names, in the order of the names.
using SpanVisitor = std::function<void(const TextSpan &span)>;
void visitSpans(NamesManager *mgr, const SpanVisitor &visit);

}  // namespace tool

#endif
