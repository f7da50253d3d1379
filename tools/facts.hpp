// What fills the blocks of a manager.
#ifndef TOOLS_FACTS_HPP
#define TOOLS_FACTS_HPP

#include <cstdint>
#include <functional>
#include <vector>

#include "names/names_manager.h"

namespace tool {

// Of a block, or of several together. All sizes in bytes, each name with its NUL.
struct BlockFacts {
    int64_t size = 0;
    int64_t used = 0;
    int64_t dead = 0;
    int64_t names = 0;
};

void add(BlockFacts &sum, const BlockFacts &block);

struct Facts {
    bool bPositions;
    int32_t longest;
    int64_t live = 0;
    int64_t dead = 0;
    int64_t free = 0;
    std::vector<BlockFacts> blocks;
};

Facts gatherFacts(NamesManager *mgr);

// Bytes that lie back to back in a block and belong to names: those of a segment, or of one name in
// individual-positions mode.
struct TextRun {
    int32_t iBlock;
    int32_t nOffset;
    int32_t nBytes;
    int32_t iFirst;  // the first name
};

// Calls visit for all runs, in the order of the names.
void visitRuns(NamesManager *mgr, const std::function<void(const TextRun &run)> &visit);

}  // namespace tool

#endif
