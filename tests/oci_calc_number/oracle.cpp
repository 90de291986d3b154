#include "oracle.h"

#include <gmp.h>
#include <mpfr.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string_view>

#include "support/exact.h"

namespace oracle {
namespace {

Decimal parse(const std::string &text) {
    const size_t e = text.find('e');
    std::string mantissa = text.substr(0, e);
    long exp = e == std::string::npos ? 0 : std::stol(text.substr(e + 1));
    if (const size_t dot = mantissa.find('.'); dot != std::string::npos) {
        exp -= static_cast<long>(mantissa.size() - dot - 1);
        mantissa.erase(dot, 1);
    }
    return Decimal(mantissa, exp);
}

std::string format(const Decimal &d) {
    if (d.sign() == 0) return "0";
    std::string digits = d.digits();
    const size_t count = digits.find_last_not_of('0') + 1;
    const long zeros = static_cast<long>(digits.size() - count);
    return (d.sign() < 0 ? "-" : "") + digits.substr(0, count) + "e" +
           std::to_string(d.exponent() + zeros);
}

// Of the 20th base-100 digit.
long last_place(const Decimal &d) { return 2 * (d.first_pair() - 19); }

std::string rounded_in_range(const Decimal &value) {
    const Decimal d = value.rounded(last_place(value));
    if (d.first_pair() > 62) return d.sign() < 0 ? "-inf" : "inf";
    return d.first_pair() < -64 ? "0" : format(d);
}

struct Mpfr {
    mpfr_t v;
    explicit Mpfr(mpfr_prec_t prec) { mpfr_init2(v, prec); }
    ~Mpfr() { mpfr_clear(v); }
    Mpfr(const Mpfr &) = delete;
    Mpfr &operator=(const Mpfr &) = delete;
};

// Finite, not zero.
Decimal digits_of(mpfr_srcptr v, size_t count, mpfr_rnd_t rounding) {
    mpfr_exp_t exp;
    char *s = mpfr_get_str(nullptr, &exp, 10, count, v, rounding);
    const Decimal d(s, exp - static_cast<long>(count));
    mpfr_free_str(s);
    return d;
}

// The logarithm of x to the base b, as the number module has it computed.
int mpfr_log_base(mpfr_ptr r, mpfr_srcptr b, mpfr_srcptr x, mpfr_rnd_t rounding) {
    Mpfr divisor(mpfr_get_prec(r));
    mpfr_log(divisor.v, b, rounding);
    mpfr_log(r, x, rounding);
    return mpfr_div(r, r, divisor.v, rounding);
}

sword log_base(const QZCICalcNumber *b, const QZCICalcNumber *x, QZCICalcNumber *result) {
    QZCICalcNumber divisor = *b, dividend = *x;
    if (QZCICalcNumLn(&divisor, &divisor) != OCI_SUCCESS) return OCI_ERROR;
    if (QZCICalcNumLn(&dividend, &dividend) != OCI_SUCCESS) return OCI_ERROR;
    return QZCICalcNumDiv(&dividend, &divisor, result);
}

struct Function {
    int (*mpfr)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
    sword (*engine)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);
};

// Functions of one operand leave the second alone.
template <auto mpfr, auto engine>
constexpr Function unary = {[](mpfr_ptr r, mpfr_srcptr a, mpfr_srcptr, mpfr_rnd_t rounding) {
                                return mpfr(r, a, rounding);
                            },
                            [](const QZCICalcNumber *a, const QZCICalcNumber *, QZCICalcNumber *r) {
                                return engine(a, r);
                            }};

const Function &find(std::string_view name) {
    static const std::map<std::string_view, Function> functions = {
        {"exp", unary<mpfr_exp, QZCICalcNumExp>},
        {"ln", unary<mpfr_log, QZCICalcNumLn>},
        {"sin", unary<mpfr_sin, QZCICalcNumSinWithRound>},
        {"cos", unary<mpfr_cos, QZCICalcNumCosWithRound>},
        {"tan", unary<mpfr_tan, QZCICalcNumTanWithRound>},
        {"asin", unary<mpfr_asin, QZCICalcNumAsin>},
        {"acos", unary<mpfr_acos, QZCICalcNumAcos>},
        {"atan", unary<mpfr_atan, QZCICalcNumAtan>},
        {"sinh", unary<mpfr_sinh, QZCICalcNumSinh>},
        {"cosh", unary<mpfr_cosh, QZCICalcNumCosh>},
        {"tanh", unary<mpfr_tanh, QZCICalcNumTanh>},
        {"pow", {mpfr_pow, QZCICalcNumPower}},
        {"log", {mpfr_log_base, log_base}},
        {"atan2", {mpfr_atan2, QZCICalcNumAtan2}},
    };
    return functions.at(name);
}

// base^n for the magnitude of a decimal text, n > 0.
void power(mpq_t r, const std::string &base, unsigned long n) {
    const Decimal d = parse(base);
    const std::string zeros(static_cast<size_t>(std::labs(d.exponent())), '0');
    mpq_set_str(r, (d.digits() + (d.exponent() < 0 ? "/1" : "") + zeros).c_str(), 10);
    mpq_canonicalize(r);
    mpz_pow_ui(mpq_numref(r), mpq_numref(r), n);
    mpz_pow_ui(mpq_denref(r), mpq_denref(r), n);
}

// Whether |a|^b is exactly the value |tie|, by |a|^p == |tie|^q for b = p/q.
bool is_exact_power(const std::string &a, const std::string &b, const std::string &tie) {
    mpq_t y, left, right;
    mpq_inits(y, left, right, nullptr);
    power(y, b, 1);
    bool exact = false;
    if (mpz_cmp_ui(mpq_numref(y), 1000000) < 0 && mpz_cmp_ui(mpq_denref(y), 10000) < 0) {
        power(left, a, mpz_get_ui(mpq_numref(y)));
        if (b[0] == '-') mpq_inv(left, left);
        power(right, tie, mpz_get_ui(mpq_denref(y)));
        exact = mpq_equal(left, right) != 0;
    }
    mpq_clears(y, left, right, nullptr);
    return exact;
}

}  // namespace

