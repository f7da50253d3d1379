// The format of default names, and the text that it makes of a number. Printed here rather than by
// the C library, because formats also come from saved images.
#ifndef NAMES_STORAGE_NAME_FORMAT_HPP
#define NAMES_STORAGE_NAME_FORMAT_HPP

#include "names/storage/record.hpp"

namespace names {

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

// szFormat is NUL-terminated and shorter than kFormatBytes.
bool parseFormat(const char *szFormat, NameFormat *pFormat);

// Tells whether szFormat is an acceptable format of default names. Looks no further than the
// record's field is wide.
bool isNameFormat(const char *szFormat);

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

// A formatted name before it is written: without trailing blanks, which therefore need no memory,
// however many the width asks for.
struct FormattedName {
    PrintedNumber number;
    int32_t nBehind;  // of the text behind the number
    int64_t nLength;
};

FormattedName formatName(const NameFormat &format, int32_t nNumber);

void writeName(const NameFormat &format, const FormattedName &name, char *p);

}  // namespace names

#endif
