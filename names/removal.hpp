// Removing names.
#ifndef NAMES_REMOVAL_HPP
#define NAMES_REMOVAL_HPP

#include "names/storage/record.hpp"

namespace names {

// Removes a range that is not empty and lies below nNames. Returns 0, or 1 without memory for the
// segments that it cuts.
int32_t removeRange(NamesManager *mgr, IndexRange range);

}  // namespace names

#endif
