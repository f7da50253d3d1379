// Default names: the format's text, printed.
#include "names/storage/name_format.hpp"

#include <algorithm>

namespace names {

namespace {

// Reads a number in decimal digits up to 2147483647. Returns where it ends, NULL if it is larger.
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

// Reads a conversion whose % lies before p. Returns where it ends, NULL if it is not acceptable.
const char *parseConversion(const char *p, NameFormat *pFormat) {
    p = parseNumber(parseFlags(p, pFormat), &pFormat->nWidth);
    if (p != nullptr && *p == '.') { p = parseNumber(p + 1, &pFormat->nPrecision); }
    if (p == nullptr || *p == 0 || std::strchr("diuoxX", *p) == nullptr) { return nullptr; }
    pFormat->cConversion = *p;
    return p + 1;
}

char *lastDigit(PrintedNumber *pPrinted) {
    return pPrinted->aDigits + sizeof pPrinted->aDigits - 1;
}

void printDecimal(uint32_t nNumber, PrintedNumber *pPrinted) {
    char *p = lastDigit(pPrinted);
    for (; nNumber > 9; nNumber /= 10) { *p-- = static_cast<char>('0' + nNumber % 10); }
    *p = static_cast<char>('0' + nNumber);
    pPrinted->nDigits = static_cast<int32_t>(lastDigit(pPrinted) - p) + 1;
}

// nBits: bits of the number for each digit.
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

void printSign(const NameFormat &format, PrintedNumber *pPrinted) {
    const char c = format.cConversion;
    if (c == 'd' || c == 'i') {
        pPrinted->nSign = format.bPlus || format.bSpace ? 1 : 0;
        pPrinted->aSign[0] = format.bPlus ? '+' : ' ';
    } else if (format.bAlternate && (c == 'x' || c == 'X')) {
        pPrinted->nSign = 2;
        pPrinted->aSign[0] = '0';
        pPrinted->aSign[1] = c;
    }
}

// nNumber is at least 1, which spares the rules for 0 and for negative numbers.
void printNumber(const NameFormat &format, int32_t nNumber, PrintedNumber *pPrinted) {
    *pPrinted = {};
    printDigits(static_cast<uint32_t>(nNumber), format.cConversion, pPrinted);
    printSign(format, pPrinted);
    const int64_t nLeastZeros = format.bAlternate && format.cConversion == 'o' ? 1 : 0;
    pPrinted->nZeros = std::max(nLeastZeros, format.nPrecision - pPrinted->nDigits);
    const int64_t nFill = std::max<int64_t>(0, format.nWidth - pPrinted->nSign - pPrinted->nZeros -
                                                   pPrinted->nDigits);
    if (format.bLeft) {
        pPrinted->nBlanksAfter = nFill;
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

}  // namespace

bool parseNameFormat(const char *szFormat, NameFormat *pFormat) {
    if (strnlen(szFormat, kFormatBytes) == kFormatBytes) { return false; }
    *pFormat = {};
    pFormat->nPrecision = -1;
    const char *p = szFormat;
    while (p != nullptr && *p != 0) {
        if (*p == '%' && p[1] != '%') {  // the number, which may come once
            p = pFormat->cConversion == 0 ? parseConversion(p + 1, pFormat) : nullptr;
            continue;
        }
        p += *p == '%' ? 1 : 0;
        if (pFormat->cConversion == 0) {
            pFormat->aBefore[pFormat->nBefore++] = *p++;
        } else {
            pFormat->aAfter[pFormat->nAfter++] = *p++;
        }
    }
    return p != nullptr && pFormat->cConversion != 0;
}

bool isNameFormat(const char *szFormat) {
    NameFormat format;
    return parseNameFormat(szFormat, &format);
}

FormattedName formatName(const NameFormat &format, int32_t nNumber) {
    FormattedName name;
    PrintedNumber &number = name.number;
    printNumber(format, nNumber, &number);
    name.nAfter =
        static_cast<int32_t>(trimmedLength(format.aAfter, static_cast<uint64_t>(format.nAfter)));
    if (name.nAfter == 0) { number.nBlanksAfter = 0; }
    name.nLength = format.nBefore + number.nBlanksBefore + number.nSign + number.nZeros +
                   number.nDigits + number.nBlanksAfter + name.nAfter;
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
    p = putRepeated(p, ' ', number.nBlanksAfter);
    p = put(p, format.aAfter, name.nAfter);
    *p = 0;
}

}  // namespace names
