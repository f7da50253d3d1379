// Names that are about to be stored, trimmed and measured.
#ifndef NAMES_STORAGE_GIVEN_NAMES_HPP
#define NAMES_STORAGE_GIVEN_NAMES_HPP

#include "names/storage/record.hpp"

namespace names {

// Names to be stored.
struct GivenNames {
    const char *const
        *names;  // where each begins; NULL: back to back from pText on, each followed by its NUL
    const char *pText;
    const int32_t *lengths;
};

// Bytes that names of these lengths take, NULs included.
inline int64_t bytesFor(const int32_t *lengths, int32_t nNames) {
    int64_t nBytes = nNames;
    for (int32_t k = 0; k < nNames; ++k) { nBytes += lengths[k]; }
    return nBytes;
}

inline const char *firstGiven(const GivenNames &given) {
    return given.names != nullptr ? given.names[0] : given.pText;
}

inline GivenNames skipGiven(const GivenNames &given, int32_t nNames) {
    if (given.names != nullptr) { return {given.names + nNames, nullptr, given.lengths + nNames}; }
    return {nullptr, given.pText + bytesFor(given.lengths, nNames), given.lengths + nNames};
}

// Copies names back to back to pText, each followed by a NUL, nBytes in all.
void copyTexts(char *pText, const GivenNames &given, int32_t nNames, int32_t nBytes);

// Lookups rely on it: no stored name ends in a blank.
bool areTrimmed(const GivenNames &given, int32_t nNames);

// Sets the length of a name without trailing blanks. False if that is too long.
bool measureTrimmed(const char *pName, int32_t *pLength);

}  // namespace names

#endif
