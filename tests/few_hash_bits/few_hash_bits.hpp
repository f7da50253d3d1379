// Hashes of which a test keeps few bits, in place of host/text_hash.hpp.
#pragma once

#include <functional>
#include <string_view>

#include "host/hash_table.hpp"

struct KeptBits {
    uint64_t nOfHash;  // of what becomes a hash
    uint8_t nOfTag;    // of the tag that comes of it
};
inline KeptBits g_keptBits = {~uint64_t{0}, 0xff};

namespace host {

struct HashSecret {};

inline const HashSecret &processSecret() {
    static constexpr HashSecret kNone;
    return kNone;
}

inline KeyHash hashText(const HashSecret & /*secret*/, const char *szText) {
    const KeyHash hash = keyHash(std::hash<std::string_view>()(szText) & g_keptBits.nOfHash);
    return {hash.nHash, uint8_t((hash.nTag & g_keptBits.nOfTag) | 1)};
}

}  // namespace host
