// The audit on managers that were damaged by hand: every check reports what breaks it, and nothing
// else.
#include <gtest/gtest.h>

#include <vector>

#include "host/host_report.h"
#include "names/names_manager.h"

namespace {

int32_t g_nReports;
const HostReportHandlers kCounting = {nullptr, nullptr,
                                      [](void *, uint64_t, int32_t, int32_t, const char *szText) {
                                          ++g_nReports;
                                          EXPECT_STREQ("names_manager assertion failed", szText);
                                      }};

using M = NamesManager;

NameStorageBlock g_aBlocks[17];  // one more than the table has
NamePosition g_aPositions[300];

void addBlocks(M &m, int32_t nBlocks, int32_t nUsed) {
    std::fill_n(std::copy_n(m.pBlocks, 1, g_aBlocks), nBlocks,
                NameStorageBlock{nullptr, 1, nUsed, 0});
    m.pBlocks = g_aBlocks, m.nBlocks += nBlocks;
}

struct Damage {
    const char *szWhat;
    int32_t nReports;
    void (*pfnApply)(M &m);
};
using Damages = std::vector<Damage>;

// The manager has 300 names of 5 bytes in one block.
const Damages kAnyMode = {
    {"none", 0, [](M &) {}},
    {"no blocks", 1, [](M &m) { m.pBlocks = nullptr; }},
    {"blocks beyond their table", 1, [](M &m) { addBlocks(m, 16, 0); }},
    {"more used than there is", 1, [](M &m) { m.pBlocks[0].nUsed = 4097; }},
    {"a used byte without names", 2, [](M &m) { addBlocks(m, 1, 1); }},
    {"used bytes and a negative count", 1, [](M &m) { m.pBlocks[0].nNamesInBlock = -1; }},
};

const Damages kSegmentMode = {
    {"segments beyond their table", 1, [](M &m) { m.nSegmentsAlloc = 2; }},
    {"names without used bytes", 7, [](M &m) { m.pBlocks[0].nUsed = 0; }},
    {"both tables", 1, [](M &m) { m.pPositions = g_aPositions, m.nPositionsAlloc = 300; }},
    {"more segments than names", 2, [](M &m) { m.nNames = 2; }},
    {"a first segment that does not start at 0", 1, [](M &m) { m.pSegments[0].iFirst = 1; }},
    {"a gap", 1, [](M &m) { m.pSegments[1].iFirst++; }},
    {"an overlap, 129 names", 2, [](M &m) { m.pSegments[0].iLast++; }},
    {"a segment back to front", 2, [](M &m) { m.pSegments[0].iFirst = 200; }},
    {"a block that is not there", 1, [](M &m) { m.pSegments[1].iBlock = 1; }},
    {"a negative block", 1, [](M &m) { m.pSegments[1].iBlock = -1; }},
    {"an offset beyond the used bytes", 2, [](M &m) { m.pSegments[2].nOffset = 1801; }},
    {"no bytes at their end", 0,
     [](M &m) { m.pSegments[2].nOffset = 1800, m.pSegments[2].nBytes = 0; }},
    {"a byte too many", 1, [](M &m) { m.pSegments[2].nBytes++; }},
    {"no segments", 1, [](M &m) { m.nSegments = 0; }},
    {"a last segment that ends early", 1, [](M &m) { m.pSegments[2].iLast--; }},
    {"a healthy cursor", 0,
     [](M &m) { m.iCursorName = 130, m.iCursorSegment = 1, m.nCursorOffset = 780; }},
    {"a cursor beyond the names", 2, [](M &m) { m.iCursorName = 300, m.iCursorSegment = 2; }},
    {"a cursor in no block", 1, [](M &m) { m.iCursorName = 0, m.iCursorBlock = 1; }},
    {"a cursor in a negative block", 1, [](M &m) { m.iCursorName = 0, m.iCursorBlock = -1; }},
    {"a cursor in no segment", 1, [](M &m) { m.iCursorName = 1, m.iCursorSegment = 3; }},
    {"a cursor in a negative segment", 1, [](M &m) { m.iCursorName = 1, m.iCursorSegment = -1; }},
    {"a cursor in another segment", 1, [](M &m) { m.iCursorName = 1, m.iCursorSegment = 1; }},
    {"a cursor after the used bytes", 1, [](M &m) { m.iCursorName = 1, m.nCursorOffset = 1800; }},
    {"negative misses", 1, [](M &m) { m.iCursorName = 1, m.nCursorMisses = -1; }},
    {"no cursor, but misses", 0, [](M &m) { m.iCursorSegment = -9, m.nCursorMisses = -1; }},
    {"no cursor, but a block", 0, [](M &m) { m.iCursorBlock = 9; }},
};

const Damages kPositionMode = {
    {"positions beyond their table", 1, [](M &m) { m.nPositionsAlloc = 299; }},
    {"no positions", 1, [](M &m) { m.pPositions = nullptr; }},
    {"a block that is not there", 1, [](M &m) { m.pPositions[7].iBlock = 1; }},
    {"a negative block", 1, [](M &m) { m.pPositions[7].iBlock = -1; }},
    {"an offset after the used bytes", 1,
     [](M &m) { m.pPositions[7].nOffset = m.pBlocks[0].nUsed; }},
    {"a cursor", 1, [](M &m) { m.iCursorName = 1; }},
};

// With a lookup index; each of these breaks the index and nothing else. A changed name and one
// without its end cost a report each.
const Damages kIndexed = {
    {"none", 0, [](M &) {}},
    {"a changed name", 1, [](M &m) { m.pBlocks[0].pData[0] = 'x'; }},
    {"a last name without its end", 1, [](M &m) { m.pBlocks[0].pData[1799] = 'x'; }},
    {"a last name after the used bytes", 1, [](M &m) { m.pBlocks[0].nUsed = 1794; }},
};
const Damages kIndexedSegments = {
    {"a name less", 1, [](M &m) { m.nNames = 299, m.pSegments[2].iLast = 298; }},
    {"a segment before its block", 1, [](M &m) { m.pSegments[0].nOffset = -1; }},
    {"a segment in no block, another back to front", 3,
     [](M &m) { m.pSegments[0].iBlock = 5, m.pSegments[1].iFirst = 999; }},
};
const Damages kIndexedPositions = {
    {"a name less", 1, [](M &m) { m.nNames = 299; }},
    {"a name before its block", 1, [](M &m) { m.pPositions[0].nOffset = -1; }},
    {"two names that changed places", 2, [](M &m) { std::swap(m.pPositions[0], m.pPositions[1]); }},
};

template <typename T>
T *copied(const T *pItems, int32_t nItems, std::vector<T> *pCopy) {
    pCopy->assign(pItems, pItems + (pItems != nullptr ? nItems : 0));
    return pItems != nullptr ? pCopy->data() : nullptr;
}

// Applies each to a copy of the manager's record on tables and text of its own; the index is the
// manager's.
void expectReports(const NamesManager *mgr, const Damages &damages) {
    for (const Damage &damage : damages) {
        std::vector<NameStorageBlock> blocks;
        std::vector<NameSegment> segments;
        std::vector<NamePosition> positions;
        std::vector<char> text;
        M copy = *mgr;
        copy.pBlocks = copied(mgr->pBlocks, 1, &blocks);
        copy.pSegments = copied(mgr->pSegments, mgr->nSegments, &segments);
        copy.pPositions = copied(mgr->pPositions, mgr->nNames, &positions);
        blocks[0].pData = copied(blocks[0].pData, blocks[0].nSize, &text);
        damage.pfnApply(copy);
        g_nReports = 0;
        NamesManager_AssertConsistency(&copy);
        EXPECT_EQ(damage.nReports, g_nReports)
            << damage.szWhat << (mgr->pSegments != nullptr ? ", segments" : ", positions");
    }
}

TEST(Audit, ReportsEachDamage) {
    Host_SetReportHandlers(&kCounting);
    for (const bool bPositions : {false, true}) {
        NamesManager *mgr = NamesManager_Create(nullptr, "%05d");
        EXPECT_EQ(0, NamesManager_GenerateNames(mgr, 300));
        EXPECT_EQ(0, bPositions ? NamesManager_StoreIndividualNamePositions(mgr) : 0);
        EXPECT_EQ(0, NamesManager_FindName(mgr, "00001", 0));
        expectReports(mgr, kIndexed);
        expectReports(mgr, bPositions ? kIndexedPositions : kIndexedSegments);
        EXPECT_EQ(0, NamesManager_RemoveNames(mgr, 299, 299, 0));  // drops the index
        EXPECT_EQ(0, NamesManager_AddName(mgr, 299, 0, "00300"));
        expectReports(mgr, kAnyMode);
        expectReports(mgr, bPositions ? kPositionMode : kSegmentMode);
        NamesManager_Destroy(mgr);
    }
    g_nReports = 0;
    NamesManager_AssertConsistency(nullptr);
    EXPECT_EQ(1, g_nReports);
}

}  // namespace
