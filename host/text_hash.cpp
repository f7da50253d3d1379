#include "host/text_hash.hpp"

#include "host/platform.hpp"

namespace host {
namespace {

HashSecret drawSecret() {
    HashSecret secret;
    if (!randomBytes(secret.bytes, sizeof secret.bytes)) {
        XXH3_generateSecret_fromSeed(secret.bytes, randomNumber());
    }
    return secret;
}

}  // namespace

const HashSecret &processSecret() {
    static const HashSecret secret = drawSecret();
    return secret;
}

}  // namespace host
