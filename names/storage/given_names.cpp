// Names that are about to be stored.
#include "names/storage/given_names.hpp"

namespace names {

// A stretch of names that turn out to lie back to back moves in one piece; whatever stands between
// them there, NULs end them here.
void copyTexts(char *pText, const GivenNames &given, int32_t nNames, int32_t nBytes) {
    if (given.names == nullptr) {
        std::memcpy(pText, given.pText, static_cast<size_t>(nBytes));
        return;
    }
    for (int32_t i = 0; i < nNames;) {
        const char *pSource = given.names[i];
        int64_t nStretch = given.lengths[i];
        int32_t iEnd = i + 1;
        while (iEnd < nNames && given.names[iEnd] == pSource + nStretch + 1) {
            nStretch += 1 + given.lengths[iEnd++];
        }
        std::memmove(pText, pSource, static_cast<size_t>(nStretch));
        for (; i < iEnd; ++i) {
            pText += given.lengths[i];
            *pText++ = 0;
        }
    }
}

// Lookups rely on it.
[[maybe_unused]] bool areTrimmed(const GivenNames &given, int32_t nNames) {
    const char *pName = given.pText;
    for (int32_t k = 0; k < nNames; ++k) {
        pName = given.names != nullptr ? given.names[k] : pName;
        const int32_t nLength = given.lengths[k];
        if (nLength > 0 && pName[nLength - 1] == ' ') { return false; }
        pName += nLength + 1;
    }
    return true;
}

// Length of a name without trailing blanks. False if that is too long.
bool measureTrimmed(const char *pName, int32_t *pLength) {
    const uint64_t nLength = trimmedLength(pName, std::strlen(pName));
    *pLength = static_cast<int32_t>(nLength);
    return nLength <= kMaxNameBytes;
}

}  // namespace names
