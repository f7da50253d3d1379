// Default names: the format's text, printed here rather than by the C library because formats also
// come from saved images, and the search for a number that is not in use.
#include <cstring>

#include <algorithm>

#include "host/host_report.h"
#include "names/names_internal.hpp"

namespace names {

namespace {

constexpr int32_t kFormatBytes = sizeof NamesManager::szNameFormat;

// A name format taken apart.
struct NameFormat {
    char aBefore[kFormatBytes];  // text before and behind the number, %% being %
    char aBehind[kFormatBytes];
    int32_t nBefore;
    int32_t nBehind;
    bool bLeft;
    bool bPlus;
    bool bSpace;
    bool bAlternate;
    bool bZeros;
    int64_t nWidth;
    int64_t nPrecision;  // -1: none
    char cConversion;
};

// A number in decimal digits up to 2147483647; the first character behind it, NULL if it is larger.
const char *parseNumber(const char *p, int64_t *pnNumber) {
    *pnNumber = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        *pnNumber = *pnNumber * 10 + (*p - '0');
        if (*pnNumber > INT32_MAX) { return nullptr; }
    }
    return p;
}

const char *parseFlags(const char *p, NameFormat *pFormat) {
    for (;; ++p) {
        switch (*p) {
        case '-': pFormat->bLeft = true; break;
        case '+': pFormat->bPlus = true; break;
        case ' ': pFormat->bSpace = true; break;
        case '#': pFormat->bAlternate = true; break;
        case '0': pFormat->bZeros = true; break;
        default: return p;
        }
    }
}

// A conversion from behind its % on; the first character behind it, NULL if it is not acceptable.
const char *parseConversion(const char *p, NameFormat *pFormat) {
    p = parseNumber(parseFlags(p, pFormat), &pFormat->nWidth);
    if (p != nullptr && *p == '.') { p = parseNumber(p + 1, &pFormat->nPrecision); }
    if (p == nullptr || *p == 0 || std::strchr("diuoxX", *p) == nullptr) { return nullptr; }
    pFormat->cConversion = *p;
    return p + 1;
}

// szFormat is NUL-terminated and shorter than kFormatBytes.
bool parseFormat(const char *szFormat, NameFormat *pFormat) {
    std::memset(pFormat, 0, sizeof *pFormat);
    pFormat->nPrecision = -1;
    const char *p = szFormat;
    while (p != nullptr && *p != 0) {
        if (*p == '%' && p[1] != '%') {
            p = pFormat->cConversion == 0 ? parseConversion(p + 1, pFormat) : nullptr;
            continue;
        }
        p += *p == '%' ? 1 : 0;
        if (pFormat->cConversion == 0) {
            pFormat->aBefore[pFormat->nBefore++] = *p++;
        } else {
            pFormat->aBehind[pFormat->nBehind++] = *p++;
        }
    }
    return p != nullptr && pFormat->cConversion != 0;
}

// The parts of one printed number, in the order of printing; what is not there has length 0.
struct PrintedNumber {
    int64_t nBlanksBefore;
    char aSign[2];
    int32_t nSign;
    int64_t nZeros;
    char aDigits[12];
    int32_t nDigits;
    int64_t nBlanksBehind;
};

char *lastDigit(PrintedNumber *pPrinted) {
    return pPrinted->aDigits + sizeof pPrinted->aDigits - 1;
}

// Digits are put at the end of aDigits.
void printDecimal(uint32_t nNumber, PrintedNumber *pPrinted) {
    char *p = lastDigit(pPrinted);
    for (; nNumber > 9; nNumber /= 10) { *p-- = static_cast<char>('0' + nNumber % 10); }
    *p = static_cast<char>('0' + nNumber);
    pPrinted->nDigits = static_cast<int32_t>(lastDigit(pPrinted) - p) + 1;
}

// nBits: what each digit tells.
void printBits(uint32_t nNumber, uint32_t nBits, const char *pAlphabet, PrintedNumber *pPrinted) {
    char *p = lastDigit(pPrinted);
    const uint32_t nMask = (1U << nBits) - 1;
    for (; nNumber > nMask; nNumber >>= nBits) { *p-- = pAlphabet[nNumber & nMask]; }
    *p = pAlphabet[nNumber];
    pPrinted->nDigits = static_cast<int32_t>(lastDigit(pPrinted) - p) + 1;
}

void printDigits(uint32_t nNumber, char cConversion, PrintedNumber *pPrinted) {
    switch (cConversion) {
    case 'o': printBits(nNumber, 3, "01234567", pPrinted); break;
    case 'x': printBits(nNumber, 4, "0123456789abcdef", pPrinted); break;
    case 'X': printBits(nNumber, 4, "0123456789ABCDEF", pPrinted); break;
    default: printDecimal(nNumber, pPrinted);
    }
}

// nNumber is at least 1, which spares the rules for 0 and for negative numbers.
void printNumber(const NameFormat &format, int32_t nNumber, PrintedNumber *pPrinted) {
    *pPrinted = {};
    const char c = format.cConversion;
    printDigits(static_cast<uint32_t>(nNumber), c, pPrinted);
    if (c == 'd' || c == 'i') {
        pPrinted->nSign = format.bPlus || format.bSpace ? 1 : 0;
        pPrinted->aSign[0] = format.bPlus ? '+' : ' ';
    } else if (format.bAlternate && c != 'u' && c != 'o') {
        pPrinted->nSign = 2;
        pPrinted->aSign[0] = '0';
        pPrinted->aSign[1] = c;
    }
    pPrinted->nZeros = std::max<int64_t>(0, format.nPrecision - pPrinted->nDigits);
    if (format.bAlternate && c == 'o') {
        pPrinted->nZeros = std::max<int64_t>(pPrinted->nZeros, 1);
    }
    const int64_t nFill = std::max<int64_t>(0, format.nWidth - pPrinted->nSign - pPrinted->nZeros -
                                                   pPrinted->nDigits);
    if (format.bLeft) {
        pPrinted->nBlanksBehind = nFill;
    } else if (format.bZeros && format.nPrecision < 0) {
        pPrinted->nZeros += nFill;
    } else {
        pPrinted->nBlanksBefore = nFill;
    }
}

char *put(char *p, const char *pText, int32_t nBytes) {
    std::memcpy(p, pText, static_cast<size_t>(nBytes));
    return p + nBytes;
}

char *putRepeated(char *p, char c, int64_t nCount) {
    if (nCount > 0) {  // mostly it is not, and not worth a call
        std::memset(p, c, static_cast<size_t>(nCount));
    }
    return p + nCount;
}

// A formatted name before it is written: without trailing blanks, which therefore need no memory,
// however many the width asks for.
struct FormattedName {
    PrintedNumber number;
    int32_t nBehind;  // of the text behind the number
    int64_t nLength;
};

FormattedName formatName(const NameFormat &format, int32_t nNumber) {
    FormattedName name;
    PrintedNumber &number = name.number;
    printNumber(format, nNumber, &number);
    name.nBehind =
        static_cast<int32_t>(trimmedLength(format.aBehind, static_cast<uint64_t>(format.nBehind)));
    if (name.nBehind == 0) { number.nBlanksBehind = 0; }
    name.nLength = format.nBefore + number.nBlanksBefore + number.nSign + number.nZeros +
                   number.nDigits + number.nBlanksBehind + name.nBehind;
    return name;
}

void writeName(const NameFormat &format, const FormattedName &name, char *p) {
    const PrintedNumber &number = name.number;
    p = put(p, format.aBefore, format.nBefore);
    p = putRepeated(p, ' ', number.nBlanksBefore);
    p = put(p, number.aSign, number.nSign);
    p = putRepeated(p, '0', number.nZeros);
    p = put(p, number.aDigits + sizeof number.aDigits - static_cast<size_t>(number.nDigits),
            number.nDigits);
    p = putRepeated(p, ' ', number.nBlanksBehind);
    p = put(p, format.aBehind, name.nBehind);
    *p = 0;
}

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
        if (!bFound || addOneName(mgr, i, candidate.szText, candidate.nLength) != 0) {
            Host_ReportError(kSourceTag, __LINE__, 0,
                             "NamesManager_AddName failed - possibly out of memory?");
            return 1;
        }
    }
    mgr->nGeneratedNameBase = run.nNumber - 1;
    return 0;
}

}  // namespace

bool isNameFormat(const char *szFormat) {
    NameFormat format;
    return strnlen(szFormat, kFormatBytes) < kFormatBytes && parseFormat(szFormat, &format);
}

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
