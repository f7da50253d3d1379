// The format of default names, and the text that it makes of a number. Printed here rather than by
// the C library, because formats also come from saved images.
#ifndef NAMES_STORAGE_NAME_FORMAT_HPP
#define NAMES_STORAGE_NAME_FORMAT_HPP

#include "names/storage/record.hpp"

namespace names {

constexpr int32_t kFormatBytes = sizeof NamesManager::szNameFormat;

// A name format taken apart.
struct NameFormat {
    char aBefore[kFormatBytes];  // text before the number, %% being %
    char aAfter[kFormatBytes];
    int32_t nBefore;
    int32_t nAfter;
    bool bLeft;
    bool bPlus;
    bool bSpace;
    bool bAlternate;
    bool bZeros;
    int64_t nWidth;
    int64_t nPrecision;  // -1: none
    char cConversion;
};

// Takes a format apart. False if it is not acceptable for default names. Reads no more than
// kFormatBytes bytes of it.
bool parseNameFormat(const char *szFormat, NameFormat *pFormat);

bool isNameFormat(const char *szFormat);

// The parts of a printed number, in the order of printing. What is not there has length 0.
struct PrintedNumber {
    int64_t nBlanksBefore;
    char aSign[2];
    int32_t nSign;
    int64_t nZeros;
    char aDigits[12];  // at its end
    int32_t nDigits;
    int64_t nBlanksAfter;
};

// A default name before it is written. It has no trailing blanks, which therefore need no memory,
// even if the format's width asks for very many.
struct FormattedName {
    PrintedNumber number;
    int32_t nAfter;  // length of the text after the number
    int64_t nLength;
};

FormattedName formatName(const NameFormat &format, int32_t nNumber);

// Writes the name and its NUL.
void writeName(const NameFormat &format, const FormattedName &name, char *p);

}  // namespace names

#endif
