// The 16 tag bytes of a bucket, looked at all at once. Bit i of a mask stands for byte i. A tag is the low seven bits of its byte; the top
// bit is free for another use.
#ifndef HOST_BUCKET_TAGS_HPP
#define HOST_BUCKET_TAGS_HPP

#include <stdint.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace host {

constexpr uint32_t kBucketEntries = 16;
constexpr uint8_t kTagBits = 0x7f;

#if defined(__SSE2__)

inline uint32_t equalTags(const uint8_t *pTags, uint8_t nTag) {
    const __m128i tags = _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(pTags)), _mm_set1_epi8(kTagBits));
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(tags, _mm_set1_epi8(static_cast<char>(nTag)))));
}

inline uint32_t topBits(const uint8_t *pTags) {
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(pTags))));
}

#elif defined(__ARM_NEON) && defined(__aarch64__)

inline uint32_t gatherBits(uint8x16_t wholeBytes) {
    static const uint8_t aBits[kBucketEntries] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t bits = vandq_u8(wholeBytes, vld1q_u8(aBits));
    return vaddv_u8(vget_low_u8(bits)) | static_cast<uint32_t>(vaddv_u8(vget_high_u8(bits))) << 8;
}

inline uint32_t equalTags(const uint8_t *pTags, uint8_t nTag) {
    return gatherBits(vceqq_u8(vandq_u8(vld1q_u8(pTags), vdupq_n_u8(kTagBits)), vdupq_n_u8(nTag)));
}

inline uint32_t topBits(const uint8_t *pTags) {
    return gatherBits(vcgeq_u8(vld1q_u8(pTags), vdupq_n_u8(kTagBits + 1)));
}

#else

constexpr uint64_t kEveryByte = 0x0101010101010101;

// The first byte lowest, whatever the machine's byte order.
inline uint64_t eightTags(const uint8_t *pTags) {
    uint64_t nTags = 0;
    for (int i = 0; i < 8; ++i) {
        nTags |= static_cast<uint64_t>(pTags[i]) << (8 * i);
    }
    return nTags;
}

// Bits 0, 8, ... 56 to bits 0 to 7; the other bits are 0.
inline uint32_t gatherBits(uint64_t nBits) {
    return static_cast<uint32_t>((nBits * 0x0102040810204080) >> 56);
}

inline uint32_t equalInEight(const uint8_t *pTags, uint8_t nTag) {
    const uint64_t nDiffering = (eightTags(pTags) & (kEveryByte * kTagBits)) ^ (kEveryByte * nTag);
    return gatherBits(~((nDiffering + kEveryByte * kTagBits) >> 7) & kEveryByte);
}

inline uint32_t equalTags(const uint8_t *pTags, uint8_t nTag) {
    return equalInEight(pTags, nTag) | equalInEight(pTags + 8, nTag) << 8;
}

inline uint32_t topBits(const uint8_t *pTags) {
    return gatherBits(eightTags(pTags) >> 7 & kEveryByte) | gatherBits(eightTags(pTags + 8) >> 7 & kEveryByte) << 8;
}

#endif

}  // namespace host

#endif
