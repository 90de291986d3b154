// Hyperbolic sine, cosine and tangent, by the exponential function.
#include "oci_calc_number/engine.h"
#include "oci_calc_number/kernels.h"
#include "oci_calc_number/rounding.h"

namespace calc {
namespace {

enum class Hyperbolic { sine, cosine, tangent };

// The function's value, and the bits of its relative error: e^x's and a division's, and
// what the difference cancels. |x| < 512, for the tangent |x| < 64.
template <int N>
int evaluate(Real<N> &r, Hyperbolic function, const Decimal &x) {
    constexpr int bits = exp_bits<N> - 3;
    Real<N> e, t, one;
    to_real(t, x);
    t.negative = false;
    if (function == Hyperbolic::tangent) ++t.exp;
    exp(e, t);
    set_int(one, 1);
    if (function == Hyperbolic::tangent) {  // (e^2x - 1) / (e^2x + 1)
        Real<N> sum;
        add(sum, e, one);
        sub(t, e, one);
        if (is_zero(t)) {
            r = t;
            return 0;
        }
        div(r, t, sum);
    } else {  // (e^x +- e^-x) / 2
        div(t, one, e);
        add(r, e, t, function == Hyperbolic::sine);
        if (is_zero(r)) return 0;
        t = r;
        --r.exp;
    }
    r.negative = x.negative && function != Hyperbolic::cosine;
    const int cancelled = e.exp - t.exp;
    return bits - (cancelled > 0 ? cancelled : 0);
}

sword compute(QZCICalcNumber &result, Hyperbolic function, const QZCICalcNumber &operand) {
    const bool negative = is_negative(operand);
    // sinh x = x (1 + x^2/6 ...), tanh x = x (1 - x^2/3 ...), cosh x = 1 + x^2/2 ...: less
    // than 10^-47 from a number of 40 digits, for |x| < 10^-24.
    if (operand.is_zero || (!is_infinite(operand) && operand.start_pos < -3)) {
        if (function == Hyperbolic::cosine)
            set_small(result, false, 1);
        else
            copy(result, operand);
        return OCI_SUCCESS;
    }
    Decimal x = {};
    if (!is_infinite(operand) && !read(x, operand)) return OCI_ERROR;
    // tanh x = 1 - 2 e^-2x ...: from 64 on less than 10^-55 below 1. e^512 > 10^222.
    const ub4 limit = function == Hyperbolic::tangent ? 64 : 512;
    if (is_infinite(operand) || magnitude_at_least(operand, limit)) {
        if (function == Hyperbolic::tangent) {
            set_small(result, negative, 1);
            return OCI_SUCCESS;
        }
        set_infinity(result, negative && function == Hyperbolic::sine);
        return OCI_SUCCESS;
    }
    round_by_passes(result, [&](auto &r) { return evaluate(r, function, x); });
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
