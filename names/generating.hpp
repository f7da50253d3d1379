// Default names.
#ifndef NAMES_GENERATING_HPP
#define NAMES_GENERATING_HPP

#include "names/storage/record.hpp"

// Generates the default names nNames to iLastIndex, none if that is below nNames. Returns 0, or 1
// after a report: one could not be made or stored, those before it stay.
int32_t NamesManager_GenerateNamesUpTo(NamesManager *mgr, int32_t iLastIndex);

#endif
