// Eight base-100 digits, one a byte, to two limbs and back, two words at a time. The first
// digit is the top byte of a word, the higher limb its upper half.
//
// Both ways work in lanes of a word: bytes, 16 and 32 bits. x86-64 has instructions for it.
#pragma once

#include "oci.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace calc {

struct TwoWords {
    ub8 high;
    ub8 low;
};

#if defined(__SSE2__)

inline __m128i to_vector(TwoWords w) {
    return _mm_set_epi64x(static_cast<long long>(w.high), static_cast<long long>(w.low));
}
inline TwoWords to_words(__m128i v) {
    return {static_cast<ub8>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v))),
            static_cast<ub8>(_mm_cvtsi128_si64(v))};
}

// v * factor in 16-bit lanes. The factor is hidden from the compiler, which would take
// seven shifts and additions for one multiplication.
inline __m128i times(__m128i v, short factor) {
    __m128i factors = _mm_set1_epi16(factor);
    __asm__("" : "+x"(factors));
    return _mm_mullo_epi16(v, factors);
}

inline TwoWords join_digits(TwoWords digits) {
    const __m128i x = to_vector(digits);
    // 256 a + b becomes 100 a + b; then 10^4 times the upper of two plus the lower.
    const __m128i pairs = _mm_sub_epi16(x, times(_mm_srli_epi16(x, 8), 256 - 100));
    return to_words(_mm_madd_epi16(pairs, _mm_set1_epi32(10000 << 16 | 1)));
}

inline TwoWords split_limbs(TwoWords limbs) {
    const __m128i x = to_vector(limbs);
    // v / 10^4 is v * 3518437209 >> 45 for 32 bits, in every second lane.
    const __m128i factor = _mm_set1_epi32(static_cast<int>(3518437209u));
    const __m128i even = _mm_srli_epi64(_mm_mul_epu32(x, factor), 45);
    const __m128i odd = _mm_srli_epi64(_mm_mul_epu32(_mm_srli_epi64(x, 32), factor), 45);
    const __m128i q = _mm_or_si128(even, _mm_slli_epi64(odd, 32));
    // v - 10^4 q in the lower half of the lane, q in the upper; the same with 100, for
    // which v / 100 is v * 5243 >> 19 below 10^4.
    const __m128i pairs = _mm_add_epi32(_mm_sub_epi32(x, _mm_madd_epi16(q, _mm_set1_epi32(10000))),
                                        _mm_slli_epi32(q, 16));
    const __m128i q2 = _mm_srli_epi16(_mm_mulhi_epu16(pairs, _mm_set1_epi16(5243)), 3);
    return to_words(_mm_add_epi16(pairs, times(q2, 256 - 100)));
}

#else

inline ub8 join_digits(ub8 x) {
    constexpr ub8 bytes = 0x00FF00FF00FF00FF;
    constexpr ub8 lanes = 0x0000FFFF0000FFFF;
    x = (x & bytes) + 100 * (x >> 8 & bytes);
    return (x & lanes) + 10000 * (x >> 16 & lanes);
}
inline TwoWords join_digits(TwoWords x) { return {join_digits(x.high), join_digits(x.low)}; }

// Splitting v into q = v / b and v % b with q in the upper part of the lane, that is
// q * B + v % b, adds q * (B - b) to v.
inline ub8 split_limbs(ub8 x) {
    constexpr ub8 lanes = 0x0000FFFF0000FFFF;
    constexpr ub8 quotients = 0x0000007F0000007F;
    const auto high = static_cast<ub4>(x >> 32);
    const auto low = static_cast<ub4>(x);
    x += (ub8{high / 10000} << 32 | low / 10000) * (65536 - 10000);
    // v / 100 is v * 5243 >> 19 for v below 10^4.
    const ub8 even = (x & lanes) * 5243 >> 19 & quotients;
    const ub8 odd = (x >> 16 & lanes) * 5243 >> 19 & quotients;
    return x + (odd << 16 | even) * (256 - 100);
}
inline TwoWords split_limbs(TwoWords x) { return {split_limbs(x.high), split_limbs(x.low)}; }

#endif

}  // namespace calc
