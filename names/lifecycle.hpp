// Emptying a manager.
#ifndef NAMES_LIFECYCLE_HPP
#define NAMES_LIFECYCLE_HPP

#include "names/storage/record.hpp"

namespace names {

// NamesManager_Clear. False without memory for a segment table: there is neither table then.
bool clearAll(NamesManager *mgr);

}  // namespace names

#endif
