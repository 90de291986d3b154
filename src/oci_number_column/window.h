// Sixteen digits of a value from a wanted place on, as two integers: with vectors, and without.
#pragma once

#include "digit_words.h"
#include "oci_number_column/column.h"

#if defined(__x86_64__) && !defined(OCI_NUMBER_NO_VECTORS)
#define OCI_NUMBER_COLUMN_VECTORS
#include <immintrin.h>
#endif

namespace columns {

inline constexpr ub8 word_base = digit_words::word_base;

// What the exponent byte and the length tell of a row.
struct Head {
    unsigned count;  // of digits: 1 to 20, anything else when there is none
    int exponent;
    bool negative;
    bool has_digits() const { return count - 1 < number_bytes::max_digits; }
};
inline Head head_of(const Row &row) {
    const ub1 exponent = row.value[0];
    const bool negative = number_bytes::is_negative(exponent);
    return {number_bytes::value_bytes(row.value, row.length) - 1,
            number_bytes::real_exponent(exponent, number_bytes::flip(negative)), negative};
}

// 16 digits as high * 10^16 + low.
struct Window {
    ub8 high;
    ub8 low;
};
inline constexpr int window_digits = 2 * int{digit_words::digits_per_word};

// Sums of groups of four bytes of values, the exponent byte taken for a zero digit: as many as 2^36
// values add up. The last digit of a group has the weight 100^(exponent - 4 g - 2).
inline constexpr int group_count = 6;
struct alignas(64) Groups {
    ub8 sum[group_count];
};

// Both kinds have two functions, for rows that have digits; false when one is out of its range.
// window: the digits from the first on, with `places` of 16 behind it: 15 to -16, as many in front
//   as leave no room for it.
// add: adds the digits to groups.
struct Plain {
    static bool window(const Row &row, const Head &head, int places, Window &w) {
        using namespace digit_words;
        const Digits digits =
            read_any_digits(row.value + 1, number_bytes::flip(head.negative), head.count + 1);
        if (above_99(digits) != 0) return false;
        const auto back = static_cast<unsigned>(window_digits - 1 - places);
        const Digits moved = moved_back(digits, back);
        const TwoWords joined = join(TwoWords{moved.word[0], moved.word[1]});
        w = {joined.high, joined.low};
        return true;
    }
    static bool add(const Row &row, const Head &head, Groups &groups) {
        using namespace digit_words;
        const Digits digits =
            read_any_digits(row.value + 1, number_bytes::flip(head.negative), head.count + 1);
        if (above_99(digits) != 0) return false;
        const Digits moved = moved_back(digits, 1);
        const TwoWords front = join_groups(TwoWords{moved.word[0], moved.word[1]});
        const TwoWords back = join_groups(TwoWords{0, moved.word[2]});
        int g = 0;
        for (const ub8 two : {front.high, front.low, back.low}) {
            groups.sum[g++] += two >> 32;
            groups.sum[g++] += static_cast<ub4>(two);
        }
        return true;
    }
};

#if defined(OCI_NUMBER_COLUMN_VECTORS)

#define OCI_NUMBER_VECTOR_TARGET gnu::target("avx2,bmi,bmi2")

inline bool has_vectors() {
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 &&
           __builtin_cpu_supports("bmi2") != 0;
}

// Tables of which a part is loaded: the bytes of the first digits, up to 20; and for a shuffle the
// places of 16 digits behind 31 that are none.
inline constexpr struct VectorTables {
    ub1 kept[36] = {};
    ub1 moved[47] = {};
    ub1 flip[2][16] = {};
    ub1 bias[2][16] = {};
    constexpr VectorTables() {
        for (int i = 0; i < 20; ++i) kept[i] = 0xff;
        for (int i = 0; i < 47; ++i) moved[i] = static_cast<ub1>(i < 31 ? 0x80 : i - 31);
        for (int i = 0; i < 16; ++i) {
            flip[1][i] = 0xff;
            bias[0][i] = 1;
            bias[1][i] = 154;
        }
    }
} vector_tables;

// Both lanes of a register, from bytes of one.
#define OCI_NUMBER_LANES(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p)                           \
    _mm256_setr_epi8(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, a, b, c, d, e, f, g, h, i, j, \
                     k, l, m, n, o, p)

struct Vector {
    [[OCI_NUMBER_VECTOR_TARGET]] static __m128i load(const ub1 *p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }

