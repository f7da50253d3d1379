// The keys of one hash, where the map holds several: equal ones as a rule, and others that the hash
// does not tell apart. No operation's cost grows in proportion to the number of keys, and only
// adding takes memory.
//
// A group holds the keys of one text; the groups of one hash are known by the one that is the root
// of their tree, NULL for none.
#ifndef HOST_KEY_GROUP_HPP
#define HOST_KEY_GROUP_HPP

#include <cstdint>

namespace host {

struct KeyGroup;

// Does not touch the texts of the keys.
void destroyGroups(KeyGroup *pGroups);

// False without memory: nothing has changed.
bool addKey(KeyGroup **ppGroups, const char *szKey, int32_t nValue);

// The lowest value under a text, -1 if there is none.
int32_t lowestValue(KeyGroup *pGroups, const char *szKey);

// Takes out the key of this very address, of several such that of the lowest value, else that of
// the lowest value under an equal text. False if no text is equal.
bool removeKey(KeyGroup **ppGroups, const char *szKey);

// True when one key is left: it and its value.
bool hasOneKey(const KeyGroup *pGroups, const char **pszKey, int32_t *pnValue);

}  // namespace host

#endif
