// Segments: finding, cutting, splicing and merging them, and the table that holds them.
#ifndef NAMES_STORAGE_SEGMENTS_HPP
#define NAMES_STORAGE_SEGMENTS_HPP

#include "names/storage/blocks.hpp"

namespace names {

inline int32_t namesIn(const NameSegment &segment) {
    return segment.iLast - segment.iFirst + 1;
}

inline TextSpan textOf(const NamesManager *mgr, const NameSegment &segment) {
    return textSpan(mgr, segment.iBlock, segment.nOffset, segment.nBytes);
}

int32_t findSegment(const NamesManager *mgr, int32_t index);

// findNameStarts for all names of a segment.
void findStartsIn(const NamesManager *mgr, const NameSegment &segment, int32_t *aStarts);

// Table growth. False without memory: nothing has changed. New records are zeroed.
bool growSegmentTable(NamesManager *mgr);
bool resizeSegmentTable(NamesManager *mgr, int64_t nNewAlloc);
bool growPositionTable(NamesManager *mgr, int32_t nPositions);

void freeSegmentTable(NamesManager *mgr);  // leaves NULL, 0 and 0

// Replaces the segment records iBegin to iEnd-1 by the nRecords given, with one move of those
// behind. The table must have the room.
void spliceSegments(NamesManager *mgr, int32_t iBegin, int32_t iEnd, const NameSegment *pRecords,
                    int32_t nRecords);

// A run and what is left of its segment around it. A piece without names has an iLast below its
// iFirst.
struct Cut {
    int32_t iSegment;
    NameSegment front;
    NameSegment run;
    NameSegment back;
};

Cut cutSegment(const NamesManager *mgr, int32_t iSegment, int32_t iFirst, int32_t iLast);

// Puts the pieces of a cut into the table in place of the segment they came from; the middle is
// merged with what its text touches, forwards only where it ends the range. Without bMerge the bare
// cut stays. The table must have room for two more records. Returns the number of the segment that
// holds the middle afterwards.
int32_t putBack(NamesManager *mgr, const Cut &cut, bool bMerge, bool bEndsRange);

}  // namespace names

#endif
