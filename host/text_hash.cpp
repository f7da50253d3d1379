#include "host/text_hash.hpp"

#include <chrono>

#include "host/platform.hpp"

namespace host {

namespace {

// The time and an address have to do on a system that has no random bytes to give yet.
HashSecret drawSecret() {
    HashSecret secret;
    if (!randomBytes(secret.bytes, sizeof secret.bytes)) {
        const auto nTime =
            static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        XXH3_generateSecret_fromSeed(secret.bytes, nTime ^ reinterpret_cast<uintptr_t>(&secret));
    }
    return secret;
}

}  // namespace

const HashSecret &processSecret() {
    static const HashSecret secret = drawSecret();
    return secret;
}

}  // namespace host
