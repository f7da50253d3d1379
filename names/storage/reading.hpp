// Where a name's text lies, and reading names in ascending order in either storage mode.
#ifndef NAMES_STORAGE_READING_HPP
#define NAMES_STORAGE_READING_HPP

#include <algorithm>

#include "names/storage/blocks.hpp"
#include "names/storage/segments.hpp"

namespace names {

// Where a name's text begins, in segment mode.
struct NameLocation {
    int32_t iSegment;
    int32_t nOffset;  // in the segment's block
    bool bSearched;   // it was neither name 0 nor the cursor's
};

// Finds a name by a search over the segments. Does not look at the cursor.
NameLocation searchName(const NamesManager *mgr, int32_t index);

// The same without a search for name 0 and the cursor's.
NameLocation locateName(const NamesManager *mgr, int32_t index);

// Reads the names of a range in ascending order, in either storage mode. In segment mode, location
// is where the next name begins or, after the last name of a segment, where that segment's text
// ends.
struct NameReader {
    const NamesManager *mgr;
    int32_t iNext;
    int32_t iLast;
    NameLocation location;
};

// The range lies below nNames and may be empty.
NameReader startReading(const NamesManager *mgr, IndexRange range);

// Reads on: pointers, lengths or both (NULL for what is not wanted) of as many names as can be had
// at once, at most kMaxSegmentNames. Returns the number read, 0 at the end of the range.
int32_t readNames(NameReader *pReader, const char **ppNames, int32_t *pLengths);

void readLengths(const NamesManager *mgr, IndexRange range, int32_t *lengths);

// ---- Segment by segment, for readers that copy text as it lies ----

// Steps on to the segment of the next name. Returns how many names of the range lie in it, from the
// reader's location on.
inline int32_t enterSegment(NameReader *pReader) {
    const NameSegment *pSegments = pReader->mgr->pSegments;
    if (pReader->iNext > pSegments[pReader->location.iSegment].iLast) {
        ++pReader->location.iSegment;
        pReader->location.nOffset = pSegments[pReader->location.iSegment].nOffset;
    }
    return std::min(pSegments[pReader->location.iSegment].iLast, pReader->iLast) - pReader->iNext +
           1;
}

inline int32_t bytesToSegmentEnd(const NameReader &reader) {
    const NameSegment &segment = reader.mgr->pSegments[reader.location.iSegment];
    return segment.nOffset + segment.nBytes - reader.location.nOffset;
}

// The rest of the segment's text, from the reader's location on.
inline TextSpan restOfSegment(const NameReader &reader) {
    const NameSegment &segment = reader.mgr->pSegments[reader.location.iSegment];
    return textSpan(reader.mgr, segment.iBlock, reader.location.nOffset, bytesToSegmentEnd(reader));
}

// Steps over names of the segment.
inline void stepOver(NameReader *pReader, int32_t nNames, int32_t nBytes) {
    pReader->iNext += nNames;
    pReader->location.nOffset += nBytes;
}

}  // namespace names

#endif
