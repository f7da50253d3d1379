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

// The number of the segment that holds a name, which exists.
int32_t findSegment(const NamesManager *mgr, int32_t index);

// Where the names of a segment start and the last one ends, in bytes from its nOffset; aStarts has
// roomForStarts(kMaxSegmentNames).
void findStartsIn(const NamesManager *mgr, const NameSegment &segment, int32_t *aStarts);

// The bytes of a segment's text before that of one of its names.
int32_t bytesBefore(const NamesManager *mgr, const NameSegment &segment, int32_t index);

// ---- The table ----

// False without memory: nothing has changed. New records are zeroed.
bool growSegmentTable(NamesManager *mgr);
bool resizeSegmentTable(NamesManager *mgr, int64_t nNewAlloc);

// Makes room for the two records that a cut adds. False without memory.
inline bool makeRoomForCut(NamesManager *mgr) {
    return mgr->nSegmentsAlloc - mgr->nSegments >= 2 || growSegmentTable(mgr);
}

// Leaves NULL, 0 and 0.
void freeSegmentTable(NamesManager *mgr);

// Replaces the records iBegin to iEnd-1 by the nRecords given, with one move of those after them.
// The table must have the room.
void spliceSegments(NamesManager *mgr, int32_t iBegin, int32_t iEnd, const NameSegment *pRecords,
                    int32_t nRecords);

// ---- Cutting ----

// Part of a segment as a record of its own: the names of the range, whose text lies from nStart to
// nEnd, in bytes from the segment's nOffset. A piece may be without names.
inline NameSegment pieceOf(const NameSegment &whole, IndexRange range, int32_t nStart,
                           int32_t nEnd) {
    return {range.first, range.last, whole.iBlock, whole.nOffset + nStart, nEnd - nStart};
}

inline bool hasNames(const NameSegment &piece) {
    return piece.iFirst <= piece.iLast;
}

// The names of a piece leave their block.
inline void giveBackPiece(NamesManager *mgr, const NameSegment &piece) {
    giveBackText(&mgr->pBlocks[piece.iBlock], piece.nOffset, piece.nBytes, namesIn(piece));
}

// The pieces of a segment: some of its names, and those before and after them.
struct Cut {
    int32_t iSegment;
    NameSegment front;
    NameSegment middle;
    NameSegment back;
};

// Cuts the names of a range out of a segment that holds them all; its text has nFront bytes before
// theirs. The table stays as it is.
Cut cutSegment(const NamesManager *mgr, int32_t iSegment, IndexRange range, int32_t nFront);

// Puts the pieces of a cut into the table in place of the segment they came from. With bMerge the
// middle is merged with what its text touches, after it only where it ends the range. The table
// must have room for two more records. Returns the number of the segment that holds the middle
// then.
int32_t putBack(NamesManager *mgr, const Cut &cut, bool bMerge, bool bEndsRange);

}  // namespace names

#endif
