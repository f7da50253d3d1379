// The keys of one hash, where the map holds several: equal ones as a rule, and what few others the hash does not tell apart. No operation's
// cost grows in proportion to their number, and none takes memory but the adding.
//
// Members are kept in two orders, by text and then value, which lookups want, and by address and then value, which removals want. Each
// order is a search tree that is also a heap of random priorities (a treap), which keeps it balanced.
#ifndef HOST_KEY_GROUP_HPP
#define HOST_KEY_GROUP_HPP

#include <stdint.h>

namespace host {

struct KeyGroup;

// An empty group, NULL without memory.
KeyGroup *createGroup();

// Does not touch the texts of the keys.
void destroyGroup(KeyGroup *pGroup);

// False without memory: nothing has changed.
bool addKey(KeyGroup *pGroup, const char *szKey, int32_t nValue);

// The lowest value under a text, -1 if there is none.
int32_t lowestValue(const KeyGroup &group, const char *szKey);

// Takes out the key of this very address, of several such that of the lowest value, else that of the lowest value under an equal text.
// False if no text is equal.
bool removeKey(KeyGroup *pGroup, const char *szKey);

// True when one key is left: it and its value.
bool hasOneKey(const KeyGroup &group, const char **pszKey, int32_t *pnValue);

}  // namespace host

#endif
