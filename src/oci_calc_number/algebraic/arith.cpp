// Sum, difference, product, floor and ceiling, exact or cut off toward zero behind 24 digits.
#include <utility>
#include "oci_calc_number/binary/limbs.h"
#include "oci_calc_number/record.h"

using namespace calc;

namespace {

using digit_words::Joined;
using digit_words::split;
using digit_words::window;
using digit_words::word_base;

// Whether there are digits from the index on, all of them when it is negative.
bool has_digits_from(const Digits &d, int index) {
    const Digits &before = digit_words::first_digits(static_cast<unsigned>(index < 0 ? 0 : index));
    return ((d.word[0] & ~before.word[0]) | (d.word[1] & ~before.word[1]) |
            (d.word[2] & ~before.word[2])) != 0;
}

// a + b, or a - b with `subtract`, for finite values that are not zero.
void add_finite(const QZCICalcNumber &a, const QZCICalcNumber &b, bool subtract,
                QZCICalcNumber &result) {
    Digits high = digits_of(a), low = digits_of(b);
    int exponent = exponent_of(a);
    int distance = exponent - exponent_of(b);
    bool negative = is_negative(a);
    const bool opposite = negative != (is_negative(b) != subtract);
    // Which is larger is as good as random: no branch depends on it.
    if (distance < 0 || (distance == 0 && opposite && less(high, low))) {
        std::swap(high, low);
        exponent -= distance;
        distance = -distance;
        negative ^= opposite;
    }
    // Digits that leave the window take the exact difference below what the others give. They
    // are four places behind the first at least, so the difference keeps 23 digits.
    const bool cut = opposite && distance > 4 && has_digits_from(low, int{window} - distance);
    low = moved_back(low, static_cast<unsigned>(distance));
    if (combine(high, low, opposite, cut) != 0) {
        high = moved_back(high, 1);
        high.word[0] |= ub8{1} << 56;
        ++exponent;
    }
    set_normalized(result, negative, exponent, high);
}

sword add(const QZCICalcNumber &a, const QZCICalcNumber &b, bool subtract, QZCICalcNumber &result) {
    if (are_plain(a, b)) [[likely]] {
        add_finite(a, b, subtract, result);
        return OCI_SUCCESS;
    }
    const bool b_negative = is_negative(b) != subtract;
    if (is_infinite(a)) {
        if (is_infinite(b) && is_negative(a) != b_negative) return OCI_ERROR;
        set_infinity(result, is_negative(a));
    } else if (is_infinite(b)) {
        set_infinity(result, b_negative);
    } else if (b.is_zero != 0) {
        copy(result, a);
    } else if (a.is_zero != 0) {
        copy(result, b);
        result.num_signed = b_negative ? -1 : 1;
    } else {
        add_finite(a, b, subtract, result);
    }
    return OCI_SUCCESS;
}

// x = quotient * 10^16 + rest for x < 2^109, by the top 64 bits of x / 2^53 and the
// reciprocal floor(2^117 / 10^16) < 2^64: the estimate is at most one too low.
struct Divided {
    ub8 quotient;
    ub8 rest;
};
inline Divided divide_by_word_base(u128 x) {
    constexpr ub8 reciprocal = static_cast<ub8>((u128{1} << 117) / word_base);
    const ub8 q = mul_high_1(static_cast<ub8>(x >> 53), reciprocal);
    const ub8 r = low(x) - q * word_base;
    const bool low = r >= word_base;
    return {q + low, r - (low ? word_base : 0)};
}

// The first 24 digits of the product of two integers of 24 digits, 48 in all.
Digits product(const Digits &a, const Digits &b) {
    const Joined x = join(a), y = join(b);
    const auto times = [](ub8 m, ub8 n) { return static_cast<u128>(m) * n; };
    const Divided top = divide_by_word_base(times(x.word[0], y.word[0]));
    if ((a.word[1] | a.word[2] | b.word[1] | b.word[2]) == 0) {
        return split({{top.quotient, top.rest, 0}});
    }
    // Columns of 10^16: at most three products each, below 2^108. They are divided side by
    // side; what a quotient adds to the next column leaves carries of 0 to 3.
    const Divided c3 =
        divide_by_word_base(times(x.word[0], y.word[1]) + times(x.word[1], y.word[0]));
    const Divided c2 = divide_by_word_base(
        times(x.word[0], y.word[2]) + times(x.word[1], y.word[1]) + times(x.word[2], y.word[0]));
    const Divided c1 =
        divide_by_word_base(times(x.word[1], y.word[2]) + times(x.word[2], y.word[1]));
    const Divided c0 = divide_by_word_base(times(x.word[2], y.word[2]));
    ub8 columns[] = {top.quotient, top.rest + c3.quotient, c3.rest + c2.quotient,
                     c2.rest + c1.quotient, c1.rest + c0.quotient};
    for (int i = 4; i > 0; --i) {
        for (; columns[i] >= word_base; columns[i] -= word_base) ++columns[i - 1];
    }
    return split({{columns[0], columns[1], columns[2]}});
}

// The integer part, one further from zero when `outward` and something was cut off.
void cut_fraction(const QZCICalcNumber &n, bool outward, QZCICalcNumber &result) {
    if (n.is_zero != 0 || is_infinite(n)) return copy(result, n);
    const bool negative = is_negative(n);
    const Digits all = digits_of(n), mask = integer_mask(n);
    Digits kept;
    ub8 fraction = 0;
    for (int i = 0; i < 3; ++i) {
        kept.word[i] = all.word[i] & mask.word[i];
        fraction |= all.word[i] & ~mask.word[i];
    }
    int exponent = exponent_of(n);
    if (fraction == 0 || !outward) {
        // All digits are gone, or none in front.
        return exponent < 0 ? set_zero(result) : set_digits(result, negative, exponent, kept);
    }
    if (exponent < 0) return set_integer(result, negative, 1);
    if (add_unit(kept, static_cast<unsigned>(exponent))) {
        kept.word[0] = ub8{1} << 56;
        ++exponent;
    }
    set_digits(result, negative, exponent, kept);
}

}  // namespace

extern "C" sword QZCICalcNumAdd(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                                QZCICalcNumber *result) {
    return add(*operand1, *operand2, false, *result);
}

extern "C" sword QZCICalcNumSub(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                                QZCICalcNumber *result) {
    return add(*operand1, *operand2, true, *result);
}

extern "C" sword QZCICalcNumMul(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                                QZCICalcNumber *result) {
    const QZCICalcNumber &a = *operand1;
    const QZCICalcNumber &b = *operand2;
    const bool negative = is_negative(a) != is_negative(b);
    if (are_plain(a, b)) [[likely]] {
        set_normalized(*result, negative, any_exponent(exponent_of(a) + exponent_of(b) + 1),
                       product(digits_of(a), digits_of(b)));
    } else if (is_infinite(a) || is_infinite(b)) {
        if (a.is_zero != 0 || b.is_zero != 0) return OCI_ERROR;
        set_infinity(*result, negative);
    } else {
        set_zero(*result);
    }
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumCeil(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    cut_fraction(*operand, !is_negative(*operand), *result);
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumFloor(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    cut_fraction(*operand, is_negative(*operand), *result);
    return OCI_SUCCESS;
}
