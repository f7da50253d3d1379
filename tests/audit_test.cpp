// The audit on managers that were damaged by hand: every check reports what breaks it, and nothing
// else.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/host_report.h"
#include "names/names_manager.h"

namespace {

int32_t g_nReports;

void countReport(void * /*pContext*/, uint64_t /*nSourceTag*/, int32_t /*nLine*/, int32_t /*nCode*/,
                 const char *szText) {
    ++g_nReports;
    EXPECT_STREQ("names_manager assertion failed", szText);
}

// A copy of a manager's record on tables and text of its own, to be damaged; the index is the
// original's. 300 names of 5 bytes in one block.
struct Patient {
    explicit Patient(const NamesManager &healthy)
        : record(healthy), blocks(healthy.pBlocks, healthy.pBlocks + healthy.nBlocks),
          text(blocks[0].pData, blocks[0].pData + blocks[0].nSize),
          segments(healthy.pSegments, healthy.pSegments + healthy.nSegments),
          positions(healthy.pPositions,
                    healthy.pPositions + (healthy.pPositions != nullptr ? healthy.nNames : 0)) {
        blocks[0].pData = text.data();
        record.pBlocks = blocks.data();
        record.pSegments = segments.empty() ? nullptr : segments.data();
        record.pPositions = positions.empty() ? nullptr : positions.data();
    }
    void fillBlockTable(int32_t nBlocks, NameStorageBlock block) {
        blocks.resize(static_cast<size_t>(nBlocks), block);
        record.pBlocks = blocks.data();
        record.nBlocks = nBlocks;
    }
    NamesManager record;
    std::vector<NameStorageBlock> blocks;
    std::vector<char> text;
    std::vector<NameSegment> segments;
    std::vector<NamePosition> positions;
};

struct Damage {
    const char *szWhat;
    int32_t nReports;
    void (*pfnApply)(Patient &);
};

const Damage kAnyMode[] = {
    {"none", 0, [](Patient &) {}},
    {"no blocks", 1, [](Patient &p) { p.record.pBlocks = nullptr; }},
    {"blocks beyond their table", 1,
     [](Patient &p) {
         p.fillBlockTable(p.record.nBlocksAlloc + 1, {nullptr, 1, 0, 0});
     }},
    {"more used than there is", 1, [](Patient &p) { p.blocks[0].nUsed = 4097; }},
    {"a used byte without names", 2,
     [](Patient &p) {
         p.fillBlockTable(2, {nullptr, 1, 1, 0});
     }},
    {"used bytes and a negative number of names", 1,
     [](Patient &p) { p.blocks[0].nNamesInBlock = -1; }},
};

const Damage kSegmentMode[] = {
    {"segments beyond their table", 1, [](Patient &p) { p.record.nSegmentsAlloc = 2; }},
    {"names without used bytes", 7, [](Patient &p) { p.blocks[0].nUsed = 0; }},
    {"both tables", 1,
     [](Patient &p) {
         p.positions.resize(300), p.record.pPositions = p.positions.data(),
                                  p.record.nPositionsAlloc = 300;
     }},
    {"more segments than names", 2, [](Patient &p) { p.record.nNames = 2; }},
    {"a first segment that does not start at 0", 1, [](Patient &p) { p.segments[0].iFirst = 1; }},
    {"a gap", 1, [](Patient &p) { p.segments[1].iFirst++; }},
    {"an overlap, 129 names", 2, [](Patient &p) { p.segments[0].iLast++; }},
    {"a segment back to front", 2, [](Patient &p) { p.segments[0].iFirst = 200; }},
    {"a block that is not there", 1, [](Patient &p) { p.segments[1].iBlock = 1; }},
    {"a negative block", 1, [](Patient &p) { p.segments[1].iBlock = -1; }},
    {"an offset beyond the used bytes", 2, [](Patient &p) { p.segments[2].nOffset = 1801; }},
    {"an offset at their end, without bytes", 0,
     [](Patient &p) { p.segments[2].nOffset = 1800, p.segments[2].nBytes = 0; }},
    {"a byte too many", 1, [](Patient &p) { p.segments[2].nBytes++; }},
    {"no segments", 1, [](Patient &p) { p.record.nSegments = 0; }},
    {"a last segment that ends early", 1, [](Patient &p) { p.segments[2].iLast--; }},
    {"a healthy cursor", 0,
     [](Patient &p) {
         p.record.iCursorName = 130, p.record.iCursorSegment = 1, p.record.nCursorOffset = 780;
     }},
    {"a cursor beyond the names", 2,
     [](Patient &p) { p.record.iCursorName = 300, p.record.iCursorSegment = 2; }},
    {"a cursor in a block that is not there", 1,
     [](Patient &p) { p.record.iCursorName = 0, p.record.iCursorBlock = 1; }},
    {"a cursor in a negative block", 1,
     [](Patient &p) { p.record.iCursorName = 0, p.record.iCursorBlock = -1; }},
    {"a cursor in a segment that is not there", 1,
     [](Patient &p) { p.record.iCursorName = 1, p.record.iCursorSegment = 3; }},
    {"a cursor in a negative segment", 1,
     [](Patient &p) { p.record.iCursorName = 1, p.record.iCursorSegment = -1; }},
    {"a cursor in another segment", 1,
     [](Patient &p) { p.record.iCursorName = 1, p.record.iCursorSegment = 1; }},
    {"a cursor behind the used bytes", 1,
     [](Patient &p) { p.record.iCursorName = 1, p.record.nCursorOffset = 1800; }},
    {"negative misses", 1,
     [](Patient &p) { p.record.iCursorName = 1, p.record.nCursorMisses = -1; }},
    {"no cursor, whatever else", 0,
     [](Patient &p) {
         p.record.iCursorBlock = 9, p.record.iCursorSegment = -9, p.record.nCursorMisses = -1;
     }},
};

const Damage kPositionMode[] = {
    {"positions beyond their table", 1, [](Patient &p) { p.record.nPositionsAlloc = 299; }},
    {"no positions", 1, [](Patient &p) { p.record.pPositions = nullptr; }},
    {"a block that is not there", 1, [](Patient &p) { p.positions[7].iBlock = 1; }},
    {"a negative block", 1, [](Patient &p) { p.positions[7].iBlock = -1; }},
    {"an offset at the end of the used bytes", 1,
     [](Patient &p) { p.positions[7].nOffset = p.blocks[0].nUsed; }},
    {"a cursor", 1, [](Patient &p) { p.record.iCursorName = 1; }},
};

// With a lookup index; each of these breaks the index and nothing else. A changed name and one
// without its end cost a report each.
const Damage kIndexed[] = {
    {"none", 0, [](Patient &) {}},
    {"a changed name", 1, [](Patient &p) { p.text[0] = 'x'; }},
    {"a last name without its end", 1, [](Patient &p) { p.text[1799] = 'x'; }},
    {"a last name behind the used bytes", 1, [](Patient &p) { p.blocks[0].nUsed = 1794; }},
};
const Damage kIndexedSegments[] = {
    {"a name less", 1, [](Patient &p) { p.record.nNames = 299, p.segments[2].iLast = 298; }},
    {"a segment before its block", 1, [](Patient &p) { p.segments[0].nOffset = -1; }},
    {"a segment in no block, another back to front", 3,
     [](Patient &p) { p.segments[0].iBlock = 5, p.segments[1].iFirst = 999; }},
};
const Damage kIndexedPositions[] = {
    {"a name less", 1, [](Patient &p) { p.record.nNames = 299; }},
    {"a name before its block", 1, [](Patient &p) { p.positions[0].nOffset = -1; }},
    {"two names that changed places", 2,
     [](Patient &p) { std::swap(p.positions[0], p.positions[1]); }},
};

template <size_t n>
void expectReports(const NamesManager *mgr, const Damage (&damages)[n]) {
    for (const Damage &damage : damages) {
        Patient patient(*mgr);
        damage.pfnApply(patient);
        g_nReports = 0;
        NamesManager_AssertConsistency(&patient.record);
        EXPECT_EQ(damage.nReports, g_nReports)
            << damage.szWhat << (mgr->pSegments != nullptr ? ", segments" : ", positions");
    }
}

TEST(Audit, ReportsEachDamage) {
    const HostReportHandlers handlers = {nullptr, countReport, countReport};
    const HostReportHandlers *const pPrevious = Host_SetReportHandlers(&handlers);
    for (const bool bPositions : {false, true}) {
        NamesManager *mgr = NamesManager_Create(nullptr, "%05d");
        EXPECT_EQ(0, NamesManager_GenerateNames(mgr, 300));
        EXPECT_EQ(0, bPositions ? NamesManager_StoreIndividualNamePositions(mgr) : 0);
        EXPECT_EQ(0, NamesManager_FindName(mgr, "00001", 0));
        expectReports(mgr, kIndexed);
        bPositions ? expectReports(mgr, kIndexedPositions) : expectReports(mgr, kIndexedSegments);
        EXPECT_EQ(0, NamesManager_RemoveNames(mgr, 299, 299, 0) |
                         NamesManager_GenerateNames(mgr, 299));  // drops the index
        EXPECT_EQ(0, NamesManager_AddName(mgr, 299, 0, "00300"));
        expectReports(mgr, kAnyMode);
        bPositions ? expectReports(mgr, kPositionMode) : expectReports(mgr, kSegmentMode);
        NamesManager_Destroy(mgr);
    }
    g_nReports = 0;
    NamesManager_AssertConsistency(nullptr);
    EXPECT_EQ(1, g_nReports);
    Host_SetReportHandlers(pPrevious);
}

}  // namespace
