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

constexpr int32_t kAhead = 32;
constexpr int32_t kAheadBytes = 64;  // of a name that is looked up ahead, its NUL included; names
                                     // that take more are looked up alone

// Names with consecutive numbers that were looked up together. A name that comes in later has a
// number of its own and so another text: the answers hold as long as lookups find the same index.
struct LookedAhead {
    int32_t nFirstNumber;
    int32_t nNames;
    const char *apTexts[kAhead];
    int32_t aLengths[kAhead];
    int32_t aFound[kAhead];
    char aTexts[kAhead][kAheadBytes];
};

// A run of generation.
struct Generation {
    NamesManager *mgr;
    NameFormat format;
    int32_t nNumber;    // of the last name tried
    int32_t nWanted;    // names still to come
    TextBuffer buffer;  // of a name that is looked up alone
    LookedAhead ahead;
};

// A name that is not in use, as it will be stored.
struct Candidate {
    const char *szText;
    int32_t nLength;
};

// The fixed text for number 1. Only an empty manager gets here with it, so it cannot be in use.
Candidate firstCandidate(Generation *pRun) {
    const char *szFirst = pRun->mgr->szFirstGeneratedName;
    const int32_t nLength = static_cast<int32_t>(trimmedLength(szFirst, std::strlen(szFirst)));
    copyText(pRun->buffer.aLocal, szFirst, nLength);
    pRun->nNumber = 1;
    return {pRun->buffer.aLocal, nLength};
}

// Looks up as many of the next names as will be wanted in any case. False if not even the first is
// short enough.
bool lookAhead(Generation *pRun) {
    LookedAhead *pAhead = &pRun->ahead;
    const int32_t nMost = std::min({kAhead, pRun->nWanted, INT32_MAX - pRun->nNumber});
    int32_t n = 0;
    for (; n < nMost; ++n) {
        const FormattedName name = formatName(pRun->format, pRun->nNumber + 1 + n);
        if (name.nLength >= kAheadBytes) { break; }
        writeName(pRun->format, name, pAhead->aTexts[n]);
        pAhead->apTexts[n] = pAhead->aTexts[n];
        pAhead->aLengths[n] = static_cast<int32_t>(name.nLength);
    }
    pAhead->nNames = 0;
    if (n == 0) {
        return false;  // among others because there is no next number
    }
    pAhead->nFirstNumber = pRun->nNumber + 1;
    pAhead->nNames = findTexts(pRun->mgr, pAhead->apTexts, n, pAhead->aFound);
    return true;
}

// Formats the name with the next number and looks it up: its index goes to *piFound. False if it
// cannot be made: it is too long to store, or memory or numbers ran out.
bool tryNextAlone(Generation *pRun, Candidate *pCandidate, int32_t *piFound) {
    if (pRun->nNumber == INT32_MAX) { return false; }
    const FormattedName name = formatName(pRun->format, pRun->nNumber + 1);
    char *pText = name.nLength <= kMaxNameBytes
                      ? roomFor(&pRun->buffer, static_cast<uint64_t>(name.nLength) + 1)
                      : nullptr;
    if (pText == nullptr) { return false; }
    writeName(pRun->format, name, pText);
    *pCandidate = {pText, static_cast<int32_t>(name.nLength)};
    ++pRun->nNumber;
    findTexts(pRun->mgr, &pCandidate->szText, 1, piFound);
    return true;
}

bool tryNext(Generation *pRun, Candidate *pCandidate, int32_t *piFound) {
    const LookedAhead &ahead = pRun->ahead;
    const bool bKnown =
        pRun->nNumber - ahead.nFirstNumber < ahead.nNames - 1 && isIndexCurrent(pRun->mgr);
    if (!bKnown && !lookAhead(pRun)) { return tryNextAlone(pRun, pCandidate, piFound); }
    const int32_t k = ++pRun->nNumber - ahead.nFirstNumber;
    *pCandidate = {ahead.apTexts[k], ahead.aLengths[k]};
    *piFound = ahead.aFound[k];
    return true;
}

// The next name that is not in use. False if a name on the way to it cannot be made.
bool findFreeName(Generation *pRun, Candidate *pCandidate) {
    if (pRun->nNumber == 0 && pRun->mgr->szFirstGeneratedName[0] != 0) {
        *pCandidate = firstCandidate(pRun);
        return true;
    }
    int32_t iFound = -1;
    do {
        if (!tryNext(pRun, pCandidate, &iFound)) { return false; }
    } while (iFound >= 0);
    return true;
}

int32_t generateNames(NamesManager *mgr, int32_t iLastIndex) {
    Generation run;
    run.mgr = mgr;
    run.nNumber = std::max(mgr->nGeneratedNameBase, mgr->nNames);
    run.ahead.nFirstNumber = 0;
    run.ahead.nNames = 0;
    const bool bFormat =
        isNameFormat(mgr->szNameFormat) && parseFormat(mgr->szNameFormat, &run.format);
    for (int32_t i = mgr->nNames; i <= iLastIndex; ++i) {
        Candidate candidate;
        run.nWanted = iLastIndex - i + 1;
        const bool bFound = bFormat && findFreeName(&run, &candidate);
        if (!bFound || !storeName(mgr, i, candidate.szText, candidate.nLength)) {
            Host_ReportError(kSourceTag, __LINE__, 0,
                             "NamesManager_AddName failed - possibly out of memory?");
            return 1;
        }
        releaseAtIntervals(mgr, i);
    }
    mgr->nGeneratedNameBase = run.nNumber - 1;
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
