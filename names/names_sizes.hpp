// The sizes that the module's steps turn on. All of them are observable, in records, images or
// results; the tests compile the module once more with tiny ones, so that what takes thousands of
// names here takes a handful there.
#ifndef NAMES_NAMES_SIZES_HPP
#define NAMES_NAMES_SIZES_HPP

#include <cstdint>

namespace names {

constexpr int32_t kFirstBlockBytes = 4096;
constexpr int32_t kNewBlockBytes =
    131072;  // blocks made for new text have at least this many, while memory allows
constexpr int32_t kLeastBlockBytes =
    1023;                                  // a block made while memory is short is larger than this
constexpr int32_t kTableStep = 16;         // records by which the block and segment tables grow
constexpr int32_t kPositionsStep = 32;     // the position table grows by multiples of this
constexpr int32_t kMaxSegmentNames = 128;  // names in a segment
constexpr int32_t kMaxMergedNames = 127;   // names in a segment made by merging two
constexpr int32_t kMaxNameBytes =
    1048575;  // longest name that AddNames and AddNamesFromBuffer take, without its NUL
constexpr int32_t kMaxFreeMisses =
    4;  // retrievals in a row that may search before the manager switches to positions
constexpr int32_t kLocalTextBytes =
    256;  // texts up to this size, NUL included, are put together without an allocation
constexpr int32_t kReleaseInterval = 1000;  // a single store at a multiple of this releases empty
                                            // blocks: looking at all is not for each
constexpr int32_t kMaxBatchNames = 500000;  // names of a buffer that are stored at once

}  // namespace names

#endif
