// Between the number's bytes and the record: reading, and the one final rounding.
//
// Both directions work on 24 base-100 digits in three 64-bit words, one digit a byte,
// the first digit in the top byte of the first word. Two limbs make one word.
#include <bit>
#include <cstring>

#include "number_bytes.h"
#include "oci_calc_number/digit_lanes.h"
#include "oci_calc_number/engine.h"

namespace {

constexpr ub8 in_every_byte(unsigned b) { return 0x0101010101010101u * b; }

inline ub8 load(const ub1 *p) {
    ub8 x;
    std::memcpy(&x, p, sizeof x);
    return std::endian::native == std::endian::little ? __builtin_bswap64(x) : x;
}

inline void store(ub1 *p, ub8 x) {
    if (std::endian::native == std::endian::little) x = __builtin_bswap64(x);
    std::memcpy(p, &x, sizeof x);
}

// The last word has four bytes only, its top half.
inline ub8 load_half(const ub1 *p) {
    ub4 x;
    std::memcpy(&x, p, sizeof x);
    return ub8{std::endian::native == std::endian::little ? __builtin_bswap32(x) : x} << 32;
}

inline void store_half(ub1 *p, ub8 x) {
    auto half = static_cast<ub4>(x >> 32);
    if (std::endian::native == std::endian::little) half = __builtin_bswap32(half);
    std::memcpy(p, &half, sizeof half);
}

// The first `count` digit bytes of a word, 1 to 8, and `filler` behind them.
inline ub8 fill(ub8 x, unsigned count, ub8 filler) {
    const ub8 keep = ~ub8{0} << (64 - 8 * count);
    return ((x ^ filler) & keep) ^ filler;
}

// Turns digit bytes into digits and back: (x ^ flip) + offset is x - 1 or 101 - x, and
// x + 1 or 101 - x, in every byte. A digit byte out of its range becomes a digit of 100
// or more, at least the lowest such byte, whose neighbours below borrow nothing from it.
struct Coding {
    ub8 flip;
    ub8 offset;
    ub8 operator()(ub8 x) const { return (x ^ flip) + offset; }
};
constexpr ub8 complement_offset = in_every_byte(101) + 1;  // 101 - x is ~x + 1 + 101
inline Coding decoding(bool negative) {
    return negative ? Coding{~ub8{0}, complement_offset} : Coding{0, ~in_every_byte(1) + 1};
}
inline Coding encoding(bool negative) {
    return negative ? Coding{~ub8{0}, complement_offset} : Coding{0, in_every_byte(1)};
}

// Non-zero exactly when the lowest byte above 99 exists.
inline ub8 above_99(ub8 x) { return (x | (x + in_every_byte(28))) & in_every_byte(128); }

// high:low shifted right or left by bits < 64, one word of it.
inline ub8 shift_in_right(ub8 high, ub8 low, int bits) {
    return low >> bits | high << 1 << (63 - bits);
}
inline ub8 shift_in_left(ub8 high, ub8 low, int bits) {
    return high << bits | low >> 1 >> (63 - bits);
}

// Number of digits up to the last one that is not zero; there is one.
inline unsigned significant(const ub8 *digits) {
    unsigned last = 2;
    while (digits[last] == 0) --last;
    return 8 * (last + 1) - static_cast<unsigned>(std::countr_zero(digits[last])) / 8;
}

// Writes two limbs.
inline void store_limbs(ub4 *limbs, ub8 x) {
    limbs[0] = static_cast<ub4>(x);
    limbs[1] = static_cast<ub4>(x >> 32);
}

// Half of the weight of the last digit kept in the sixth limb, by the number of digits
// in the top limb.
constexpr ub4 half_units[] = {0, 50, 5000, 500000, 50000000};

inline int digits_in(ub4 top_limb) {
    return 1 + (top_limb >= 100) + (top_limb >= 10000) + (top_limb >= 1000000);
}

// Carries a unit out of the third word, which is 10^8 or more in its upper limb, into
// the limbs above. Returns true when it runs over the top: the value is then a power of
// 10^8, which takes 10^8 in the first limb for 1 in the limb above it.
bool carry_up(ub8 *words) {
    constexpr ub8 low_limb = 0xFFFFFFFF;
    words[2] -= ub8{calc::limb_base} << 32;
    for (int i = 1; i >= 0; --i) {
        if ((++words[i] & low_limb) < calc::limb_base) return false;
        words[i] += (ub8{1} << 32) - calc::limb_base;
        if (words[i] >> 32 < calc::limb_base) return false;
        if (i > 0) words[i] -= ub8{calc::limb_base} << 32;
    }
    words[0] = ub8{1} << 32;
    words[2] = 0;  // the digits to be cut off would move into sight
    return true;
}

}  // namespace

