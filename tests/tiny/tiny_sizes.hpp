// The module's sizes for tests, in place of names/names_sizes.hpp: a handful of names fills tables,
// blocks and segments.
#pragma once

#include <cstdint>

namespace names {

constexpr int32_t kFirstBlockBytes = 48;
constexpr int32_t kNewBlockBytes = 96;
constexpr int32_t kLeastBlockBytes = 23;
constexpr int32_t kTableStep = 2;
constexpr int32_t kPositionsStep = 3;
constexpr int32_t kMaxSegmentNames = 5;
constexpr int32_t kMaxMergedNames = 4;
constexpr int32_t kMaxNameBytes = 150;
constexpr int32_t kMaxFreeMisses = 3;
constexpr int32_t kLocalTextBytes = 40;
constexpr int32_t kReleaseInterval = 7;
constexpr int32_t kMaxBatchNames = 7;

}  // namespace names
