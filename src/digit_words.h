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
#include <utility>

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

// 24 digits: the 20 of a number and four behind them. Code that runs often names the words rather
// than to loop over them, which keeps them in registers.
struct Digits {
    ub8 word[3];
};
inline constexpr unsigned window = 24;
inline constexpr ub8 first_digit_1 = ub8{1} << 56;

inline bool is_zero(const Digits &d) { return (d.word[0] | d.word[1] | d.word[2]) == 0; }
inline bool has_first(const Digits &d) { return d.word[0] >> 56 != 0; }

// The digit of an index below 24.
inline unsigned digit_at(const Digits &d, unsigned index) {
    const ub8 word = index < 8 ? d.word[0] : index < 16 ? d.word[1] : d.word[2];
    return static_cast<unsigned>(word >> (56 - 8 * (index % 8)) & 0xff);
}

// Adds to a digit that stays below 256.
inline void add_to_digit(Digits &d, unsigned index, unsigned digit) {
    const ub8 placed = ub8{digit} << (56 - 8 * (index % 8));
    d.word[0] += index < 8 ? placed : 0;
    d.word[1] += index / 8 == 1 ? placed : 0;
    d.word[2] += index >= 16 ? placed : 0;
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
    const auto [before, word] = d.word[0] != 0   ? std::pair{0u, d.word[0]}
                                : d.word[1] != 0 ? std::pair{8u, d.word[1]}
                                                 : std::pair{16u, d.word[2]};
    return before + static_cast<unsigned>(std::countl_zero(word)) / 8;
}