extern "C" sword QZCICalcNumFromNumber(QZCICalcNumber *out, const OCINumber *in) {
    using namespace number_bytes;
    if (!has_valid_length(*in)) return OCI_ERROR;
    const unsigned count = digit_count(*in);
    const bool negative = is_negative(*in);
    if (count == 0) {
        if (is_zero(*in)) {
            calc::set_zero(*out);
        } else if (is_negative_infinity(*in)) {
            calc::set_infinity(*out, true);
        } else {
            return OCI_ERROR;
        }
        return OCI_SUCCESS;
    }
    const ub1 *const bytes = in->OCINumberPart + 2;
    const ub8 zero_digits = in_every_byte(negative ? 101 : 1);
    const Coding decode = decoding(negative);
    ub8 first = load(bytes), second = zero_digits, third = zero_digits;
    if (count > 16) {
        second = load(bytes + 8);
        third = fill(load_half(bytes + 16), count - 16, zero_digits);
    } else if (count > 8) {
        second = fill(load(bytes + 8), count - 8, zero_digits);
    } else {
        first = fill(first, count, zero_digits);
    }
    first = decode(first);
    second = decode(second);
    third = decode(third);
    if ((above_99(first) | above_99(second) | above_99(third)) != 0) [[unlikely]] {
        if (!is_positive_infinity(*in)) return OCI_ERROR;
        calc::set_infinity(*out, false);
        return OCI_SUCCESS;
    }

    // Moved back so that the last limb fills the lower half of the last word: the first
    // digit of a limb has a power of 100 that is 3 modulo 4.
    const int exponent = real_exponent(in->OCINumberPart[1]);
    const int skip = 3 - (exponent & 3);
    const int used = (skip + static_cast<int>(count) + 3) / 4;
    const int bits = 8 * skip + 32 * (used & 1);
    ub4 *const limbs = out->data_part;
    const ub8 top = first >> bits;
    if (used > 4) {
        const calc::TwoWords low = calc::join_digits(
            {shift_in_right(first, second, bits), shift_in_right(second, third, bits)});
        store_limbs(limbs, low.low);
        store_limbs(limbs + 2, low.high);
        store_limbs(limbs + 4, calc::join_digits({0, top}).low);
    } else {
        // With up to two limbs the lower word lies behind the digits.
        const calc::TwoWords both = calc::join_digits({top, shift_in_right(first, second, bits)});
        if (used > 2) store_limbs(limbs, both.low);
        store_limbs(limbs + (used > 2 ? 2 : 0), both.high);
    }
    const int end_pos = (exponent >> 2) - used + 1;
    if (first >> 56 == 0 || out->data_part[0] == 0) [[unlikely]] {
        calc::set_trimmed(*out, negative, end_pos, used);
    } else {
        calc::set_frame(*out, negative, end_pos, used);
    }
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumToNumber(const QZCICalcNumber *in, OCINumber *out) {
    const bool negative = calc::is_negative(*in);
    if (in->is_zero != 0) {
        number_bytes::set_zero(*out);
        return OCI_SUCCESS;
    }
    if (calc::is_infinite(*in)) {
        number_bytes::set_infinity(*out, negative);
        return OCI_SUCCESS;
    }

    // The 20 digits and the first one behind them lie in the top six limbs.
    const int count = calc::limb_count(*in);
    const ub4 *const top = in->data_part + count;
    ub8 words[3] = {};
    for (int i = 0; i < 3 && 2 * i < count; ++i) {
        words[i] = ub8{top[-1 - 2 * i]} << 32;
        if (2 * i + 1 < count) words[i] |= top[-2 - 2 * i];
    }

    int pos = in->start_pos;
    int top_digits = digits_in(static_cast<ub4>(words[0] >> 32));
    // Half away from zero; the digits behind the last one kept are cut off below.
    words[2] += half_units[top_digits];
    words[2] +=
        static_cast<ub4>(words[2]) >= calc::limb_base ? (ub8{1} << 32) - calc::limb_base : 0;
    if (words[2] >> 32 >= calc::limb_base) [[unlikely]] {
        pos += carry_up(words);
        top_digits = digits_in(static_cast<ub4>(words[0] >> 32));
    }
    const int exponent = 4 * pos + top_digits - 1;
    if (exponent > number_bytes::max_exponent) {
        number_bytes::set_infinity(*out, negative);
        return OCI_SUCCESS;
    }
    if (exponent < number_bytes::min_exponent) {
        number_bytes::set_zero(*out);
        return OCI_SUCCESS;
    }

    const auto [first, second] = calc::split_limbs({words[0], words[1]});
    const ub8 third = words[2] != 0 ? calc::split_limbs({0, words[2]}).low : 0;
    const int bits = 8 * (4 - top_digits);
    const ub8 digits[3] = {shift_in_left(first, second, bits), shift_in_left(second, third, bits),
                           third << bits >> 32 << 32};
    const Coding encode = encoding(negative);
    ub1 *const bytes = out->OCINumberPart + 2;
    store(bytes, encode(digits[0]));
    store(bytes + 8, encode(digits[1]));
    store_half(bytes + 16, encode(digits[2]));
    number_bytes::set_frame(*out, negative, exponent, significant(digits));
    return OCI_SUCCESS;
}
