// The known maximum: the length of the longest name and how many names are known to have it. What
// names that are added, replaced or removed do to it, and how it is found. While it is unknown
// nothing is kept up.
#ifndef NAMES_STORAGE_LONGEST_HPP
#define NAMES_STORAGE_LONGEST_HPP

#include "names/storage/record.hpp"

namespace names {

inline bool isMaximumKnown(const NamesManager *mgr) {
    return mgr->nMaxNameLength >= 0;
}

inline void forgetMaximum(NamesManager *mgr) {
    mgr->nMaxNameLength = -1;
}

// A name of the given length is added, which takes a known maximum, or removed.
inline void noteAddedLength(NamesManager *mgr, int32_t nLength) {
    if (nLength > mgr->nMaxNameLength) {
        mgr->nMaxNameLength = nLength;
        mgr->nMaxNameLengthCount = 1;
    } else if (nLength == mgr->nMaxNameLength) {
        ++mgr->nMaxNameLengthCount;
    }
}

inline void noteRemovedLength(NamesManager *mgr, int32_t nLength) {
    if (nLength == mgr->nMaxNameLength && --mgr->nMaxNameLengthCount == 0) { forgetMaximum(mgr); }
}

// Names of the given lengths are added.
inline void noteAddedNames(NamesManager *mgr, const int32_t *pLengths, int32_t nNames) {
    for (int32_t k = 0; isMaximumKnown(mgr) && k < nNames; ++k) {
        noteAddedLength(mgr, pLengths[k]);
    }
}

// The names of a range are about to be replaced by names of the given lengths, or to be removed.
// Without memory for their own lengths the maximum becomes unknown.
void noteReplacedNames(NamesManager *mgr, IndexRange range, const int32_t *pLengths);
void noteRemovedNames(NamesManager *mgr, IndexRange range);

// The length of the longest name, the known one or else found by reading all names.
int32_t maxNameLength(NamesManager *mgr);

}  // namespace names

#endif