// How many digits there are up to the last that is not zero; not for zero.
inline unsigned significant(const Digits &d) {
    const auto [end, word] = d.word[2] != 0   ? std::pair{24u, d.word[2]}
                             : d.word[1] != 0 ? std::pair{16u, d.word[1]}
                                              : std::pair{8u, d.word[0]};
    return end - static_cast<unsigned>(std::countr_zero(word)) / 8;
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

// Whether there are digits from the index on, up to 24; all of them when it is negative.
inline bool has_digits_from(const Digits &d, int index) {
    const Digits &before = first_digits(static_cast<unsigned>(index < 0 ? 0 : index));
    return ((d.word[0] & ~before.word[0]) | (d.word[1] & ~before.word[1]) |
            (d.word[2] & ~before.word[2])) != 0;
}

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

// Digit bytes are digits under a sign: (byte ^ flip) - bias is byte - 1, or 101 - byte, which is
// 255 - byte - 154; (digit + bias) ^ flip is the way back. A byte out of its range becomes a digit
// of 100 or more, at least the lowest such byte, whose neighbours below borrow nothing from it.
constexpr ub8 bias(ub8 flip) { return in_every_byte(1) + (flip & in_every_byte(153)); }
inline ub8 encode(ub8 digits, ub8 flip) { return (digits + bias(flip)) ^ flip; }

// What to keep of the 20 digit bytes, and the bias in it, by the number of the value's bytes,
// exponent byte included: there may be none. Once for positive and once for negative values.
struct Reading {
    Digits keep;
    Digits bias;
};
inline constexpr unsigned readings_per_sign = number_bytes::max_length + 1;
inline constexpr auto readings = [] {
    std::array<Reading, 2 * readings_per_sign> all{};
    for (unsigned row = 0; row != all.size(); ++row) {
        const unsigned bytes = row % readings_per_sign;
        const ub8 sign_bias = bias(number_bytes::flip(row >= readings_per_sign));
        all[row].keep = first_digits_masks[bytes == 0 ? 0 : bytes - 1];
        for (int i = 0; i < 3; ++i) all[row].bias.word[i] = all[row].keep.word[i] & sign_bias;
    }
    return all;
}();

// Not 0 exactly when there is a digit above 99.
inline ub8 above_99(const Digits &d) {
    constexpr ub8 raise = in_every_byte(28);
    const ub8 either = d.word[0] | d.word[1] | d.word[2] | (d.word[0] + raise) |
                       (d.word[1] + raise) | (d.word[2] + raise);
    return either & in_every_byte(128);
}

// Reads the digits of a value of `bytes` bytes, at most 21, from the 20 bytes at `digits`, which
// may hold anything behind the value; zeros behind them.
inline Digits read_any_digits(const ub1 *digits, ub8 flip, unsigned bytes) {
    const Reading &reading = readings[bytes + (flip & readings_per_sign)];
    const auto read = [&](ub8 loaded, int i) {
        return ((loaded ^ flip) & reading.keep.word[i]) - reading.bias.word[i];
    };
    return {{read(load(digits), 0), read(load(digits + 8), 1), read(load_half(digits + 16), 2)}};
}

inline Digits read_any_digits(const OCINumber &n, ub8 flip, unsigned bytes) {
    return read_any_digits(n.OCINumberPart + 2, flip, bytes);
}

// Reads the first `count` digits; false when one is out of its range.
inline bool read_digits(const OCINumber &n, bool negative, unsigned count, Digits &d) {
    d = read_any_digits(n, number_bytes::flip(negative), count + 1);
    return above_99(d) == 0;
}

// Writes all 20 digit bytes.
inline void write_digits(OCINumber &n, bool negative, const Digits &d) {
    ub1 *const bytes = n.OCINumberPart + 2;
    const ub8 flip = number_bytes::flip(negative);
    store(bytes, encode(d.word[0], flip));
    store(bytes + 8, encode(d.word[1], flip));
    store_half(bytes + 16, encode(d.word[2], flip));
}

// Writes the first `count` digit bytes, and leaves what stands behind them.
inline void write_first_digits(OCINumber &n, bool negative, const Digits &d, unsigned count) {
    ub1 *const bytes = n.OCINumberPart + 2;
    const Digits &keep = first_digits(count);
    const auto blend = [&](int i, ub8 former) {
        return number_bytes::blend(encode(d.word[i], number_bytes::flip(negative)), former,
                                   keep.word[i]);
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
    const ub8 flip = number_bytes::flip(subtract);
    const ub8 bias = ~flip & in_every_byte(156);
    ub8 carry = subtract && !less;
    const auto combine_word = [&](ub8 &x, ub8 y) {
        const ub8 raised = x + carry;  // its bytes stay below 128
        const ub8 sum = raised + ((y ^ flip) + bias);
        carry = sum < raised;
        x = without_bias(sum);
    };
    combine_word(a.word[2], b.word[2]);
    combine_word(a.word[1], b.word[1]);
    combine_word(a.word[0], b.word[0]);
    return carry & ~flip;
}

// Exchanges where the mask has ones.
inline void exchange(ub8 mask, ub8 &a, ub8 &b) {
    const ub8 difference = (a ^ b) & mask;
    a ^= difference;
    b ^= difference;
}
inline void exchange(ub8 mask, Digits &a, Digits &b) {
    exchange(mask, a.word[0], b.word[0]);
    exchange(mask, a.word[1], b.word[1]);
    exchange(mask, a.word[2], b.word[2]);
}

// Adds one to the digit of the index; there are only zeros behind it. Returns true when the
// carry runs over the first digit: all are zero then.
inline bool add_unit(Digits &d, unsigned index) {
    Digits unit = {};
    add_to_digit(unit, index, 1);
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

// The integers below 10^16 that two words of digits stand for, and back.
inline ub8 joined(ub8 groups) { return (groups >> 32) * group_base + static_cast<ub4>(groups); }
inline ub8 grouped(ub8 joined) {
    const ub8 high = joined / group_base;
    return high << 32 | (joined - high * group_base);
}
inline TwoWords join(TwoWords digits) {
    const TwoWords groups = join_groups(digits);
    return {joined(groups.high), joined(groups.low)};
}
inline TwoWords split(TwoWords integers) {
    return split_groups({grouped(integers.high), grouped(integers.low)});
}

// The same for three words.
struct Joined {
    ub8 word[3];
};
inline Joined join(const Digits &d) {
    const TwoWords front = join(TwoWords{d.word[0], d.word[1]});
    return {{front.high, front.low, join(TwoWords{0, d.word[2]}).low}};
}
inline Digits split(const Joined &j) {
    const TwoWords front = split(TwoWords{j.word[0], j.word[1]});
    return {{front.high, front.low, split(TwoWords{0, j.word[2]}).low}};
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
