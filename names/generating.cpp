/* Default names: the format's text, printed here rather than by the C library because formats also come from saved images, and the search
 * for a number that is not in use. */
#include <string.h>

#include <algorithm>

#include "host/host_report.h"
#include "names/names_internal.hpp"

namespace names {

namespace {

constexpr int32_t kFormatBytes = sizeof NamesManager::szNameFormat;

/* A name format taken apart. */
struct NameFormat {
    char aBefore[kFormatBytes]; /* text before and behind the number, %% being % */
    char aBehind[kFormatBytes];
    int32_t nBefore;
    int32_t nBehind;
    bool bLeft;
    bool bPlus;
    bool bSpace;
    bool bAlternate;
    bool bZeros;
    int64_t nWidth;
    int64_t nPrecision; /* -1: none */
    char cConversion;
};

/* A number in decimal digits up to 2147483647; the first character behind it, NULL if it is larger. */
const char *parseNumber(const char *p, int64_t *pnNumber) {
    *pnNumber = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        *pnNumber = *pnNumber * 10 + (*p - '0');
        if (*pnNumber > INT32_MAX) {
            return nullptr;
        }
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

/* A conversion from behind its % on; the first character behind it, NULL if it is not acceptable. */
const char *parseConversion(const char *p, NameFormat *pFormat) {
    p = parseNumber(parseFlags(p, pFormat), &pFormat->nWidth);
    if (p != nullptr && *p == '.') {
        p = parseNumber(p + 1, &pFormat->nPrecision);
    }
    if (p == nullptr || *p == 0 || strchr("diuoxX", *p) == nullptr) {
        return nullptr;
    }
    pFormat->cConversion = *p;
    return p + 1;
}

/* szFormat is NUL-terminated and shorter than kFormatBytes. */
bool parseFormat(const char *szFormat, NameFormat *pFormat) {
    memset(pFormat, 0, sizeof *pFormat);
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

/* The parts of one printed number, in the order of printing; what is not there has length 0. */
struct PrintedNumber {
    int64_t nBlanksBefore;
    char aSign[2];
    int32_t nSign;
    int64_t nZeros;
    char aDigits[12];
    int32_t nDigits;
    int64_t nBlanksBehind;
};

/* Digits are put at the end of aDigits. */
void printDigits(uint32_t nNumber, char cConversion, PrintedNumber *pPrinted) {
    const char *pAlphabet = cConversion == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
    const uint32_t nBase = cConversion == 'o' ? 8 : cConversion == 'x' || cConversion == 'X' ? 16 : 10;
    pPrinted->nDigits = 0;
    do {
        pPrinted->aDigits[sizeof pPrinted->aDigits - 1 - static_cast<size_t>(pPrinted->nDigits++)] = pAlphabet[nNumber % nBase];
        nNumber /= nBase;
    } while (nNumber != 0);
}

/* nNumber is at least 1, which spares the rules for 0 and for negative numbers. */
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
    const int64_t nFill = std::max<int64_t>(0, format.nWidth - pPrinted->nSign - pPrinted->nZeros - pPrinted->nDigits);
    if (format.bLeft) {
        pPrinted->nBlanksBehind = nFill;
    } else if (format.bZeros && format.nPrecision < 0) {
        pPrinted->nZeros += nFill;
    } else {
        pPrinted->nBlanksBefore = nFill;
    }
}

char *put(char *p, const char *pText, int32_t nBytes) {
    memcpy(p, pText, static_cast<size_t>(nBytes));
    return p + nBytes;
}

char *putRepeated(char *p, char c, int64_t nCount) {
    memset(p, c, static_cast<size_t>(nCount));
    return p + nCount;
}

/* A name without its trailing blanks, as it will be stored. */
struct Candidate {
    const char *szText;
    int32_t nLength;
};

/* The formatted name with the given number, without trailing blanks, which therefore need no memory, however many the width asks for. False
 * if it is too long to store or without memory. */
bool formatCandidate(const NameFormat &format, int32_t nNumber, TextBuffer *pBuffer, Candidate *pCandidate) {
    PrintedNumber printed;
    printNumber(format, nNumber, &printed);
    const int32_t nBehind = static_cast<int32_t>(trimmedLength(format.aBehind, static_cast<uint64_t>(format.nBehind)));
    if (nBehind == 0) {
        printed.nBlanksBehind = 0;
    }
    const int64_t nLength =
        format.nBefore + printed.nBlanksBefore + printed.nSign + printed.nZeros + printed.nDigits + printed.nBlanksBehind + nBehind;
    char *pText = nLength <= kMaxNameBytes ? roomFor(pBuffer, static_cast<uint64_t>(nLength) + 1) : nullptr;
    if (pText == nullptr) {
        return false;
    }
    char *p = put(pText, format.aBefore, format.nBefore);
    p = putRepeated(p, ' ', printed.nBlanksBefore);
    p = put(p, printed.aSign, printed.nSign);
    p = putRepeated(p, '0', printed.nZeros);
    p = put(p, printed.aDigits + sizeof printed.aDigits - static_cast<size_t>(printed.nDigits), printed.nDigits);
    p = putRepeated(p, ' ', printed.nBlanksBehind);
    p = put(p, format.aBehind, nBehind);
    *p = 0;
    *pCandidate = {pText, static_cast<int32_t>(nLength)};
    return true;
}

/* The fixed text for number 1. Only an empty manager gets here with it, so it cannot be in use. */
void firstCandidate(const NamesManager *mgr, TextBuffer *pBuffer, Candidate *pCandidate) {
    const uint64_t nLength = trimmedLength(mgr->szFirstGeneratedName, strlen(mgr->szFirstGeneratedName));
    memcpy(pBuffer->aLocal, mgr->szFirstGeneratedName, nLength);
    pBuffer->aLocal[nLength] = 0;
    *pCandidate = {pBuffer->aLocal, static_cast<int32_t>(nLength)};
}

/* The next candidate that is not in use, from number *pnNumber + 1 on; *pnNumber becomes its number. False at the end of the 32-bit range
 * or when a candidate cannot be made. */
bool findFreeName(NamesManager *mgr, const NameFormat &format, TextBuffer *pBuffer, int32_t *pnNumber, Candidate *pCandidate) {
    if (*pnNumber == 0 && mgr->szFirstGeneratedName[0] != 0) {
        firstCandidate(mgr, pBuffer, pCandidate);
        *pnNumber = 1;
        return true;
    }
    do {
        if (*pnNumber == INT32_MAX || !formatCandidate(format, *pnNumber + 1, pBuffer, pCandidate)) {
            return false;
        }
        ++*pnNumber;
    } while (findText(mgr, pCandidate->szText) >= 0);
    return true;
}

int32_t generateNames(NamesManager *mgr, int32_t iLastIndex) {
    TextBuffer buffer;
    NameFormat format;
    Candidate candidate;
    int32_t nNumber = std::max(mgr->nGeneratedNameBase, mgr->nNames);
    const bool bFormat = isNameFormat(mgr->szNameFormat) && parseFormat(mgr->szNameFormat, &format);
    for (int32_t i = mgr->nNames; i <= iLastIndex; ++i) {
        const bool bFound = bFormat && findFreeName(mgr, format, &buffer, &nNumber, &candidate);
        if (!bFound || addOneName(mgr, i, candidate.szText, candidate.nLength) != 0) {
            Host_ReportError(kSourceTag, __LINE__, 0, "NamesManager_AddName failed - possibly out of memory?");
            return 1;
        }
    }
    mgr->nGeneratedNameBase = nNumber - 1;
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

void NamesManager_SetFirstGeneratedName(NamesManager *mgr, const char *szName) {
    memset(mgr->szFirstGeneratedName, 0, sizeof mgr->szFirstGeneratedName);
    memcpy(mgr->szFirstGeneratedName, szName, strnlen(szName, sizeof mgr->szFirstGeneratedName - 1));
}
