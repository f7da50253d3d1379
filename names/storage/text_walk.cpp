// Where names start. All reading in segment mode consists of this walk, so there are versions of it
// for what processors have beyond the baseline.
#include "names/storage/text_walk.hpp"

#include <array>

// Not on Windows, where gcc does not align wide vectors on the stack.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(_WIN32)
#define NAMES_BEYOND_BASELINE 1
#include <immintrin.h>
#else
#define NAMES_BEYOND_BASELINE 0
#endif

namespace names {

namespace {

// Takes four NULs per step, wanted or not, so that the number of names in a window costs no
// unpredictable branch per name.
[[gnu::always_inline]] inline int32_t findStarts(const TextSpan &text, int32_t nNames,
                                                 int32_t *aStarts) {
    aStarts[0] = 0;
    int32_t nFound = 0;
    for (const char *p = text.pText; nFound < nNames && p < text.pEnd; p += kWindowBytes) {
        const int32_t nAfterNul = static_cast<int32_t>(p - text.pText) + 1;
        uint64_t nNuls = matchWindow(p, text, 0);
        int32_t *pStart = aStarts + 1 + nFound;
        nFound += countBits(nNuls);
        while (nNuls != 0) {
            for (int i = 0; i < 4; ++i) {
                *pStart++ = nAfterNul + static_cast<int32_t>(lowestBit(nNuls));
                nNuls &= nNuls - 1;
            }
        }
    }
    return nFound < nNames ? nFound : nNames;
}

#if NAMES_BEYOND_BASELINE
// The same code with instructions for the lowest bit and the number of bits of a mask.
[[gnu::target("bmi,popcnt")]] int32_t findStartsByBits(const TextSpan &text, int32_t nNames,
                                                       int32_t *aStarts) {
    return findStarts(text, nNames, aStarts);
}

// Masks are full below; gcc 12 warns of its own intrinsics that take none.
#define NAMES_WITH_VECTORS [[gnu::target("avx512f,avx512bw,avx512vbmi2,popcnt")]]

// Stores the sums of the first and the lowest 16 bytes of the second.
NAMES_WITH_VECTORS inline void storeSums(int32_t *pSums, __m512i all, __m512i bytes) {
    const __m128i low = _mm512_maskz_extracti32x4_epi32(0xf, bytes, 0);
    const __m512i numbers = _mm512_maskz_cvtepu8_epi32(0xffff, low);
    _mm512_storeu_si512(pSums, _mm512_add_epi32(all, numbers));
}

// One instruction gathers the places after the NULs of a window, as bytes, and 16 of these are
// stored per step, wanted or not.
NAMES_WITH_VECTORS int32_t findStartsByVectors(const TextSpan &text, int32_t nNames,
                                               int32_t *aStarts) {
    alignas(64) static constexpr auto kAfterNul = [] {
        std::array<char, kWindowBytes> afterNul = {};
        for (size_t i = 0; i < afterNul.size(); ++i) { afterNul[i] = static_cast<char>(i + 1); }
        return afterNul;
    }();
    const __m512i afterNul = _mm512_load_si512(kAfterNul.data());
    aStarts[0] = 0;
    int32_t nFound = 0;
    for (const char *p = text.pText; nFound < nNames && p < text.pEnd; p += kWindowBytes) {
        uint64_t nNuls = 0;
        if (text.pEnd - p >= kWindowBytes) {
            const __m512i bytes = _mm512_loadu_si512(p);
            nNuls = _mm512_testn_epi8_mask(bytes, bytes);
        } else {
            nNuls = matchWindow(p, text, 0);
        }
        const __m512i window = _mm512_set1_epi32(static_cast<int32_t>(p - text.pText));
        __m512i starts = _mm512_maskz_compress_epi8(nNuls, afterNul);
        const auto nInWindow = static_cast<int32_t>(_mm_popcnt_u64(nNuls));
        int32_t *pStart = aStarts + 1 + nFound;
        storeSums(pStart, window, starts);
        for (int32_t k = 16; k < nInWindow; k += 16) {
            starts = _mm512_maskz_alignr_epi64(0xff, starts, starts, 2);
            storeSums(pStart + k, window, starts);
        }
        nFound += nInWindow;
    }
    return nFound < nNames ? nFound : nNames;
}
#endif

}  // namespace

int32_t findNameStarts(const TextSpan &text, int32_t nNames, int32_t *aStarts) {
#if NAMES_BEYOND_BASELINE
    if (__builtin_cpu_supports("avx512vbmi2")) {
        return findStartsByVectors(text, nNames, aStarts);
    }
    if (__builtin_cpu_supports("bmi") && __builtin_cpu_supports("popcnt")) {
        return findStartsByBits(text, nNames, aStarts);
    }
#endif
    return findStarts(text, nNames, aStarts);
}

}  // namespace names
