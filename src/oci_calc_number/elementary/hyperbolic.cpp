// Hyperbolic sine, cosine and tangent, by the exponential function.
#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"
#include "oci_calc_number/record.h"

namespace calc {

// The errors of e^x and a division, and what the difference cancels.
template <int N>
int hyperbolic_value(Real<N> &r, Hyperbolic function, const Operand &x) {
    // cppcheck-suppress compareBoolExpressionWithInt ; it reads < and > as comparisons
    constexpr int bits = exp_bits<N> - 3;
    Real<N> e, t, one;
    to_real(t, x);
    t.negative = false;
    if (function == Hyperbolic::tangent) ++t.exp;
    exp(e, t);
    set_int(one, 1);
    int difference_exp;
    if (function == Hyperbolic::tangent) {  // (e^2x - 1) / (e^2x + 1)
        Real<N> sum;
        add(sum, e, one);
        sub(t, e, one);
        if (is_zero(t)) {
            r = t;
            return 0;
        }
        difference_exp = t.exp;
        div(r, t, sum);
    } else {  // (e^x +- e^-x) / 2
        div(t, one, e);
        add(r, e, t, function == Hyperbolic::sine);
        if (is_zero(r)) return 0;
        difference_exp = r.exp--;
    }
    r.negative = x.negative && function != Hyperbolic::cosine;
    const int cancelled = e.exp - difference_exp;
    return bits - (cancelled > 0 ? cancelled : 0);
}

template int hyperbolic_value<3>(Real<3> &, Hyperbolic, const Operand &);
template int hyperbolic_value<4>(Real<4> &, Hyperbolic, const Operand &);
template int hyperbolic_value<wide_limbs>(Wide &, Hyperbolic, const Operand &);

namespace {

sword compute(QZCICalcNumber &result, Hyperbolic function, const QZCICalcNumber &operand) {
    const bool negative = is_negative(operand);
    if (!is_infinite(operand) && is_tiny(operand)) {
        if (function == Hyperbolic::cosine)
            set_integer(result, false, 1);
        else
            copy(result, operand);
        return OCI_SUCCESS;
    }
    Operand x = {};
    if (!is_infinite(operand) && !read(x, operand)) return OCI_ERROR;
    // tanh x = 1 - 2 e^-2x ...: from 64 on less than 10^-55 below 1. e^512 > 10^222.
    const unsigned limit = function == Hyperbolic::tangent ? 64 : 512;
    if (is_infinite(operand) || magnitude_at_least(operand, limit)) {
        if (function == Hyperbolic::tangent) {
            set_integer(result, negative, 1);
            return OCI_SUCCESS;
        }
        set_infinity(result, negative && function == Hyperbolic::sine);
        return OCI_SUCCESS;
    }
    round_by_passes(result, [&](auto &r) { return hyperbolic_value(r, function, x); });
    return OCI_SUCCESS;
}

}  // namespace
}  // namespace calc

sword QZCICalcNumSinh(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return calc::compute(*result, calc::Hyperbolic::sine, *operand);
}

sword QZCICalcNumCosh(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return calc::compute(*result, calc::Hyperbolic::cosine, *operand);
}

sword QZCICalcNumTanh(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return calc::compute(*result, calc::Hyperbolic::tangent, *operand);
}
