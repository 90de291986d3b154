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

// As set_trimmed; sums rarely need it.
inline void set_sum(QZCICalcNumber &n, bool negative, int end_pos, int count) {
    if (n.data_part[0] == 0 || n.data_part[count - 1] == 0) [[unlikely]] {
        return calc::set_trimmed(n, negative, end_pos, count);
    }
    calc::set_frame(n, negative, end_pos, count);
}

// result is neither a nor b.
void add_magnitudes(const QZCICalcNumber &a, const QZCICalcNumber &b, bool negative,
                    QZCICalcNumber &result) {
    const bool a_higher = a.start_pos >= b.start_pos;
    const QZCICalcNumber &high = a_higher ? a : b;
    const QZCICalcNumber &low = a_higher ? b : a;
    const int end = lowest_kept(a, b, high.start_pos + 1);
    ub4 *const limbs = result.data_part;
    // Up to the end of both, plain copies; then sums; then the carry runs up.
    const int both = std::max<int>(high.end_pos, low.end_pos);
    int pos = end;
    for (; pos < both; ++pos) limbs[pos - end] = limb_at(a, pos) + limb_at(b, pos);
    ub4 carry = 0;
    for (; pos <= low.start_pos; ++pos) {
        const ub4 sum =
            high.data_part[pos - high.end_pos] + low.data_part[pos - low.end_pos] + carry;
        carry = sum >= limb_base;
        limbs[pos - end] = sum - (carry != 0 ? limb_base : 0);
    }
    for (; pos <= high.start_pos; ++pos) {
        const ub4 sum = high.data_part[pos - high.end_pos] + carry;
        carry = sum >= limb_base;
        limbs[pos - end] = sum - (carry != 0 ? limb_base : 0);
    }
    limbs[pos - end] = carry;
    set_sum(result, negative, end, pos - end + static_cast<int>(carry));
}

// For |a| > |b|; result is neither a nor b.
void sub_magnitudes(const QZCICalcNumber &a, const QZCICalcNumber &b, bool negative,
                    QZCICalcNumber &result) {
    const int end = lowest_kept(a, b, a.start_pos);
    ub4 *const limbs = result.data_part;
    const int both = std::max<int>(a.end_pos, b.end_pos);
    int pos = end;
    ub4 borrow = 0;
    for (; pos < both; ++pos) {
        const ub4 difference = limb_at(a, pos) - limb_at(b, pos) - borrow;
        borrow = difference >> 31;
        limbs[pos - end] = difference + (borrow != 0 ? limb_base : 0);
    }
    for (; pos <= b.start_pos; ++pos) {
        const ub4 difference = a.data_part[pos - a.end_pos] - b.data_part[pos - b.end_pos] - borrow;
        borrow = difference >> 31;
        limbs[pos - end] = difference + (borrow != 0 ? limb_base : 0);
    }
    for (; pos <= a.start_pos; ++pos) {
        const ub4 difference = a.data_part[pos - a.end_pos] - borrow;
        borrow = difference >> 31;
        limbs[pos - end] = difference + (borrow != 0 ? limb_base : 0);
    }
    set_sum(result, negative, end, pos - end);
}

// The columns of a product of two numbers, six limbs each, filled up with zeros.
inline void multiply_numbers(const QZCICalcNumber &a, const QZCICalcNumber &b, ub8 *columns) {
    constexpr int n = calc::max_number_limbs;
    ub8 x[n], y[n];
    const int a_count = limb_count(a);
    const int b_count = limb_count(b);
    for (int i = 0; i < n; ++i) x[i] = i < a_count ? a.data_part[i] : 0;
    for (int i = 0; i < n; ++i) y[i] = i < b_count ? b.data_part[i] : 0;
    for (int j = 0; j < n; ++j) columns[j] = x[0] * y[j];
#pragma GCC unroll 6
    for (int i = 1; i < n; ++i) {
#pragma GCC unroll 6
        for (int j = 0; j < n - 1; ++j) columns[i + j] += x[i] * y[j];
        columns[i + n - 1] = x[i] * y[n - 1];
    }
    columns[2 * n - 1] = 0;
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
    ub8 columns[2 * calc::max_limbs];
    if (a_count <= calc::max_number_limbs && b_count <= calc::max_number_limbs) {
        multiply_numbers(a, b, columns);
    } else {
        std::fill_n(columns, count, 0);
        for (int i = 0; i < a_count; ++i) {
            for (int j = 0; j < b_count; ++j)
                columns[i + j] += ub8{a.data_part[i]} * b.data_part[j];
        }
    }
    // What exceeds 40 limbs is cut off.
    const int cut = std::max(0, count - calc::max_limbs);
    ub8 carry = 0;
    for (int k = 0; k < count; ++k) {
        const ub8 column = columns[k] + carry;
        carry = column / limb_base;
        if (k >= cut) result->data_part[k - cut] = static_cast<ub4>(column - carry * limb_base);
    }
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
