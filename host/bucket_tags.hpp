// The 16 tags of a bucket, one byte each, compared all at once. Bit i of a result is that of slot
// i. HOST_PLAIN_TAGS selects the version for machines without vectors, for a test.
#ifndef HOST_BUCKET_TAGS_HPP
#define HOST_BUCKET_TAGS_HPP

#include <cstdint>

#if defined(__SSE2__) && !defined(HOST_PLAIN_TAGS)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__) && !defined(HOST_PLAIN_TAGS)
#include <arm_neon.h>
#endif

namespace host {

constexpr uint32_t kBucketSlots = 16;

#if defined(__SSE2__) && !defined(HOST_PLAIN_TAGS)

inline uint32_t equalTags(const uint8_t *pTags, uint8_t nTag) {
    const __m128i tags = _mm_loadu_si128(reinterpret_cast<const __m128i *>(pTags));
    return static_cast<uint32_t>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(tags, _mm_set1_epi8(static_cast<char>(nTag)))));
}

#elif defined(__ARM_NEON) && defined(__aarch64__) && !defined(HOST_PLAIN_TAGS)

inline uint32_t equalTags(const uint8_t *pTags, uint8_t nTag) {
    static const uint8_t aBits[kBucketSlots] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t bits = vandq_u8(vceqq_u8(vld1q_u8(pTags), vdupq_n_u8(nTag)), vld1q_u8(aBits));
    return vaddv_u8(vget_low_u8(bits)) | static_cast<uint32_t>(vaddv_u8(vget_high_u8(bits))) << 8;
}

#else

inline uint32_t equalInEight(const uint8_t *pTags, uint8_t nTag) {
    constexpr uint64_t kLowBits = 0x7f7f7f7f7f7f7f7f;
    uint64_t nTags = 0;
    for (int i = 0; i < 8; ++i) {  // the first byte lowest, on machines of either byte order
        nTags |= static_cast<uint64_t>(pTags[i]) << (8 * i);
    }
    const uint64_t nDiffering = nTags ^ (uint64_t{0x0101010101010101} * nTag);
    // The high bit of each byte that is 0, moved down to its low bit.
    const uint64_t nEqual = ~(((nDiffering & kLowBits) + kLowBits) | nDiffering | kLowBits) >> 7;
    return static_cast<uint32_t>((nEqual * 0x0102040810204080) >> 56);
}

inline uint32_t equalTags(const uint8_t *pTags, uint8_t nTag) {
    return equalInEight(pTags, nTag) | equalInEight(pTags + 8, nTag) << 8;
}

#endif

}  // namespace host

#endif
