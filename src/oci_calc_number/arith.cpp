// Sum, difference, product, floor and ceiling: exact on the record.
//
// Sums and products of any two numbers fit in the record's 40 limbs. Those of wider
// records keep the top limbs of the exact value, cut off.
#include <algorithm>

#include "oci_calc_number/engine.h"

namespace {

using calc::limb_base;
using calc::limb_count;

// The limb at a position, 0 outside of the value.
inline ub4 limb_at(const QZCICalcNumber &n, int pos) {
    return pos < n.end_pos || pos > n.start_pos ? 0 : n.data_part[pos - n.end_pos];
}

// The sign of |a| - |b|, for finite values that are not zero.
int compare_magnitudes(const QZCICalcNumber &a, const QZCICalcNumber &b) {
    if (a.start_pos != b.start_pos) return a.start_pos < b.start_pos ? -1 : 1;
    const int end = std::min(a.end_pos, b.end_pos);
    for (int pos = a.start_pos; pos >= end; --pos) {
        const ub4 x = limb_at(a, pos);
        const ub4 y = limb_at(b, pos);
        if (x != y) return x < y ? -1 : 1;
    }
    return 0;
}

// The lowest position that a result reaching up to `top` keeps.
inline int lowest_kept(const QZCICalcNumber &a, const QZCICalcNumber &b, int top) {
    return std::max<int>(std::min(a.end_pos, b.end_pos), top - calc::max_limbs + 1);
}

// result is neither a nor b.
void add_magnitudes(const QZCICalcNumber &a, const QZCICalcNumber &b, bool negative,
                    QZCICalcNumber &result) {
    const int top = std::max(a.start_pos, b.start_pos);
    const int end = lowest_kept(a, b, top + 1);
    ub4 carry = 0;
    for (int pos = end; pos <= top; ++pos) {
        const ub4 sum = limb_at(a, pos) + limb_at(b, pos) + carry;
        carry = sum >= limb_base;
        result.data_part[pos - end] = carry != 0 ? sum - limb_base : sum;
    }
    result.data_part[top + 1 - end] = carry;
    calc::set_trimmed(result, negative, end, top + 2 - end);
}

// For |a| > |b|; result is neither a nor b.
void sub_magnitudes(const QZCICalcNumber &a, const QZCICalcNumber &b, bool negative,
                    QZCICalcNumber &result) {
    const int end = lowest_kept(a, b, a.start_pos);
    ub4 borrow = 0;
    for (int pos = end; pos <= a.start_pos; ++pos) {
        const ub4 difference = limb_at(a, pos) - limb_at(b, pos) - borrow;
        borrow = difference >> 31;
        result.data_part[pos - end] = borrow != 0 ? difference + limb_base : difference;
    }
    calc::set_trimmed(result, negative, end, a.start_pos - end + 1);
}

// a + b, or a - b with `subtract`.
sword add(const QZCICalcNumber &a, const QZCICalcNumber &b, bool subtract, QZCICalcNumber &result) {
    const bool negative = calc::is_negative(a);
    const bool b_negative = calc::is_negative(b) != subtract;
    if (calc::is_infinite(a)) {
        if (calc::is_infinite(b) && negative != b_negative) return OCI_ERROR;
        calc::set_infinity(result, negative);
    } else if (calc::is_infinite(b)) {
        calc::set_infinity(result, b_negative);
    } else if (b.is_zero != 0) {
        calc::copy(result, a);
    } else if (a.is_zero != 0) {
        calc::copy(result, b);
        result.num_signed = b_negative ? -1 : 1;
    } else if (negative == b_negative) {
        add_magnitudes(a, b, negative, result);
    } else if (const int order = compare_magnitudes(a, b); order > 0) {
        sub_magnitudes(a, b, negative, result);
    } else if (order < 0) {
        sub_magnitudes(b, a, b_negative, result);
    } else {
        calc::set_zero(result);
    }
    return OCI_SUCCESS;
}

// The limbs are written while the operands are read, so a result that is an operand
// takes a detour.
sword add_any(const QZCICalcNumber *a, const QZCICalcNumber *b, bool subtract,
              QZCICalcNumber *result) {
    if (result != a && result != b) return add(*a, *b, subtract, *result);
    QZCICalcNumber sum;
    if (const sword status = add(*a, *b, subtract, sum)) return status;
    calc::copy(*result, sum);
    return OCI_SUCCESS;
}

// The integer part, one further from zero when `outward` and something was cut off.
void cut_fraction(const QZCICalcNumber &n, bool outward, QZCICalcNumber &result) {
    if (n.is_zero != 0 || calc::is_infinite(n) || n.end_pos >= 0) {
        if (&result != &n) calc::copy(result, n);
        return;
    }
    const bool negative = calc::is_negative(n);
    if (n.start_pos < 0) return calc::set_small(result, negative, outward ? 1 : 0);
    const int cut = -n.end_pos;
    int count = limb_count(n) - cut;
    for (int i = 0; i < count; ++i) result.data_part[i] = n.data_part[i + cut];
    if (outward) {
        int i = 0;
        while (i < count && result.data_part[i] == limb_base - 1) result.data_part[i++] = 0;
        if (i == count) result.data_part[count++] = 0;
        ++result.data_part[i];
    }
    calc::set_trimmed(result, negative, 0, count);
}

}  // namespace

extern "C" sword QZCICalcNumAdd(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                                QZCICalcNumber *result) {
    return add_any(operand1, operand2, false, result);
}

extern "C" sword QZCICalcNumSub(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                                QZCICalcNumber *result) {
    return add_any(operand1, operand2, true, result);
}

extern "C" sword QZCICalcNumMul(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                                QZCICalcNumber *result) {
    const QZCICalcNumber &a = *operand1;
    const QZCICalcNumber &b = *operand2;
    const bool negative = calc::is_negative(a) != calc::is_negative(b);
    if (calc::is_infinite(a) || calc::is_infinite(b)) {
        if (a.is_zero != 0 || b.is_zero != 0) return OCI_ERROR;
        calc::set_infinity(*result, negative);
        return OCI_SUCCESS;
    }
    if (a.is_zero != 0 || b.is_zero != 0) {
        calc::set_zero(*result);
        return OCI_SUCCESS;
    }
    const int a_count = limb_count(a);
    const int b_count = limb_count(b);
    const int count = a_count + b_count;
    const int end_pos = a.end_pos + b.end_pos;
    // At most 40 products below 10^16 and a carry: a column stays below 2^64.
    ub4 product[2 * calc::max_limbs];
    ub8 column = 0;
    for (int k = 0; k < count - 1; ++k) {
        for (int i = std::max(0, k - b_count + 1); i <= std::min(k, a_count - 1); ++i) {
            column += ub8{a.data_part[i]} * b.data_part[k - i];
        }
        product[k] = static_cast<ub4>(column % limb_base);
        column /= limb_base;
    }
    product[count - 1] = static_cast<ub4>(column);
    const int cut = std::max(0, count - calc::max_limbs);
    std::copy(product + cut, product + count, result->data_part);
    calc::set_trimmed(*result, negative, end_pos + cut, count - cut);
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumCeil(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    cut_fraction(*operand, !calc::is_negative(*operand), *result);
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumFloor(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    cut_fraction(*operand, calc::is_negative(*operand), *result);
    return OCI_SUCCESS;
}
