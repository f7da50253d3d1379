// Names that are about to be stored, trimmed and measured.
#ifndef NAMES_STORAGE_GIVEN_NAMES_HPP
#define NAMES_STORAGE_GIVEN_NAMES_HPP

#include "names/storage/record.hpp"

namespace names {

// Where names to be stored begin, each on its own or, where ppNames is NULL, back to back from
// pText on, each followed by its NUL; and their lengths.
struct GivenNames {
    const char *const *ppNames;
    const char *pText;
    const int32_t *pLengths;
};

// The bytes that names of these lengths take, NULs included.
inline int64_t bytesFor(const int32_t *pLengths, int32_t nNames) {
    int64_t nBytes = nNames;
    for (int32_t k = 0; k < nNames; ++k) { nBytes += pLengths[k]; }
    return nBytes;
}

inline const char *firstGiven(const GivenNames &given) {
    return given.ppNames != nullptr ? given.ppNames[0] : given.pText;
}

inline GivenNames skipGiven(const GivenNames &given, int32_t nNames) {
    if (given.ppNames != nullptr) {
        return {given.ppNames + nNames, nullptr, given.pLengths + nNames};
    }
    return {nullptr, given.pText + bytesFor(given.pLengths, nNames), given.pLengths + nNames};
}

// Copies names back to back to pText, each followed by a NUL, nBytes in all.
void copyTexts(char *pText, const GivenNames &given, int32_t nNames, int32_t nBytes);

// True if no name ends in a blank, which lookups rely on.
bool areTrimmed(const GivenNames &given, int32_t nNames);

// Sets the length of a name without its trailing blanks. False if that is too long.
inline bool measureTrimmed(const char *pName, int32_t *pLength) {
    const uint64_t nLength = trimmedLength(pName, std::strlen(pName));
    *pLength = static_cast<int32_t>(nLength);
    return nLength <= kMaxNameBytes;
}

inline bool endsInBlank(const char *szText) {
    const size_t nLength = std::strlen(szText);
    return nLength > 0 && szText[nLength - 1] == ' ';
}

// True if one of the names has a NUL among its bytes.
inline bool holdAnyNul(const char *const *ppNames, const int32_t *pLengths, int32_t nNames) {
    bool bAny = false;
    for (int32_t k = 0; !bAny && k < nNames; ++k) {
        bAny = std::memchr(ppNames[k], 0, static_cast<size_t>(pLengths[k])) != nullptr;
    }
    return bAny;
}

}  // namespace names

#endif
