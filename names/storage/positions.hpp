// One position per name: the table, and the switch to it.
#ifndef NAMES_STORAGE_POSITIONS_HPP
#define NAMES_STORAGE_POSITIONS_HPP

#include "names/storage/blocks.hpp"

namespace names {

// The length of the name at a position.
inline int32_t lengthAt(const NamesManager *mgr, const NamePosition &position) {
    return static_cast<int32_t>(std::strlen(textAt(mgr, position.iBlock, position.nOffset)));
}

// Makes room for nPositions positions, more than there is. False without memory: nothing has
// changed.
bool growPositionTable(NamesManager *mgr, int32_t nPositions);

// ---- The switch ----

// A table of nPositions records of any content, which is owned by nobody yet. NULL without memory.
NamePosition *allocPositions(int32_t nPositions);

// Writes the positions of the names in segments 0 to nSegments-1.
void findPositions(const NamesManager *mgr, int32_t nSegments, NamePosition *pPositions);

// Gives up the segments for a table that holds the positions of all names.
void takePositions(NamesManager *mgr, NamePosition *pPositions);

// Switches to individual positions. False if there are no segments or no memory: nothing has
// changed.
bool storeIndividualPositions(NamesManager *mgr);

// Switches if segments outnumber half the names; a switch that fails changes nothing.
void switchIfFragmented(NamesManager *mgr);

}  // namespace names

#endif
