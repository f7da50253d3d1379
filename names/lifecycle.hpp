// Emptying a manager.
#ifndef NAMES_LIFECYCLE_HPP
#define NAMES_LIFECYCLE_HPP

#include "names/storage/record.hpp"

namespace names {

// NamesManager_Clear.
int32_t clearNames(NamesManager *mgr);

}  // namespace names

#endif
