// Walking stored text from NUL to NUL. Texts lie back to back in a block, each ended by its NUL, so
// everything that the module knows about where names begin comes from here. Text is looked at in
// windows of 64 bytes, one mask bit per byte, which is two to five times faster than strlen for
// each name.
#ifndef NAMES_STORAGE_TEXT_WALK_HPP
#define NAMES_STORAGE_TEXT_WALK_HPP

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace names {

constexpr int32_t kWindowBytes = 64;

// Text to be walked, and where the memory ends that it lies in. A window may reach beyond the text;
// what it holds there does not count, and may never have been written.
struct TextSpan {
    const char *pText;
    const char *pEnd;
    const char *pMemoryEnd;
};

// Bit i of the result: byte i of the 64 bytes at p equals c.
#if defined(__SSE2__)
inline uint64_t matchBytes(const char *p, char c) {
    const __m128i wanted = _mm_set1_epi8(c);
    uint64_t nMask = 0;
    for (int i = 0; i < 4; ++i) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + 16 * i));
        nMask |= static_cast<uint64_t>(
                     static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted))))
                 << (16 * i);
    }
    return nMask;
}
#elif defined(__ARM_NEON) && defined(__aarch64__)
inline uint64_t matchBytes(const char *p, char c) {
    static const uint8_t aBits[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t bits = vld1q_u8(aBits);
    const uint8x16_t wanted = vdupq_n_u8(static_cast<uint8_t>(c));
    const uint8_t *pBytes = reinterpret_cast<const uint8_t *>(p);
    const uint8x16_t m0 = vandq_u8(vceqq_u8(vld1q_u8(pBytes), wanted), bits);
    const uint8x16_t m1 = vandq_u8(vceqq_u8(vld1q_u8(pBytes + 16), wanted), bits);
    const uint8x16_t m2 = vandq_u8(vceqq_u8(vld1q_u8(pBytes + 32), wanted), bits);
    const uint8x16_t m3 = vandq_u8(vceqq_u8(vld1q_u8(pBytes + 48), wanted), bits);
    const uint8x16_t sum = vpaddq_u8(vpaddq_u8(m0, m1), vpaddq_u8(m2, m3));
    return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(sum, sum)), 0);
}
#else
inline uint64_t matchBytes(const char *p, char c) {
    constexpr uint64_t kLow7 = 0x7f7f7f7f7f7f7f7f;
    const uint64_t nWanted = 0x0101010101010101 * static_cast<uint8_t>(c);
    uint64_t nMask = 0;
    for (int i = 0; i < kWindowBytes; i += 8) {
        uint64_t nWord = 0;
        for (int j = 0; j < 8; ++j) {  // the first byte lowest, whatever the machine's byte order
            nWord |= static_cast<uint64_t>(static_cast<uint8_t>(p[i + j])) << (8 * j);
        }
        nWord ^= nWanted;
        const uint64_t nZeros =
            (~(((nWord & kLow7) + kLow7) | nWord | kLow7)) >> 7;  // 1 in each byte that was equal
        nMask |= ((nZeros * 0x0102040810204080) >> 56) << i;
    }
    return nMask;
}
#endif

// matchBytes for the window at p, which begins inside the text. Bytes beyond the text match
// nothing.
inline uint64_t matchWindow(const char *p, const TextSpan &text, char c) {
    const int64_t nInText = text.pEnd - p;
    if (nInText >= kWindowBytes) { return matchBytes(p, c); }
    const uint64_t nMask = (uint64_t{1} << nInText) - 1;
    if (text.pMemoryEnd - p >= kWindowBytes) { return matchBytes(p, c) & nMask; }
    char aWindow[kWindowBytes] = {};
    std::memcpy(aWindow, p, static_cast<size_t>(nInText));
    return matchBytes(aWindow, c) & nMask;
}

// Position of the lowest bit; any position for 0.
inline uint32_t lowestBit(uint64_t nMask) {
    return static_cast<uint32_t>(__builtin_ctzll(nMask | (1ULL << 63)));
}

// Without a population count in the baseline instructions the compiler would call a function.
inline int32_t countBits(uint64_t n) {
    n -= (n >> 1) & 0x5555555555555555;
    n = (n & 0x3333333333333333) + ((n >> 2) & 0x3333333333333333);
    n = (n + (n >> 4)) & 0x0f0f0f0f0f0f0f0f;
    return static_cast<int32_t>((n * 0x0101010101010101) >> 56);
}

// Length of the name at pText, without its NUL. Memory can be read up to pMemoryEnd.
inline int32_t lengthOfName(const char *pText, const char *pMemoryEnd) {
    const char *p = pText;
#if defined(__SSE2__)
    for (; pMemoryEnd - p >= 16; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        const int nNuls = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
        if (nNuls != 0) {
            return static_cast<int32_t>(p - pText) + __builtin_ctz(static_cast<unsigned>(nNuls));
        }
    }
#else
    static_cast<void>(pMemoryEnd);
#endif
    return static_cast<int32_t>(p - pText) + static_cast<int32_t>(std::strlen(p));
}

// Room for the starts of nNames names, for the end of the last one, and for what findNameStarts may
// write beyond.
constexpr int32_t roomForStarts(int32_t nNames) {
    return nNames + 1 + kWindowBytes;
}

// Writes the offsets from text.pText at which the first nNames names start, then the offset at
// which the last one ends, NULs included: aStarts[k + 1] - aStarts[k] - 1 is the length of name k.
// Returns the number of names found, fewer than nNames where the text ends.
int32_t findNameStarts(const TextSpan &text, int32_t nNames, int32_t *aStarts);

// Number of bytes that the first nNames names of a text take, NULs included. The text holds as
// many.
inline int32_t bytesOfNames(const TextSpan &text, int32_t nNames) {
    if (nNames <= 0) { return 0; }
    const char *p = text.pText;
    uint64_t nNuls = matchWindow(p, text, 0);
    for (int32_t nInWindow = countBits(nNuls); nInWindow < nNames; nInWindow = countBits(nNuls)) {
        nNames -= nInWindow;
        p += kWindowBytes;
        nNuls = matchWindow(p, text, 0);
    }
    while (--nNames > 0) { nNuls &= nNuls - 1; }
    return static_cast<int32_t>(p - text.pText) + static_cast<int32_t>(lowestBit(nNuls)) + 1;
}

}  // namespace names

#endif
