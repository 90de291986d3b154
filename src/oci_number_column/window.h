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

// Sums of groups of a value's digits: as many as 2^36 values add up.
inline constexpr int group_count = 5;
struct Groups {
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
        const TwoWords front = join_groups(TwoWords{digits.word[0], digits.word[1]});
        groups.sum[0] += front.high >> 32;
        groups.sum[1] += static_cast<ub4>(front.high);
        groups.sum[2] += front.low >> 32;
        groups.sum[3] += static_cast<ub4>(front.low);
        groups.sum[4] += join_groups(TwoWords{0, digits.word[2]}).low >> 32;
        return true;
    }
};

#if defined(OCI_NUMBER_COLUMN_VECTORS)

#define OCI_NUMBER_VECTOR_TARGET gnu::target("avx2,bmi,bmi2,lzcnt")

inline bool has_vectors() {
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 &&
           __builtin_cpu_supports("bmi2") != 0 && __builtin_cpu_supports("lzcnt") != 0;
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

struct Vector {
    [[OCI_NUMBER_VECTOR_TARGET]] static __m128i load(const ub1 *p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }

    // The first 16 digits.
    [[OCI_NUMBER_VECTOR_TARGET]] static __m128i digits(const Row &row, const Head &head) {
        const __m128i bytes =
            _mm_xor_si128(load(row.value + 1), load(vector_tables.flip[head.negative]));
        return _mm_and_si128(_mm_sub_epi8(bytes, load(vector_tables.bias[head.negative])),
                             load(vector_tables.kept + 20 - head.count));
    }
    [[OCI_NUMBER_VECTOR_TARGET]] static bool in_range(__m128i digits) {
        const __m128i above = _mm_subs_epu8(digits, _mm_set1_epi8(99));
        return _mm_testz_si128(above, above) != 0;
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
    // Groups of four digits in lanes of 32 bits.
    [[OCI_NUMBER_VECTOR_TARGET]] static __m128i joined(__m128i digits) {
        const __m128i pairs = _mm_maddubs_epi16(digits, _mm_set1_epi16(1 << 8 | 100));
        return _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 10000));
    }

    [[OCI_NUMBER_VECTOR_TARGET]] static bool window(const Row &row, const Head &head, int places,
                                                    Window &w) {
        const __m128i first = digits(row, head);
        if (!in_range(first)) [[unlikely]]
            return false;
        if (head.count > 16) {
            if (digit_words::above_99({{0, 0, last_digits(row, head)}}) != 0) return false;
        }
        const __m128i moved = _mm_shuffle_epi8(first, load(vector_tables.moved + 16 + places));
        const __m128i groups = joined(moved);
        const __m128i words =
            _mm_add_epi64(_mm_mul_epu32(groups, _mm_set1_epi64x(digit_words::group_base)),
                          _mm_srli_epi64(groups, 32));
        w = {static_cast<ub8>(_mm_cvtsi128_si64(words)),
             static_cast<ub8>(_mm_extract_epi64(words, 1))};
        return true;
    }
    [[OCI_NUMBER_VECTOR_TARGET]] static bool add(const Row &row, const Head &head, Groups &groups) {
        const __m128i first = digits(row, head);
        if (!in_range(first)) [[unlikely]]
            return false;
        if (head.count > 16) {
            const ub8 last = last_digits(row, head);
            if (digit_words::above_99({{0, 0, last}}) != 0) return false;
            groups.sum[4] += digit_words::join_groups({0, last}).low >> 32;
        }
        auto *const sums = reinterpret_cast<__m256i *>(groups.sum);
        _mm256_storeu_si256(
            sums, _mm256_add_epi64(_mm256_loadu_si256(sums), _mm256_cvtepu32_epi64(joined(first))));
        return true;
    }
};

#endif

// ---- Kernels --------------------------------------------------------------

// Calls kernel.row<Plain or Vector>(row, i) for each row that is present; it returns a Reason.
template <class Kind, class Kernel>
[[gnu::always_inline]] inline void each_row(const Block &block, Outcome &outcome, Kernel &kernel) {
    if (block.present == first_rows(block.count)) {
        for (unsigned i = 0; i < block.count; ++i) {
            const Reason reason = kernel.template row<Kind>(block.row[i], i);
            if (reason != OCI_NUMBER_DONE) [[unlikely]]
                outcome.refuse(i, reason);
        }
        return;
    }
    for (Rows rows = block.present; rows != 0; rows &= rows - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(rows));
        const Reason reason = kernel.template row<Kind>(block.row[i], i);
        if (reason != OCI_NUMBER_DONE) outcome.refuse(i, reason);
    }
}

#if defined(OCI_NUMBER_COLUMN_VECTORS)
template <class Kernel>
[[OCI_NUMBER_VECTOR_TARGET, gnu::flatten]] void each_row_by_vectors(const Block &block,
                                                                    Outcome &outcome,
                                                                    Kernel &kernel) {
    each_row<Vector>(block, outcome, kernel);
}
#endif
template <class Kernel>
void each_row_plainly(const Block &block, Outcome &outcome, Kernel &kernel) {
    each_row<Plain>(block, outcome, kernel);
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
