// Names that are about to be stored.
#include "names/storage/given_names.hpp"

namespace names {

// A stretch of names that turn out to lie back to back is copied in one piece. What ended each of
// them there, a blank perhaps, becomes a NUL.
void copyTexts(char *pText, const GivenNames &given, int32_t nNames, int32_t nBytes) {
    if (given.ppNames == nullptr) {
        std::memcpy(pText, given.pText, static_cast<size_t>(nBytes));
        return;
    }
    for (int32_t i = 0; i < nNames;) {
        const char *pSource = given.ppNames[i];
        int64_t nStretch = given.pLengths[i];
        int32_t iEnd = i + 1;
        while (iEnd < nNames && given.ppNames[iEnd] == pSource + nStretch + 1) {
            nStretch += 1 + given.pLengths[iEnd++];
        }
        std::memmove(pText, pSource, static_cast<size_t>(nStretch));
        for (; i < iEnd; ++i) {
            pText += given.pLengths[i];
            *pText++ = 0;
        }
    }
}

bool areTrimmed(const GivenNames &given, int32_t nNames) {
    const char *pName = given.pText;
    for (int32_t k = 0; k < nNames; ++k) {
        pName = given.ppNames != nullptr ? given.ppNames[k] : pName;
        const int32_t nLength = given.pLengths[k];
        if (nLength > 0 && pName[nLength - 1] == ' ') { return false; }
        pName += nLength + 1;
    }
    return true;
}

}  // namespace names