    // The first 16 digits.
    [[OCI_NUMBER_VECTOR_TARGET]] static __m128i first_digits(const Row &row, const Head &head) {
        const __m128i bytes =
            _mm_xor_si128(load(row.value + 1), load(vector_tables.flip[head.negative]));
        return _mm_and_si128(_mm_sub_epi8(bytes, load(vector_tables.bias[head.negative])),
                             load(vector_tables.kept + 20 - head.count));
    }
    // The digits behind the first 16, in the upper half of a word.
    static ub8 last_digits(const Row &row, const Head &head) {
        using namespace digit_words;
        const Reading &reading =
            readings[head.count + 1 + (number_bytes::flip(head.negative) & readings_per_sign)];
        return ((load_half(row.value + 17) ^ number_bytes::flip(head.negative)) &
                reading.keep.word[2]) -
               reading.bias.word[2];
    }
    [[OCI_NUMBER_VECTOR_TARGET]] static bool window(const Row &row, const Head &head, int places,
                                                    Window &w) {
        const __m128i first = first_digits(row, head);
        const __m128i above = _mm_subs_epu8(first, _mm_set1_epi8(99));
        if (_mm_testz_si128(above, above) == 0) [[unlikely]]
            return false;
        if (head.count > 16 && digit_words::above_99({{0, 0, last_digits(row, head)}}) != 0) {
            return false;
        }
        const __m128i moved = _mm_shuffle_epi8(first, load(vector_tables.moved + 16 + places));
        const __m128i pairs = _mm_maddubs_epi16(moved, _mm_set1_epi16(1 << 8 | 100));
        const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 10000));
        const __m128i words =
            _mm_add_epi64(_mm_mul_epu32(groups, _mm_set1_epi64x(digit_words::group_base)),
                          _mm_srli_epi64(groups, 32));
        w = {static_cast<ub8>(_mm_cvtsi128_si64(words)),
             static_cast<ub8>(_mm_extract_epi64(words, 1))};
        return true;
    }

    // ---- Two lanes of a register

    // The digits among 16 bytes of a value, in their places; in every byte of a lane whether the
    // value is positive, all bits or none, and 62 - exponent. `refused` is not zero where a value
    // is to be looked at otherwise.
    struct Lanes {
        __m256i digits;
        __m256i positive;
        __m256i complement;
        __m256i refused;
    };
    // Bytes of values, their exponent bytes and lengths; `behind` counts the bytes up to each,
    // which belongs to the value when its length is above `before`.
    [[OCI_NUMBER_VECTOR_TARGET]] static Lanes lanes(__m256i bytes, __m256i exponents,
                                                    __m256i lengths, __m256i behind,
                                                    __m256i before) {
        Lanes l;
        // The top bit of an exponent byte tells a positive value.
        l.positive = _mm256_cmpgt_epi8(_mm256_setzero_si256(), exponents);
        l.complement = _mm256_xor_si256(exponents, l.positive);
        const __m256i ending =
            _mm256_and_si256(_mm256_cmpeq_epi8(behind, lengths),
                             _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(number_bytes::ending_byte)));
        const __m256i kept = _mm256_andnot_si256(ending, _mm256_cmpgt_epi8(lengths, before));
        // A digit is 101 - byte, or byte - 1, which is -2 less the byte's complement.
        const __m256i from =
            _mm256_blendv_epi8(_mm256_set1_epi8(101), _mm256_set1_epi8(-2), exponents);
        l.digits =
            _mm256_and_si256(_mm256_sub_epi8(from, _mm256_xor_si256(bytes, l.positive)), kept);
        return l;
    }
    // Two values of at most 15 digits; longer ones are refused, and those that begin with a zero
    // digit, as what has no digit does.
    [[OCI_NUMBER_VECTOR_TARGET]] static Lanes pair(const Block &block, unsigned i, unsigned k) {
        const __m256i bytes = _mm256_set_m128i(load(block.value[k]), load(block.value[i]));
        const __m256i lengths = _mm256_set_m128i(_mm_set1_epi8(static_cast<char>(block.length[k])),
                                                 _mm_set1_epi8(static_cast<char>(block.length[i])));
        Lanes l = lanes(bytes, _mm256_shuffle_epi8(bytes, _mm256_setzero_si256()), lengths,
                        OCI_NUMBER_LANES(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16),
                        OCI_NUMBER_LANES(127, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
        const __m256i first = OCI_NUMBER_LANES(0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        // A load of several lengths, which were stored one by one, would wait for the stores.
        l.refused = _mm256_or_si256(_mm256_subs_epu8(_mm256_sub_epi8(l.digits, first),
                                                     _mm256_sub_epi8(_mm256_set1_epi8(99), first)),
                                    _mm256_cmpgt_epi8(lengths, _mm256_set1_epi8(16)));
        return l;
    }
    // Groups of four bytes in lanes of 32 bits.
    [[OCI_NUMBER_VECTOR_TARGET]] static __m256i grouped(__m256i digits) {
        const __m256i pairs = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(1 << 8 | 100));
        return _mm256_madd_epi16(pairs, _mm256_set1_epi32(1 << 16 | 10000));
    }

    // Windows whose last digit has the weight 100^-last, of values whose first digits have weights
    // from 100^least to 100^most; `most` + `last` is at most 14. A byte of it for each in a lane.
    struct Shape {
        alignas(32) ub1 most[32] = {};
        alignas(32) ub1 span[32] = {};
        alignas(32) ub1 moved[32] = {};
        alignas(32) ub1 kept[32] = {};
        constexpr Shape(int last, int least_exponent, int most_exponent) {
            for (int i = 0; i < 32; ++i) {
                most[i] = static_cast<ub1>(62 - most_exponent);
                span[i] = static_cast<ub1>(most_exponent - least_exponent);
                // The digit of 100^-last moves to the last place; where there is none, the top bit
                // is set.
                moved[i] = static_cast<ub1>(i % 16 + last - 14 + 62);
                kept[i] = static_cast<ub1>(last + 1 + 62);
            }
        }
    };
    [[OCI_NUMBER_VECTOR_TARGET]] static __m256i both(const ub1 *p) {
        return _mm256_load_si256(reinterpret_cast<const __m256i *>(p));
    }
    // The windows of two values, `high` and `low` in a lane; others are refused.
    [[OCI_NUMBER_VECTOR_TARGET]] static __m256i windows(Lanes &l, const Shape &shape) {
        const __m256i below = _mm256_sub_epi8(l.complement, both(shape.most));
        l.refused = _mm256_or_si256(l.refused, _mm256_subs_epu8(below, both(shape.span)));
        const __m256i from = _mm256_sub_epi8(both(shape.moved), l.complement);
        const __m256i groups = grouped(_mm256_shuffle_epi8(l.digits, from));
        return _mm256_add_epi64(
            _mm256_mul_epu32(groups, _mm256_set1_epi64x(digit_words::group_base)),
            _mm256_srli_epi64(groups, 32));
    }
    // Refuses values with digits behind the window.
    [[OCI_NUMBER_VECTOR_TARGET]] static void refuse_behind(Lanes &l, const Shape &shape) {
        const __m256i places =
            OCI_NUMBER_LANES(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
        const __m256i behind =
            _mm256_cmpgt_epi8(places, _mm256_sub_epi8(both(shape.kept), l.complement));
        l.refused = _mm256_or_si256(l.refused, _mm256_and_si256(l.digits, behind));
    }
    [[OCI_NUMBER_VECTOR_TARGET]] static bool any(__m256i x) {
        return _mm256_testz_si256(x, x) == 0;
    }
    // x, or -x where the mask is not set.
    [[OCI_NUMBER_VECTOR_TARGET]] static __m256i signed_by(__m256i x, __m256i positive) {
        return _mm256_sub_epi64(positive, _mm256_xor_si256(x, positive));
    }

    // ---- Sums

    [[OCI_NUMBER_VECTOR_TARGET]] static void add_groups(__m128i groups, ub8 *sums) {
        auto *const at = reinterpret_cast<__m256i *>(sums);
        _mm256_storeu_si256(
            at, _mm256_add_epi64(_mm256_loadu_si256(at), _mm256_cvtepu32_epi64(groups)));
    }
    [[OCI_NUMBER_VECTOR_TARGET]] static bool add(const Row &row, const Head &, Groups &groups) {
        // The first 16 bytes in one lane, in the other those from the sixth on, of which only the
        // last five count.
        const __m128i front = load(row.value);
        const __m256i bytes = _mm256_set_m128i(load(row.value + 5), front);
        const __m256i exponents = _mm256_broadcastb_epi8(front);
        const Lanes l = lanes(
            bytes, exponents, _mm256_set1_epi8(static_cast<char>(row.length)),
            _mm256_setr_epi8(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 6, 7, 8, 9, 10,
                             11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21),
            _mm256_setr_epi8(127, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 127, 127, 127,
                             127, 127, 127, 127, 127, 127, 127, 127, 16, 17, 18, 19, 20));
        if (any(_mm256_subs_epu8(l.digits, _mm256_set1_epi8(99)))) [[unlikely]]
            return false;
        const __m256i moved = _mm256_shuffle_epi8(
            l.digits, _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 11, 12,
                                       13, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
        const __m256i sums = grouped(moved);
        add_groups(_mm256_castsi256_si128(sums), groups.sum);
        auto *const at = reinterpret_cast<__m128i *>(groups.sum + 4);
        _mm_storeu_si128(at, _mm_add_epi64(_mm_loadu_si128(at),
                                           _mm_cvtepu32_epi64(_mm256_extracti128_si256(sums, 1))));
        return true;
    }
};

#endif

// ---- Kernels --------------------------------------------------------------

// Calls kernel.row<Plain or Vector>(row, i) for each row that is present; it returns a Reason.
template <class Kind, class Kernel>
[[gnu::always_inline]] inline void each_row(const Block &block, unsigned from, Outcome &outcome,
                                            Kernel &kernel) {
    for (Rows rows = block.present & ~first_rows(from); rows != 0; rows &= rows - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(rows));
        const Reason reason = kernel.template row<Kind>(block.row(i), i);
        if (reason != OCI_NUMBER_DONE) [[unlikely]]
            outcome.refuse(i, reason);
    }
}

#if defined(OCI_NUMBER_COLUMN_VECTORS)
// Where all rows are present, kernel.four(block, i) may do four of them at once; it returns false
// when they are to be done one by one.
template <class Kernel>
[[OCI_NUMBER_VECTOR_TARGET, gnu::flatten]] void each_row_by_vectors(const Block &block,
                                                                    Outcome &outcome,
                                                                    Kernel &kernel) {
    unsigned i = 0;
    if (block.present == first_rows(block.count)) {
        for (; i + 4 <= block.count; i += 4) {
            if (kernel.four(block, i)) [[likely]]
                continue;
            for (unsigned k = i; k < i + 4; ++k) {
                const Reason reason = kernel.template row<Vector>(block.row(k), k);
                if (reason != OCI_NUMBER_DONE) outcome.refuse(k, reason);
            }
        }
    }
    each_row<Vector>(block, i, outcome, kernel);
}
#endif
template <class Kernel>
void each_row_plainly(const Block &block, Outcome &outcome, Kernel &kernel) {
    each_row<Plain>(block, 0, outcome, kernel);
}

// Runs a kernel over a column; before each block kernel.begin(block), behind it kernel.end(block,
// outcome).
template <class Kernel>
void run(const Column &from, Outcome &outcome, Kernel &kernel) {
#if defined(OCI_NUMBER_COLUMN_VECTORS)
    const auto rows = has_vectors() ? each_row_by_vectors<Kernel> : each_row_plainly<Kernel>;
#else
    const auto rows = each_row_plainly<Kernel>;
#endif
    Reader reader(from);
    Block block;
    while (reader.next(block)) {
        outcome.begin(block.start, block.count, block.present);
        kernel.begin(block);
        rows(block, outcome, kernel);
        kernel.end(block, outcome);
        if (!outcome.end()) break;
    }
}

}  // namespace columns
