// Hashing of keys, unpredictable because every process draws a secret of its own.
#ifndef HOST_TEXT_HASH_HPP
#define HOST_TEXT_HASH_HPP

#include <cstdint>
#include <cstring>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "host/hash_table.hpp"

namespace host {

struct HashSecret {
    unsigned char bytes[XXH_SECRET_DEFAULT_SIZE];
};

const HashSecret &processSecret();

inline KeyHash hashText(const HashSecret &secret, const char *szText) {
    return keyHash(
        XXH3_64bits_withSecret(szText, std::strlen(szText), secret.bytes, sizeof secret.bytes));
}

}  // namespace host

#endif
