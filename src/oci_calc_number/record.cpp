// Between the number's bytes and the record: reading, and the one final rounding.
//
// Both directions work on 24 base-100 digits in three 64-bit words, one digit a byte,
// the first digit in the top byte of the first word. Two limbs make one word.
#include <array>
#include <bit>
#include <cstring>

#include "number_bytes.h"
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

// 255 in the first `count` of 20 bytes: the bytes from index 20 - count on.
constexpr auto keep_bytes = [] {
    std::array<ub1, 2 * number_bytes::max_digits> keep{};
    for (unsigned i = 0; i < number_bytes::max_digits; ++i) keep[i] = 255;
    return keep;
}();

// x with the bytes that `keep` clears turned into `filler`.
inline ub8 fill(ub8 x, ub8 keep, ub8 filler) { return ((x ^ filler) & keep) ^ filler; }

// Digit bytes to digits; a byte out of its range shows as a digit of 100 or more, at
// least in the lowest such byte, whose neighbours below borrow nothing from it.
inline ub8 decode(ub8 x, bool negative) {
    return negative ? in_every_byte(101) - x : x - in_every_byte(1);
}
inline ub8 encode(ub8 x, bool negative) {
    return negative ? in_every_byte(101) - x : x + in_every_byte(1);
}

// Non-zero exactly when the lowest byte above 99 exists.
inline ub8 above_99(ub8 x) { return (x | (x + in_every_byte(28))) & in_every_byte(128); }

// Eight digits to two limbs: pairs of bytes, then pairs of 16-bit lanes.
inline ub8 join_digits(ub8 x) {
    constexpr ub8 bytes = 0x00FF00FF00FF00FF;
    constexpr ub8 lanes = 0x0000FFFF0000FFFF;
    x = (x & bytes) + 100 * (x >> 8 & bytes);
    return (x & lanes) + 10000 * (x >> 16 & lanes);
}

// Two limbs to eight digits. Splitting v into q = v / b and r = v % b with q in the
// upper half of the lane, that is q * B + r, adds q * (B - b) to v.
inline ub8 split_limbs(ub4 high, ub4 low) {
    constexpr ub8 lanes = 0x0000FFFF0000FFFF;
    constexpr ub8 quotients = 0x0000007F0000007F;
    ub8 x = ub8{high} << 32 | low;
    x += (ub8{high / 10000} << 32 | low / 10000) * (65536 - 10000);
    // v / 100 is v * 5243 >> 19 for v below 10^4.
    const ub8 even = (x & lanes) * 5243 >> 19 & quotients;
    const ub8 odd = (x >> 16 & lanes) * 5243 >> 19 & quotients;
    return x + (odd << 16 | even) * (256 - 100);
}

// high:low shifted right or left by bits < 64, one word of it.
inline ub8 shift_in_right(ub8 high, ub8 low, int bits) {
    return low >> bits | high << 1 << (63 - bits);
}
inline ub8 shift_in_left(ub8 high, ub8 low, int bits) {
    return high << bits | low >> 1 >> (63 - bits);
}

// Number of digits up to the last one that is not zero; there is one.
inline unsigned significant(ub8 first, ub8 second, ub8 third) {
    const auto upto = [](ub8 x) { return 8 - static_cast<unsigned>(std::countr_zero(x)) / 8; };
    if (third != 0) return 16 + upto(third);
    return second != 0 ? 8 + upto(second) : upto(first);
}

// Half of the weight of the last digit kept in the sixth limb, by the number of digits
// in the top limb.
constexpr ub4 half_units[] = {0, 50, 5000, 500000, 50000000};

constexpr int digits_in(ub4 top_limb) {
    return 1 + (top_limb >= 100) + (top_limb >= 10000) + (top_limb >= 1000000);
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
    const ub1 *const keep = keep_bytes.data() + max_digits - count;
    const ub8 zero_digit = in_every_byte(negative ? 101 : 1);
    const ub8 first = decode(fill(load(bytes), load(keep), zero_digit), negative);
    const ub8 second = decode(fill(load(bytes + 8), load(keep + 8), zero_digit), negative);
    const ub8 third =
        decode(fill(load_half(bytes + 16), load_half(keep + 16), zero_digit), negative);
    if ((above_99(first) | above_99(second) | above_99(third)) != 0) {
        if (!is_positive_infinity(*in)) return OCI_ERROR;
        calc::set_infinity(*out, false);
        return OCI_SUCCESS;
    }

    // Align: the first digit of a limb has a power of 100 that is 3 modulo 4.
    const int exponent = real_exponent(in->OCINumberPart[1]);
    const int skip = 3 - (exponent & 3);
    const int bits = 8 * skip;
    const ub8 limbs[3] = {join_digits(first >> bits),
                          join_digits(shift_in_right(first, second, bits)),
                          join_digits(shift_in_right(second, third, bits))};
    const int used = (skip + static_cast<int>(count) + 3) / 4;
    for (int i = 0; i < used; ++i) {
        out->data_part[used - 1 - i] = static_cast<ub4>(limbs[i / 2] >> (i % 2 != 0 ? 0 : 32));
    }
    const int end_pos = (exponent >> 2) - used + 1;
    if (out->data_part[0] == 0 || out->data_part[used - 1] == 0) {
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
    constexpr int kept = calc::max_number_limbs;
    const int count = calc::limb_count(*in);
    ub4 limbs[kept];
    for (int i = 0; i < kept; ++i) limbs[i] = i < count ? in->data_part[count - 1 - i] : 0;

    int pos = in->start_pos;
    int top_digits = digits_in(limbs[0]);
    // Half away from zero; the digits behind the last one kept are cut off below.
    limbs[kept - 1] += half_units[top_digits];
    if (limbs[kept - 1] >= calc::limb_base) {
        int i = kept - 1;
        for (; i > 0 && limbs[i] >= calc::limb_base; --i) {
            limbs[i] -= calc::limb_base;
            ++limbs[i - 1];
        }
        if (limbs[0] >= calc::limb_base) {
            limbs[0] = 1;  // all others are 0 but for the digits to be cut off
            limbs[kept - 1] = 0;
            ++pos;
        }
        top_digits = digits_in(limbs[0]);
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

    const ub8 first = split_limbs(limbs[0], limbs[1]);
    const ub8 second = split_limbs(limbs[2], limbs[3]);
    const ub8 third = split_limbs(limbs[4], limbs[5]);
    const int bits = 8 * (4 - top_digits);
    const ub8 digits[3] = {shift_in_left(first, second, bits), shift_in_left(second, third, bits),
                           third << bits >> 32 << 32};
    ub1 *const bytes = out->OCINumberPart + 2;
    store(bytes, encode(digits[0], negative));
    store(bytes + 8, encode(digits[1], negative));
    store_half(bytes + 16, encode(digits[2], negative));
    number_bytes::set_frame(*out, negative, exponent, significant(digits[0], digits[1], digits[2]));
    return OCI_SUCCESS;
}
