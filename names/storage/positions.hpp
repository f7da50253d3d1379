// One position per name: the table, and the switch to it.
#ifndef NAMES_STORAGE_POSITIONS_HPP
#define NAMES_STORAGE_POSITIONS_HPP

#include "names/storage/record.hpp"

namespace names {

// Makes room for nPositions positions. False without memory: nothing has changed.
bool growPositionTable(NamesManager *mgr, int32_t nPositions);

// The switch to individual positions. Returns 0, or 1 if there are no segments or no memory;
// nothing has changed then.
int32_t storeIndividualPositions(NamesManager *mgr);

// Switches once segments outnumber half the names; a failed switch changes nothing.
void switchIfFragmented(NamesManager *mgr);

}  // namespace names

#endif
