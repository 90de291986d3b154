// A number's base-100 digits in machine words: eight in 64 bits, one a byte, the first in
// the top byte. All that reads, moves, adds or cuts digits works on eight of them at a time.
//
// A group is eight decimal digits, four base-100 digits: half of a word when they are
// joined to one integer below 10^8. Joining and splitting work in lanes of a word, of 16 and
// 32 bits; x86-64 has instructions for it.
#pragma once

#include <array>
#include <bit>
#include <cstring>

#include "number_bytes.h"

#if defined(__SSE2__) && !defined(OCI_NUMBER_NO_VECTORS)
#define OCI_NUMBER_SSE2
#include <emmintrin.h>
#endif

namespace digit_words {

inline constexpr unsigned digits_per_word = 8;
inline constexpr ub4 group_base = 100000000;
inline constexpr ub8 word_base = ub8{group_base} * group_base;  // of a joined word; below 2^54

constexpr ub8 in_every_byte(unsigned b) { return 0x0101010101010101u * b; }

// 24 digits: the 20 of a number and four behind them.
struct Digits {
    ub8 word[3];
};
inline constexpr unsigned window = 24;

inline bool is_zero(const Digits &d) { return (d.word[0] | d.word[1] | d.word[2]) == 0; }

// The digit of an index below 24.
inline unsigned digit_at(const Digits &d, unsigned index) {
    const ub8 word = index < 8 ? d.word[0] : index < 16 ? d.word[1] : d.word[2];
    return static_cast<unsigned>(word >> (56 - 8 * (index % 8)) & 0xff);
}

// Sets a digit that is zero.
inline void set_digit(Digits &d, unsigned index, unsigned digit) {
    d.word[index / 8] |= ub8{digit} << (56 - 8 * (index % 8));
}

// The digits moved back by `count`, zeros in front; what leaves the window is lost.
inline Digits moved_back(Digits d, unsigned count) {
    if (count >= 16) {
        d = {{0, 0, count < window ? d.word[0] : 0}};
    } else if (count >= 8) {
        d = {{0, d.word[0], d.word[1]}};
    }
    const unsigned bits = 8 * (count % 8);
    // Two shifts, as one by 64 is not defined.
    return {{d.word[0] >> bits, d.word[1] >> bits | d.word[0] << 1 << (63 - bits),
             d.word[2] >> bits | d.word[1] << 1 << (63 - bits)}};
}

// The digits moved forward by `count` < 24, zeros behind.
inline Digits moved_forward(Digits d, unsigned count) {
    if (count >= 16) {
        d = {{d.word[2], 0, 0}};
    } else if (count >= 8) {
        d = {{d.word[1], d.word[2], 0}};
    }
    const unsigned bits = 8 * (count % 8);
    return {{d.word[0] << bits | d.word[1] >> 1 >> (63 - bits),
             d.word[1] << bits | d.word[2] >> 1 >> (63 - bits), d.word[2] << bits}};
}

// How many zeros stand in front; not for zero.
inline unsigned leading_zeros(const Digits &d) {
    unsigned i = 0;
    while (i < 2 && d.word[i] == 0) ++i;
    return 8 * i + static_cast<unsigned>(std::countl_zero(d.word[i])) / 8;
}

// How many digits there are up to the last that is not zero; not for zero.
inline unsigned significant(const Digits &d) {
    unsigned last = 2;
    while (last > 0 && d.word[last] == 0) --last;
    return 8 * (last + 1) - static_cast<unsigned>(std::countr_zero(d.word[last])) / 8;
}

// The mask of a window's first `count` digits, 0 to 24.
inline constexpr auto first_digits_masks = [] {
    std::array<Digits, window + 1> masks{};
    for (unsigned count = 0; count <= window; ++count) {
        for (unsigned i = 0; i < count; ++i) {
            masks[count].word[i / 8] |= ub8{0xff} << (56 - 8 * (i % 8));
        }
    }
    return masks;
}();
inline const Digits &first_digits(unsigned count) { return first_digits_masks[count]; }

// ---- Digit bytes ----------------------------------------------------------

inline ub8 big_endian(ub8 x) {
    return std::endian::native == std::endian::little ? __builtin_bswap64(x) : x;
}
inline ub8 load(const ub1 *p) {
    ub8 x;
    std::memcpy(&x, p, sizeof x);
    return big_endian(x);
}
inline void store(ub1 *p, ub8 x) {
    x = big_endian(x);
    std::memcpy(p, &x, sizeof x);
}

// Of a word's first four bytes, its upper half.
inline ub8 load_half(const ub1 *p) {
    ub8 x = 0;
    std::memcpy(&x, p, 4);
    return std::endian::native == std::endian::little ? __builtin_bswap64(x) : x;
}
inline void store_half(ub1 *p, ub8 x) {
    x = big_endian(x);
    std::memcpy(p, &x, 4);
}

// Turns digit bytes into digits and back, in every byte: (x ^ flip) + offset is x - 1 or
// 101 - x (~x + 1 + 101), and x + 1 or 101 - x. A digit byte out of its range becomes a digit
// of 100 or more, at least the lowest such byte, whose neighbours below borrow nothing from it.
struct Coding {
    ub8 zeros;  // the bytes of zero digits
    ub8 flip;
    ub8 offset;
    ub8 operator()(ub8 x) const { return (x ^ flip) + offset; }
};
// For positive values, and for negative ones.
inline constexpr Coding decodings[] = {{in_every_byte(1), 0, ~in_every_byte(1) + 1},
                                       {in_every_byte(101), ~ub8{0}, in_every_byte(101) + 1}};
inline constexpr Coding encodings[] = {{in_every_byte(1), 0, in_every_byte(1)},
                                       {in_every_byte(101), ~ub8{0}, in_every_byte(101) + 1}};

// Non-zero exactly when there is a byte above 99.
inline ub8 above_99(ub8 x) { return (x | (x + in_every_byte(28))) & in_every_byte(128); }

// Reads the first `count` digit bytes of a record, at most 20, with zeros behind them. False
// when one is out of its range.
inline bool read_digits(const OCINumber &n, bool negative, unsigned count, Digits &d) {
    const ub1 *const bytes = n.OCINumberPart + 2;
    const Coding &decode = decodings[negative];
    const Digits &keep = first_digits(count);
    const auto read = [&](ub8 loaded, ub8 mask) {
        return decode(((loaded ^ decode.zeros) & mask) ^ decode.zeros);
    };
    d.word[0] = read(load(bytes), keep.word[0]);
    d.word[1] = read(load(bytes + 8), keep.word[1]);
    // The last four bytes are the lower half of the word that ends with them.
    d.word[2] = read(load(bytes + 12) << 32, keep.word[2]);
    return (above_99(d.word[0]) | above_99(d.word[1]) | above_99(d.word[2])) == 0;
}

// Writes all 20 digit bytes.
inline void write_digits(OCINumber &n, bool negative, const Digits &d) {
    ub1 *const bytes = n.OCINumberPart + 2;
    const Coding encode = encodings[negative];
    store(bytes, encode(d.word[0]));
    store(bytes + 8, encode(d.word[1]));
    store_half(bytes + 16, encode(d.word[2]));
}

// Writes the first `count` digit bytes, and leaves what stands behind them.
inline void write_first_digits(OCINumber &n, bool negative, const Digits &d, unsigned count) {
    ub1 *const bytes = n.OCINumberPart + 2;
    const Coding &encode = encodings[negative];
    const Digits &keep = first_digits(count);
    const auto blend = [&](int i, ub8 former) {
        return ((encode(d.word[i]) ^ former) & keep.word[i]) ^ former;
    };
    store(bytes, blend(0, load(bytes)));
    store(bytes + 8, blend(1, load(bytes + 8)));
    store_half(bytes + 16, blend(2, load_half(bytes + 16)));
}

// ---- Sums -----------------------------------------------------------------

// After an addition of 156 too much in every byte, or a subtraction: where no carry left
// the byte, and where a borrow entered it, it is 156 too large, and above 127.
inline ub8 without_bias(ub8 x) { return x - (x >> 7 & in_every_byte(1)) * 156; }

// a + b, or a - b with `subtract`, then |a| >= |b|; less one unit of the last digit with
// `less`, then subtract. Returns the carry out of the first digit of a sum.
inline ub8 combine(Digits &a, const Digits &b, bool subtract, bool less) {
    const ub8 flip = subtract ? ~ub8{0} : 0;
    const ub8 bias = subtract ? 0 : in_every_byte(156);
    ub8 carry = subtract && !less;
    for (int i = 2; i >= 0; --i) {
        const ub8 raised = a.word[i] + carry;  // its bytes stay below 128
        const ub8 sum = raised + (b.word[i] ^ flip) + bias;
        carry = sum < raised;
        a.word[i] = without_bias(sum);
    }
    return subtract ? 0 : carry;
}

// Whether |a| < |b| for digits of the same exponent.
inline bool less(const Digits &a, const Digits &b) {
    if (a.word[0] != b.word[0]) return a.word[0] < b.word[0];
    if (a.word[1] != b.word[1]) return a.word[1] < b.word[1];
    return a.word[2] < b.word[2];
}

inline void exchange_if(bool condition, Digits &a, Digits &b) {
    const ub8 mask = condition ? ~ub8{0} : 0;
    for (int i = 0; i < 3; ++i) {
        const ub8 difference = (a.word[i] ^ b.word[i]) & mask;
        a.word[i] ^= difference;
        b.word[i] ^= difference;
    }
}

// Adds one to the digit of the index; there are only zeros behind it. Returns true when the
// carry runs over the first digit: all are zero then.
inline bool add_unit(Digits &d, unsigned index) {
    Digits unit = {};
    set_digit(unit, index, 1);
    return combine(d, unit, false, false) != 0;
}

// ---- Joined digits --------------------------------------------------------

// Two words of digits, or of groups: the higher group in the upper half.
struct TwoWords {
    ub8 high;
    ub8 low;
};

#if defined(OCI_NUMBER_SSE2)

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

inline TwoWords join_groups(TwoWords digits) {
    const __m128i x = to_vector(digits);
    // 256 a + b becomes 100 a + b; then 10^4 times the upper of two plus the lower.
    const __m128i pairs = _mm_sub_epi16(x, times(_mm_srli_epi16(x, 8), 256 - 100));
    return to_words(_mm_madd_epi16(pairs, _mm_set1_epi32(10000 << 16 | 1)));
}

inline TwoWords split_groups(TwoWords groups) {
    const __m128i x = to_vector(groups);
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

inline ub8 join_groups(ub8 x) {
    constexpr ub8 bytes = 0x00FF00FF00FF00FF;
    constexpr ub8 lanes = 0x0000FFFF0000FFFF;
    x = (x & bytes) + 100 * (x >> 8 & bytes);
    return (x & lanes) + 10000 * (x >> 16 & lanes);
}
inline TwoWords join_groups(TwoWords x) { return {join_groups(x.high), join_groups(x.low)}; }

// Splitting v into q = v / b and v % b with q in the upper part of the lane, that is
// q * B + v % b, adds q * (B - b) to v.
inline ub8 split_groups(ub8 x) {
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
inline TwoWords split_groups(TwoWords x) { return {split_groups(x.high), split_groups(x.low)}; }

#endif

// The integers below 10^16 that the words' digits stand for, and back.
struct Joined {
    ub8 word[3];
};

inline ub8 joined(ub8 groups) { return (groups >> 32) * group_base + static_cast<ub4>(groups); }
inline ub8 grouped(ub8 joined) {
    const ub8 high = joined / group_base;
    return high << 32 | (joined - high * group_base);
}

inline Joined join(const Digits &d) {
    const TwoWords front = join_groups({d.word[0], d.word[1]});
    const TwoWords back = join_groups({0, d.word[2]});
    return {{joined(front.high), joined(front.low), joined(back.low)}};
}
inline Digits split(const Joined &j) {
    const TwoWords front = split_groups({grouped(j.word[0]), grouped(j.word[1])});
    return {{front.high, front.low, split_groups({0, grouped(j.word[2])}).low}};
}

// ---- Characters ------------------------------------------------------------

// Writes a word's digits as 16 characters.
inline void write_characters(char *out, ub8 word) {
#if defined(OCI_NUMBER_SSE2)
    const __m128i bytes = _mm_cvtsi64_si128(static_cast<long long>(big_endian(word)));
    const __m128i digits = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    // v / 10 is v * 6554 >> 16 for v below 100; the tens come first.
    const __m128i tens = _mm_mulhi_epu16(digits, _mm_set1_epi16(6554));
    const __m128i ones = _mm_sub_epi16(digits, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    const __m128i characters = _mm_or_si128(tens, _mm_slli_epi16(ones, 8));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out),
                     _mm_add_epi8(characters, _mm_set1_epi8('0')));
#else
    for (int shift = 56; shift >= 0; shift -= 8) {
        const unsigned digit = word >> shift & 0xff;
        *out++ = static_cast<char>('0' + digit / 10);
        *out++ = static_cast<char>('0' + digit % 10);
    }
#endif
}

}  // namespace digit_words
