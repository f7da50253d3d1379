// Removing names.
#ifndef NAMES_REMOVAL_HPP
#define NAMES_REMOVAL_HPP

#include "names/storage/record.hpp"

namespace names {

// Removes a range that is not empty and lies below nNames. False without memory for the segments
// that it cuts: no name is removed then.
bool removeRange(NamesManager *mgr, IndexRange range);

}  // namespace names

#endif
