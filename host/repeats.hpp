// The values that repeat: those held under a key under which a lower value is held, too. Kept up to
// date while keys come and go, so that the next of them is found without a search for any key.
//
// Each belongs to the group of its key. Values lie in pages of 4,096, found by their number; a page
// has a bit for each value and the groups of those that are there, in ascending order:
//
//     aBits     | 64 values | 64 values | ...
//     aBefore   how many are there before each 64 of them
//     groups    | of the first | of the second | ...
#ifndef HOST_REPEATS_HPP
#define HOST_REPEATS_HPP

#include <cstdint>

namespace host {

struct KeyGroup;
struct RepeatPage;

struct Repeats {
    RepeatPage **ppPages;  // NULL for pages without values
    int32_t nPages;
    int32_t nUsedPages;
};

// Makes room for a value. False without memory: nothing has changed.
bool reserveRepeat(Repeats *pRepeats, int32_t nValue);

// Adds a value for which room was made, with its group.
void addRepeat(Repeats *pRepeats, int32_t nValue, const KeyGroup *pGroup);

// Takes a value out, or gives back the room that was made for one.
void removeRepeat(Repeats *pRepeats, int32_t nValue);

// The lowest value that is at least nFirst, and its group; -1 if there is none.
int32_t nextRepeat(const Repeats &repeats, int32_t nFirst, const KeyGroup **ppGroup);

// Frees the memory and leaves none of the values.
void freeRepeats(Repeats *pRepeats);

}  // namespace host

#endif
