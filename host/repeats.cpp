#include "host/repeats.hpp"

#include <algorithm>
#include <bit>

#include "host/hash_table.hpp"
#include "host/host_memory.h"

namespace host {

constexpr int32_t kPageValues = 4096;
constexpr int32_t kWordBits = 64;
constexpr int32_t kPageWords = kPageValues / kWordBits;

struct RepeatPage {
    uint64_t aBits[kPageWords];
    uint16_t aBefore[kPageWords];
    int32_t nWords;  // those from here on never had a value; aBefore is not set there
    int32_t nUsed;
    int32_t nRoom;  // for groups, which follow the page
};

namespace {

// ---- The values of a page, by their place in it ----

uint64_t bitOf(int32_t iValue) {
    return uint64_t{1} << iValue % kWordBits;
}

bool hasValue(const RepeatPage &page, int32_t iValue) {
    return (page.aBits[iValue / kWordBits] & bitOf(iValue)) != 0;
}

const KeyGroup **groupsOf(RepeatPage *pPage) {
    return reinterpret_cast<const KeyGroup **>(pPage + 1);
}

// How many values the page has before this one, whose word is among its nWords.
int32_t rankOf(const RepeatPage &page, int32_t iValue) {
    const int32_t iWord = iValue / kWordBits;
    return page.aBefore[iWord] + std::popcount(page.aBits[iWord] & (bitOf(iValue) - 1));
}

// Adds a value that is not there, or takes one out that is there.
void flip(RepeatPage *pPage, int32_t iValue, bool bAdds) {
    const int32_t iWord = iValue / kWordBits;
    const auto nChange = static_cast<uint16_t>(bAdds ? 1 : -1);
    pPage->aBits[iWord] ^= bitOf(iValue);
    pPage->nUsed += bAdds ? 1 : -1;
    for (int32_t i = iWord + 1; i < pPage->nWords; ++i) {
        pPage->aBefore[i] = static_cast<uint16_t>(pPage->aBefore[i] + nChange);
    }
}

// The lowest value of the page that is at least iFirst; kPageValues if there is none.
int32_t nextInPage(const RepeatPage &page, int32_t iFirst) {
    uint64_t nWanted = ~(bitOf(iFirst) - 1);
    for (int32_t iWord = iFirst / kWordBits; iWord < page.nWords; ++iWord) {
        const uint64_t nBits = page.aBits[iWord] & nWanted;
        if (nBits != 0) { return iWord * kWordBits + std::countr_zero(nBits); }
        nWanted = ~uint64_t{0};
    }
    return kPageValues;
}

// ---- Memory ----

// Makes the list of pages reach to this page. False without memory.
bool reachPage(Repeats *pRepeats, int32_t iPage) {
    if (iPage < pRepeats->nPages) { return true; }
    const int32_t nPages = std::max(iPage + 1, 2 * pRepeats->nPages);
    auto *ppPages = static_cast<RepeatPage **>(
        HostMem_Realloc(pRepeats->ppPages, static_cast<uint64_t>(nPages) * sizeof(void *),
                        kHashSourceTag, __LINE__));
    if (ppPages == nullptr) { return false; }
    std::fill(ppPages + pRepeats->nPages, ppPages + nPages, nullptr);
    pRepeats->ppPages = ppPages;
    pRepeats->nPages = nPages;
    return true;
}

// Makes room for one more value. False without memory.
bool growPage(Repeats *pRepeats, RepeatPage **ppPage) {
    const bool bNew = *ppPage == nullptr;
    if (!bNew && (*ppPage)->nUsed < (*ppPage)->nRoom) { return true; }
    const int32_t nRoom = bNew ? 8 : 2 * (*ppPage)->nRoom;
    auto *pPage = static_cast<RepeatPage *>(
        HostMem_Realloc(*ppPage, sizeof(RepeatPage) + static_cast<uint64_t>(nRoom) * sizeof(void *),
                        kHashSourceTag, __LINE__));
    if (pPage == nullptr) { return false; }
    if (bNew) {
        *pPage = {};
        ++pRepeats->nUsedPages;
    }
    pPage->nRoom = nRoom;
    *ppPage = pPage;
    return true;
}

void freePageIfEmpty(Repeats *pRepeats, RepeatPage **ppPage) {
    if ((*ppPage)->nUsed > 0) { return; }
    HostMem_Free(*ppPage, kHashSourceTag, __LINE__);
    *ppPage = nullptr;
    if (--pRepeats->nUsedPages == 0) { freeRepeats(pRepeats); }
}

}  // namespace

bool reserveRepeat(Repeats *pRepeats, int32_t nValue) {
    const int32_t iPage = nValue / kPageValues;
    if (reachPage(pRepeats, iPage) && growPage(pRepeats, &pRepeats->ppPages[iPage])) {
        return true;
    }
    if (pRepeats->nUsedPages == 0) { freeRepeats(pRepeats); }
    return false;
}

void addRepeat(Repeats *pRepeats, int32_t nValue, const KeyGroup *pGroup) {
    RepeatPage *pPage = pRepeats->ppPages[nValue / kPageValues];
    const int32_t iValue = nValue % kPageValues;
    if (hasValue(*pPage, iValue)) { return; }
    while (pPage->nWords <= iValue / kWordBits) {
        pPage->aBefore[pPage->nWords++] = static_cast<uint16_t>(pPage->nUsed);
    }
    const KeyGroup **ppEnd = groupsOf(pPage) + pPage->nUsed;
    const KeyGroup **ppGroup = groupsOf(pPage) + rankOf(*pPage, iValue);
    std::copy_backward(ppGroup, ppEnd, ppEnd + 1);
    *ppGroup = pGroup;
    flip(pPage, iValue, true);
}

void removeRepeat(Repeats *pRepeats, int32_t nValue) {
    const int32_t iPage = nValue / kPageValues, iValue = nValue % kPageValues;
    if (iPage >= pRepeats->nPages || pRepeats->ppPages[iPage] == nullptr) { return; }
    RepeatPage *pPage = pRepeats->ppPages[iPage];
    if (hasValue(*pPage, iValue)) {
        const KeyGroup **ppGroup = groupsOf(pPage) + rankOf(*pPage, iValue);
        std::copy(ppGroup + 1, groupsOf(pPage) + pPage->nUsed, ppGroup);
        flip(pPage, iValue, false);
    }
    freePageIfEmpty(pRepeats, &pRepeats->ppPages[iPage]);
}

int32_t nextRepeat(const Repeats &repeats, int32_t nFirst, const KeyGroup **ppGroup) {
    int32_t iFirst = nFirst % kPageValues;
    for (int32_t iPage = nFirst / kPageValues; iPage < repeats.nPages; ++iPage, iFirst = 0) {
        RepeatPage *pPage = repeats.ppPages[iPage];
        const int32_t iValue = pPage != nullptr ? nextInPage(*pPage, iFirst) : kPageValues;
        if (iValue < kPageValues) {
            *ppGroup = groupsOf(pPage)[rankOf(*pPage, iValue)];
            return iPage * kPageValues + iValue;
        }
    }
    return -1;
}

void freeRepeats(Repeats *pRepeats) {
    for (int32_t i = 0; i < pRepeats->nPages; ++i) {
        HostMem_Free(pRepeats->ppPages[i], kHashSourceTag, __LINE__);
    }
    HostMem_Free(pRepeats->ppPages, kHashSourceTag, __LINE__);
    *pRepeats = {nullptr, 0, 0};
}

}  // namespace host
