// The sizes at which the module takes another way. All of them can be observed, in records, images
// or results; the tests compile the module once more with tiny ones, so that what takes thousands
// of names here takes a handful there. Bytes of texts include their NULs, but for kMaxNameBytes.
#ifndef NAMES_NAMES_SIZES_HPP
#define NAMES_NAMES_SIZES_HPP

#include <cstdint>

namespace names {

// Blocks: the first one, the least size of one made for new text while memory allows, and what one
// made while memory is short is larger than.
constexpr int32_t kFirstBlockBytes = 4096;
constexpr int32_t kNewBlockBytes = 131072;
constexpr int32_t kLeastBlockBytes = 1023;

// Records by which the block and segment tables grow, and of which the growth of the position table
// is a multiple.
constexpr int32_t kTableStep = 16;
constexpr int32_t kPositionsStep = 32;

// Names in a segment, and in one made by merging two.
constexpr int32_t kMaxSegmentNames = 128;
constexpr int32_t kMaxMergedNames = 127;

// The longest name that AddNames and AddNamesFromBuffer take, without its NUL.
constexpr int32_t kMaxNameBytes = 1048575;

// Retrievals in a row that may search for their first name before the manager switches to
// positions.
constexpr int32_t kMaxFreeMisses = 4;

// Texts of up to this size are put together without an allocation.
constexpr int32_t kLocalTextBytes = 256;

// A single name added at a multiple of this index releases empty blocks.
constexpr int32_t kReleaseInterval = 1000;

// Names of a buffer that are stored at once.
constexpr int32_t kMaxBatchNames = 500000;

}  // namespace names

#endif
