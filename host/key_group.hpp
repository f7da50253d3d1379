// The keys of one hash, where the map holds several: most often equal ones, sometimes others that
// the hash does not tell apart. No operation's cost grows in proportion to the number of keys, and
// only adding needs memory.
//
// A group holds the keys of one text. The groups of one hash are a tree, of which the map keeps the
// root; NULL for none.
#ifndef HOST_KEY_GROUP_HPP
#define HOST_KEY_GROUP_HPP

#include <cstdint>

namespace host {

struct KeyGroup;

// Does not read the texts of the keys.
void destroyGroups(KeyGroup *pGroups);

// Returns the group that the key was added to, NULL without memory: nothing has changed.
KeyGroup *addKey(KeyGroup **ppGroups, const char *szKey, int32_t nValue);

// A text that one of the keys has.
const char *anyText(const KeyGroup *pGroups);

// The lowest value of a group.
int32_t lowestValue(const KeyGroup &group);

// The lowest value under a text, -1 if there is none.
int32_t lowestValue(KeyGroup *pGroups, const char *szKey);

// Removes a key of this very address, of several the one with the lowest value; if there is none,
// the key with the lowest value under an equal text. False if no text is equal. *pnRepeat: the
// value that no longer repeats a lower one, which is the one removed or the new lowest; -1 for
// none.
bool removeKey(KeyGroup **ppGroups, const char *szKey, int32_t *pnRepeat);

// True if a single key is left: then it and its value.
bool hasOneKey(const KeyGroup *pGroups, const char **pszKey, int32_t *pnValue);

}  // namespace host

#endif
