// Sum, difference, product, floor and ceiling.
#include "oci_calc_number/algebraic/algebraic.h"
#include "oci_calc_number/binary/limbs.h"

using namespace calc;

namespace {

using digit_words::group_base;
using digit_words::Joined;
using digit_words::TwoWords;
using digit_words::word_base;

sword add(const QZCICalcNumber &a, const QZCICalcNumber &b, bool subtract, QZCICalcNumber &result) {
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
        set_finite(result, sum(finite_of(a), finite_of(b), subtract));
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

// The first 24 digits of the product of two integers of 24 digits, the last four of them zero:
// 48 digits in all.
Digits digits_of_product(const Digits &a, const Digits &b) {
    const auto times = [](ub8 m, ub8 n) { return static_cast<u128>(m) * n; };
    const auto [x0, y0] = join(TwoWords{a.word[0], b.word[0]});
    const Divided top = divide_by_word_base(times(x0, y0));
    if ((a.word[1] | a.word[2] | b.word[1] | b.word[2]) == 0) {
        const auto [front, back] = split(TwoWords{top.quotient, top.rest});
        return {{front, back, 0}};
    }
    const auto [x1, y1] = join(TwoWords{a.word[1], b.word[1]});
    // The last word is a group, times 10^8.
    const auto [x_groups, y_groups] = digit_words::join_groups(TwoWords{a.word[2], b.word[2]});
    const ub8 x_group = x_groups >> 32, y_group = y_groups >> 32;
    const ub8 x2 = x_group * group_base, y2 = y_group * group_base;
    // Columns of 10^16: at most three products each, below 2^108; that of the groups moves up
    // one column exactly. They are divided side by side; what a quotient adds to the next column
    // leaves carries of 0 to 3, which no branch foretells.
    const Divided c3 = divide_by_word_base(times(x0, y1) + times(x1, y0));
    const Divided c2 = divide_by_word_base(times(x0, y2) + times(x1, y1) + times(x2, y0));
    const Divided c1 = divide_by_word_base(times(x1, y2) + times(x2, y1) + times(x_group, y_group));
    const auto carry = [](ub8 column) {
        return ub8{column >= word_base} + (column >= 2 * word_base) + (column >= 3 * word_base);
    };
    const ub8 carry1 = carry(c2.rest + c1.quotient);
    const ub8 column2 = c3.rest + c2.quotient + carry1, carry2 = carry(column2);
    const ub8 column3 = top.rest + c3.quotient + carry2, carry3 = carry(column3);
    return split(Joined{
        {top.quotient + carry3, column3 - carry3 * word_base, column2 - carry2 * word_base}});
}

void cut_fraction(const QZCICalcNumber &n, bool outward, QZCICalcNumber &result) {
    if (n.is_zero != 0 || is_infinite(n)) return copy(result, n);
    set_finite(result, integer_part(finite_of(n), outward));
}

}  // namespace

Finite calc::product(const Finite &a, const Finite &b) {
    Finite p{digits_of_product(a.digits, b.digits), a.exponent + b.exponent + 1,
             a.negative != b.negative};
    normalize_once(p);
    return p;
}

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
    if (is_infinite(a) || is_infinite(b)) {
        if (a.is_zero != 0 || b.is_zero != 0) return OCI_ERROR;
        set_infinity(*result, is_negative(a) != is_negative(b));
    } else if (a.is_zero != 0 || b.is_zero != 0) {
        set_zero(*result);
    } else {
        set_finite(*result, product(finite_of(a), finite_of(b)));
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
