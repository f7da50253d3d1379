// Where a name's text lies, and reading names in ascending order in either storage mode.
#ifndef NAMES_STORAGE_READING_HPP
#define NAMES_STORAGE_READING_HPP

#include "names/storage/blocks.hpp"
#include "names/storage/segments.hpp"

namespace names {

// Where a name's text begins, in segment mode.
struct NameLocation {
    int32_t iSegment;
    int32_t nOffset;
    bool bSearched;  // it was neither name 0 nor the cursor's
};

// Finds a name by a search over the segments, whatever the cursor says.
NameLocation searchName(const NamesManager *mgr, int32_t index);

// The same for name 0 and the cursor's without a search.
NameLocation locateName(const NamesManager *mgr, int32_t index);

// Reads the names of a range in ascending order, in either storage mode. In segment mode, location
// always is where the next name begins or, after the last name of a segment, where that segment's
// text ends.
struct NameReader {
    const NamesManager *mgr;
    int32_t iNext;
    int32_t iLast;
    NameLocation location;
};

NameReader startReading(const NamesManager *mgr,
                        IndexRange range);  // the range lies below nNames and may be empty

// Reads on: pointers, lengths or both (NULL for one not wanted) of as many names as can be had at
// once, at most kMaxSegmentNames; the number read, 0 at the end of the range.
int32_t readNames(NameReader *pReader, const char **ppNames, int32_t *pLengths);

void readLengths(const NamesManager *mgr, IndexRange range, int32_t *lengths);

// ---- Segment by segment, for readers that copy text as it lies ----

// Steps on to the segment of the next name. Returns how many names of the range lie in it, from the
// reader's location on.
int32_t enterSegment(NameReader *pReader);

void leaveNames(NameReader *pReader, int32_t nNames, int32_t nBytes);

}  // namespace names

#endif