QZCICalcNumber record(const std::string &text) {
    std::vector<int> bytes = {1, 0};
    if (text == "inf") bytes = {2, 255, 101};
    if (text != "inf" && text != "-inf") bytes = parse(text).bytes();
    OCINumber number;
    std::copy(bytes.begin(), bytes.end(), number.OCINumberPart);
    QZCICalcNumber n;
    std::fill_n(reinterpret_cast<ub1 *>(&n), sizeof n, ub1{0xEE});
    if (QZCICalcNumFromNumber(&n, &number) != OCI_SUCCESS) throw std::runtime_error(text);
    return n;
}

std::string text(const QZCICalcNumber &n) {
    OCINumber number;
    if (QZCICalcNumToNumber(&n, &number) != OCI_SUCCESS) return "refused";
    const ub1 *const bytes = number.OCINumberPart;
    if (bytes[1] == 0 && bytes[0] == 1) return "-inf";
    if (bytes[1] == 255 && bytes[2] == 101) return "inf";
    if (bytes[1] == 128) return "0";
    return format(Decimal::of({bytes, bytes + bytes[0] + 1}));
}

std::string round20(const std::string &text) {
    if (text.find_first_of("0123456789") == std::string::npos) return text;
    const Decimal d = parse(text);
    return format(d.rounded(last_place(d)));
}

std::string truncate20(const std::string &text) {
    const Decimal d = parse(text);
    return format(d.truncated(last_place(d)));
}

std::string expected(const std::string &function, const std::string &a, const std::string &b) {
    // Operands are off by 2^-prec, relatively; no function here multiplies that by more
    // than 2^650 (10^126 for a large angle, 10^45 next to a multiple of pi/2, 300 in an
    // exponent, 10^40 next to a zero). So 2^(slack - prec) bounds the result's error.
    constexpr mpfr_prec_t slack = 700;
    for (mpfr_prec_t prec = 1400; prec < 40000; prec *= 2) {
        Mpfr x(prec), y(prec), v(prec), low(prec), high(prec), e(prec);
        mpfr_set_str(x.v, a.c_str(), 10, MPFR_RNDN);
        mpfr_set_str(y.v, b.empty() ? "0" : b.c_str(), 10, MPFR_RNDN);
        for (mpfr_ptr z : {x.v, y.v})
            if (mpfr_zero_p(z)) mpfr_abs(z, z, MPFR_RNDN);
        const bool pole = function == "ln" || (function == "pow" && mpfr_sgn(y.v) < 0);
        if (pole && mpfr_zero_p(x.v)) return "error";
        find(function).mpfr(v.v, x.v, y.v, MPFR_RNDN);
        if (mpfr_nan_p(v.v)) return "error";
        if (mpfr_inf_p(v.v)) return mpfr_sgn(v.v) < 0 ? "-inf" : "inf";
        if (mpfr_zero_p(v.v)) return "0";
        mpfr_mul_2si(e.v, v.v, slack - prec, MPFR_RNDN);
        mpfr_sub(low.v, v.v, e.v, MPFR_RNDZ);
        mpfr_add(high.v, v.v, e.v, MPFR_RNDA);
        const size_t count = static_cast<size_t>(static_cast<double>(prec - slack) * 0.3);
        const Decimal up = digits_of(high.v, count, MPFR_RNDA);
        const std::string result = rounded_in_range(up);
        if (rounded_in_range(digits_of(low.v, count, MPFR_RNDZ)) == result) return result;
        if (function == "pow" && prec > 5000) {
            const Decimal tie = up.truncated(last_place(up) - 1);
            if (is_exact_power(a, b, format(tie))) return rounded_in_range(tie);
        }
    }
    throw std::runtime_error("undecided: " + function + " " + a + " " + b);
}

sword call(const char *function, const QZCICalcNumber &a, const QZCICalcNumber &b,
           QZCICalcNumber &result) {
    return find(function).engine(&a, &b, &result);
}

std::string actual(const std::string &function, const std::string &a, const std::string &b) {
    QZCICalcNumber x = record(a), result;
    const QZCICalcNumber y = record(b.empty() ? a : b);
    std::string texts[2];
    for (QZCICalcNumber *r : {&result, &x}) {  // the second time in place
        const sword status = call(function.c_str(), x, y, *r);
        std::string &t = texts[r == &x];
        t = status == OCI_SUCCESS ? text(*r) : status == OCI_ERROR ? "error" : "bad status";
        if (t != round20(t)) return "not rounded: " + t;
    }
    return texts[0] == texts[1] ? texts[0] : texts[0] + " but in place " + texts[1];
}

std::string half_pi_multiple(const std::string &n, int digits) {
    Mpfr pi(2000), factor(2000);
    mpfr_const_pi(pi.v, MPFR_RNDN);
    mpfr_set_str(factor.v, n.c_str(), 10, MPFR_RNDN);
    mpfr_mul(pi.v, pi.v, factor.v, MPFR_RNDN);
    mpfr_div_2ui(pi.v, pi.v, 1, MPFR_RNDN);
    return format(digits_of(pi.v, static_cast<size_t>(digits), MPFR_RNDZ));
}

}  // namespace oracle
