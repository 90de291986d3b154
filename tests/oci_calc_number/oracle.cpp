#include "oracle.h"

#include <map>

#include "support/mpfr_value.h"
#include "support/numbers.h"

namespace oracle {
namespace {

using Function = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

// Functions of one operand leave the second alone.
template <auto mpfr>
constexpr Function unary = [](mpfr_ptr r, mpfr_srcptr a, mpfr_srcptr, mpfr_rnd_t rounding) {
    return mpfr(r, a, rounding);
};

// The logarithm of x to the base b.
int log_base(mpfr_ptr r, mpfr_srcptr b, mpfr_srcptr x, mpfr_rnd_t rounding) {
    Mpfr divisor(mpfr_get_prec(r));
    mpfr_log(divisor, b, rounding);
    mpfr_log(r, x, rounding);
    return mpfr_div(r, r, divisor, rounding);
}

// clang-format off
const std::map<std::string, Function> functions = {
    {"Add", mpfr_add}, {"Sub", mpfr_sub}, {"Mul", mpfr_mul}, {"Div", mpfr_div},
    {"Power", mpfr_pow}, {"Log", log_base}, {"ArcTan2", mpfr_atan2},
    {"Ceil", unary<mpfr_rint_ceil>}, {"Floor", unary<mpfr_rint_floor>}, {"Sqrt", unary<mpfr_sqrt>},
    {"Exp", unary<mpfr_exp>}, {"Ln", unary<mpfr_log>},
    {"Sin", unary<mpfr_sin>}, {"Cos", unary<mpfr_cos>}, {"Tan", unary<mpfr_tan>},
    {"ArcSin", unary<mpfr_asin>}, {"ArcCos", unary<mpfr_acos>}, {"ArcTan", unary<mpfr_atan>},
    {"HypSin", unary<mpfr_sinh>}, {"HypCos", unary<mpfr_cosh>}, {"HypTan", unary<mpfr_tanh>},
};
// clang-format on

// Finite, not zero.
Decimal decimal(Mpfr &v, size_t count, mpfr_rnd_t rounding) {
    mpfr_exp_t exponent;
    const std::string digits = v.digits(count, exponent, rounding);
    return Decimal(digits, exponent - static_cast<long>(count) + 1);
}

}  // namespace

Bytes expected(const std::string &function, const Decimal &a, const Decimal &b) {
    if (function == "Mod") return b.sign() == 0 ? Bytes{} : a.remainder(b).bytes();
    if (function == "ArcTan2" && b.sign() == 0) return {};
    // Operands are off by 2^-precision, relatively; no function here multiplies that by more
    // than 2^650 (10^126 for a large angle, 10^45 next to a multiple of pi/2, 300 in an
    // exponent, 10^40 next to a zero). So 2^(slack - precision) bounds the result's error.
    constexpr mpfr_prec_t slack = 700;
    for (mpfr_prec_t precision = 1400;; precision *= 2) {
        Mpfr x(precision, a.plain()), y(precision, b.plain()), v(precision), end(precision);
        mpfr_clear_flags();
        functions.at(function)(v, x, y, MPFR_RNDN);
        if (mpfr_nan_p(v) != 0 || mpfr_divby0_p() != 0) return {};
        if (mpfr_inf_p(v) != 0) return mpfr_sgn(v) < 0 ? Bytes{1, 0} : Bytes{2, 255, 101};
        if (mpfr_zero_p(v) != 0) return {1, 128};
        const auto count = static_cast<size_t>(static_cast<double>(precision - slack) * 0.3);
        mpfr_mul_2si(end, v, slack - precision, MPFR_RNDN);
        mpfr_sub(end, v, end, MPFR_RNDZ);
        const Bytes low = decimal(end, count, MPFR_RNDZ).bytes();
        mpfr_mul_2si(end, v, slack - precision, MPFR_RNDN);
        mpfr_add(end, v, end, MPFR_RNDA);
        if (decimal(end, count, MPFR_RNDA).bytes() == low) return low;
        // Operands of 40 digits give results so near to a tie only on it.
        if (precision > 5000) return decimal(v, 300, MPFR_RNDN).bytes();
    }
}

Decimal half_pi_multiple(const std::string &n) {
    Mpfr multiple(2000, n), half_pi(2000);
    mpfr_const_pi(half_pi, MPFR_RNDN);
    mpfr_div_2ui(half_pi, half_pi, 1, MPFR_RNDN);
    mpfr_mul(multiple, multiple, half_pi, MPFR_RNDN);
    const Decimal cut = decimal(multiple, 40, MPFR_RNDZ);
    return cut.truncated(2 * (cut.first_pair() - 19));
}

QZCICalcNumber record(const Bytes &bytes) {
    QZCICalcNumber record;
    std::memset(&record, unused, sizeof record);
    const OCINumber n = number(bytes);
    EXPECT_EQ(QZCICalcNumFromNumber(&record, &n), OCI_SUCCESS);
    return record;
}

Bytes bytes(const QZCICalcNumber &record) {
    OCINumber n = number({});
    EXPECT_EQ(QZCICalcNumToNumber(&record, &n), OCI_SUCCESS);
    return value_bytes(n);
}

}  // namespace oracle
