// Default names: the search for a number whose name is not in use.
#include "names/generating.hpp"

#include <algorithm>

#include "host/host_report.h"
#include "names/lookup.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/name_format.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

constexpr int32_t kMaxAhead = 32;
constexpr int32_t kAheadBytes = 64;  // for a name that is looked up ahead, its NUL included; names
                                     // that take more are looked up alone

// Names that were looked up together. A name that is stored later has another number and so another
// text: the answers hold as long as lookups find the same index.
struct LookedAhead {
    int32_t nNames;
    int32_t iNext;  // the one that is tried next
    int32_t aLengths[kMaxAhead];
    int32_t aFound[kMaxAhead];
    const char *apTexts[kMaxAhead];
    char aTexts[kMaxAhead][kAheadBytes];
};

// The generation of default names for a range of indices.
struct Generation {
    NamesManager *mgr;
    NameFormat format;
    int32_t nNumber;  // of the last name tried
    int32_t nWanted;  // names still to come
    LookedAhead ahead;
    TextBuffer buffer;  // for a name that is looked up alone
};

// A name to be tried, as it will be stored.
struct Candidate {
    const char *szText;
    int32_t nLength;
};

// The fixed text for number 1. Only an empty manager gets here with it, so it cannot be in use.
Candidate takeFirst(Generation *pGeneration) {
    const char *szFirst = pGeneration->mgr->szFirstGeneratedName;
    const int32_t nLength = static_cast<int32_t>(trimmedLength(szFirst, std::strlen(szFirst)));
    copyText(pGeneration->buffer.aLocal, szFirst, nLength);
    pGeneration->nNumber = 1;
    return {pGeneration->buffer.aLocal, nLength};
}

// Looks up as many of the next names as will be wanted in any case. False if there is not even one:
// it is too long, or numbers have run out.
bool lookAhead(Generation *pGeneration) {
    LookedAhead *pAhead = &pGeneration->ahead;
    const int32_t nMost =
        std::min({kMaxAhead, pGeneration->nWanted, INT32_MAX - pGeneration->nNumber});
    int32_t n = 0;
    for (; n < nMost; ++n) {
        const FormattedName name = formatName(pGeneration->format, pGeneration->nNumber + 1 + n);
        if (name.nLength >= kAheadBytes) { break; }
        writeName(pGeneration->format, name, pAhead->aTexts[n]);
        pAhead->apTexts[n] = pAhead->aTexts[n];
        pAhead->aLengths[n] = static_cast<int32_t>(name.nLength);
    }
    pAhead->iNext = 0;
    pAhead->nNames = n > 0 ? findTexts(pGeneration->mgr, pAhead->apTexts, n, pAhead->aFound) : 0;
    return n > 0;
}

// Takes the name with the next number and looks it up: its index goes to *piFound. False if it
// cannot be made: it is too long to store, or memory or numbers ran out.
bool takeAlone(Generation *pGeneration, Candidate *pCandidate, int32_t *piFound) {
    if (pGeneration->nNumber == INT32_MAX) { return false; }
    const FormattedName name = formatName(pGeneration->format, ++pGeneration->nNumber);
    char *pText = name.nLength <= kMaxNameBytes
                      ? roomFor(&pGeneration->buffer, static_cast<uint64_t>(name.nLength) + 1)
                      : nullptr;
    if (pText == nullptr) { return false; }
    writeName(pGeneration->format, name, pText);
    *pCandidate = {pText, static_cast<int32_t>(name.nLength)};
    findTexts(pGeneration->mgr, &pCandidate->szText, 1, piFound);
    return true;
}

// The same, if possible from the names looked up ahead.
bool tryNext(Generation *pGeneration, Candidate *pCandidate, int32_t *piFound) {
    LookedAhead *pAhead = &pGeneration->ahead;
    const bool bKnown = pAhead->iNext < pAhead->nNames && isIndexCurrent(pGeneration->mgr);
    if (!bKnown && !lookAhead(pGeneration)) { return takeAlone(pGeneration, pCandidate, piFound); }
    const int32_t k = pAhead->iNext++;
    ++pGeneration->nNumber;
    *pCandidate = {pAhead->apTexts[k], pAhead->aLengths[k]};
    *piFound = pAhead->aFound[k];
    return true;
}

// The next name that is not in use. False if a name on the way to it cannot be made.
bool findFreeName(Generation *pGeneration, Candidate *pCandidate) {
    if (pGeneration->nNumber == 0 && pGeneration->mgr->szFirstGeneratedName[0] != 0) {
        *pCandidate = takeFirst(pGeneration);
        return true;
    }
    int32_t iFound = -1;
    do {
        if (!tryNext(pGeneration, pCandidate, &iFound)) { return false; }
    } while (iFound >= 0);
    return true;
}

int32_t generateNames(NamesManager *mgr, int32_t iLastIndex) {
    Generation generation;
    generation.mgr = mgr;
    generation.nNumber = std::max(mgr->nGeneratedNameBase, mgr->nNames);
    generation.ahead.nNames = generation.ahead.iNext = 0;
    const bool bFormat = parseNameFormat(mgr->szNameFormat, &generation.format);
    for (int32_t i = mgr->nNames; i <= iLastIndex; ++i) {
        Candidate candidate;
        generation.nWanted = iLastIndex - i + 1;
        const bool bFound = bFormat && findFreeName(&generation, &candidate);
        if (!bFound || !storeName(mgr, i, candidate.szText, candidate.nLength)) {
            Host_ReportError(kSourceTag, __LINE__, 0,
                             "NamesManager_AddName failed - possibly out of memory?");
            return 1;
        }
        releaseAtIntervals(mgr, i);
    }
    mgr->nGeneratedNameBase = generation.nNumber - 1;
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_GenerateNamesUpTo(NamesManager *mgr, int32_t iLastIndex) {
    return iLastIndex < mgr->nNames ? 0 : generateNames(mgr, iLastIndex);
}

int32_t NamesManager_GenerateNames(NamesManager *mgr, int32_t count) {
    ScopedLock lock(mgr);
    return mgr->nNames < count ? NamesManager_GenerateNamesUpTo(mgr, count - 1) : 0;
}

// The text may lie in the field itself.
void NamesManager_SetFirstGeneratedName(NamesManager *mgr, const char *szName) {
    const size_t nLength = strnlen(szName, sizeof mgr->szFirstGeneratedName - 1);
    std::memmove(mgr->szFirstGeneratedName, szName, nLength);
    std::memset(mgr->szFirstGeneratedName + nLength, 0, sizeof mgr->szFirstGeneratedName - nLength);
}
