// Storing one name of a manager as a name of another.
#include "names/storage/record.hpp"

using namespace names;

int32_t NamesManager_CopyName(NamesManager *destination, int32_t destinationIndex,
                              int32_t bDestinationOneBased, NamesManager *source,
                              int32_t sourceIndex, int32_t bSourceOneBased) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    return pName != nullptr
               ? NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pName)
               : 1;
}

int32_t NamesManager_CopyNameWithPrefix(NamesManager *destination, int32_t destinationIndex,
                                        int32_t bDestinationOneBased, NamesManager *source,
                                        int32_t sourceIndex, int32_t bSourceOneBased,
                                        const char *prefix) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    if (pName == nullptr) { return 1; }
    const size_t nPrefix = std::strlen(prefix);
    const size_t nName = std::strlen(pName) + 1;
    TextBuffer buffer;
    char *pText = roomFor(&buffer, nPrefix + nName);
    if (pText == nullptr) { return 1; }
    std::memcpy(pText, prefix, nPrefix);
    std::memcpy(pText + nPrefix, pName, nName);
    return NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pText);
}
