#include "oracle.h"

#include <gmp.h>
#include <mpfr.h>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string_view>

#include "oci_calc_number/engine.h"

namespace oracle {
namespace {

struct Digits {  // +-0.digits * 10^exp
    bool negative = false;
    std::string digits;
    long exp = 0;
};

Digits parse(const std::string &text) {
    Digits d;
    const size_t e = text.find('e');
    std::string mantissa = text.substr(0, e);
    long exp = e == std::string::npos ? 0 : std::stol(text.substr(e + 1));
    if (mantissa[0] == '-') d.negative = true, mantissa.erase(0, 1);
    if (const size_t dot = mantissa.find('.'); dot != std::string::npos) {
        exp -= static_cast<long>(mantissa.size() - dot - 1);
        mantissa.erase(dot, 1);
    }
    const size_t first = mantissa.find_first_not_of('0');
    if (first == std::string::npos) return {};
    mantissa.erase(0, first);
    d.exp = exp + static_cast<long>(mantissa.size());
    mantissa.erase(mantissa.find_last_not_of('0') + 1);
    d.digits = mantissa;
    return d;
}

std::string format(Digits d) {
    const size_t last = d.digits.find_last_not_of('0');
    if (last == std::string::npos) return "0";
    d.digits.erase(last + 1);
    return (d.negative ? "-" : "") + d.digits + "e" +
           std::to_string(d.exp - static_cast<long>(d.digits.size()));
}

// Digits from the first one to the 20th base-100 digit: 40, or 39 when the first has one.
size_t kept_digits(long exp) { return exp % 2 == 0 ? 40 : 39; }

Digits round(Digits d) {
    const size_t keep = kept_digits(d.exp);
    if (d.digits.size() <= keep) return d;
    const bool up = d.digits[keep] >= '5';
    d.digits.resize(keep);
    if (!up) return d;
    size_t i = keep;
    while (i > 0 && d.digits[i - 1] == '9') d.digits[--i] = '0';
    if (i > 0) {
        ++d.digits[i - 1];
    } else {
        d.digits.insert(0, "1");
        ++d.exp;
    }
    return d;
}

std::string in_range(const Digits &d) {
    if (d.digits.empty()) return "0";
    if (d.exp > 126) return d.negative ? "-inf" : "inf";
    if (d.exp < -127) return "0";
    return format(d);
}

struct Mpfr {
    mpfr_t v;
    explicit Mpfr(mpfr_prec_t prec) { mpfr_init2(v, prec); }
    ~Mpfr() { mpfr_clear(v); }
    Mpfr(const Mpfr &) = delete;
    Mpfr &operator=(const Mpfr &) = delete;
};

Digits digits_of(mpfr_srcptr v, size_t count, mpfr_rnd_t rounding) {
    Digits d;
    if (mpfr_zero_p(v)) return d;
    mpfr_exp_t exp;
    char *s = mpfr_get_str(nullptr, &exp, 10, count, v, rounding);
    d.negative = s[0] == '-';
    d.digits = s + (d.negative ? 1 : 0);
    d.exp = exp;
    mpfr_free_str(s);
    return d;
}

using Unary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
using Binary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
using EngineUnary = sword (*)(const QZCICalcNumber *, QZCICalcNumber *);
using EngineBinary = sword (*)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);

struct Function {
    Unary unary;
    Binary binary;
    EngineUnary engine_unary;
    EngineBinary engine_binary;
};

const Function &find(std::string_view name) {
    static const std::map<std::string_view, Function> functions = {
        {"exp", {mpfr_exp, nullptr, QZCICalcNumExp, nullptr}},
        {"ln", {mpfr_log, nullptr, QZCICalcNumLn, nullptr}},
        {"sin", {mpfr_sin, nullptr, QZCICalcNumSinWithRound, nullptr}},
        {"cos", {mpfr_cos, nullptr, QZCICalcNumCosWithRound, nullptr}},
        {"tan", {mpfr_tan, nullptr, QZCICalcNumTanWithRound, nullptr}},
        {"asin", {mpfr_asin, nullptr, QZCICalcNumAsin, nullptr}},
        {"acos", {mpfr_acos, nullptr, QZCICalcNumAcos, nullptr}},
        {"atan", {mpfr_atan, nullptr, QZCICalcNumAtan, nullptr}},
        {"sinh", {mpfr_sinh, nullptr, QZCICalcNumSinh, nullptr}},
        {"cosh", {mpfr_cosh, nullptr, QZCICalcNumCosh, nullptr}},
        {"tanh", {mpfr_tanh, nullptr, QZCICalcNumTanh, nullptr}},
        {"pow", {nullptr, mpfr_pow, nullptr, QZCICalcNumPower}},
        {"atan2", {nullptr, mpfr_atan2, nullptr, QZCICalcNumAtan2}},
    };
    return functions.at(name);
}

// numerator / denominator of a decimal text.
void set_rational(mpq_t q, const std::string &text) {
    const size_t e = text.find('e');
    const long exp = std::stol(text.substr(e + 1));
    mpz_t power;
    mpz_init(power);
    mpz_ui_pow_ui(power, 10, static_cast<unsigned long>(std::labs(exp)));
    mpq_set_str(q, text.substr(0, e).c_str(), 10);
    if (exp >= 0)
        mpz_mul(mpq_numref(q), mpq_numref(q), power);
    else
        mpz_mul(mpq_denref(q), mpq_denref(q), power);
    mpq_canonicalize(q);
    mpz_clear(power);
}

void power(mpq_t r, const mpq_t q, unsigned long n) {
    mpz_pow_ui(mpq_numref(r), mpq_numref(q), n);
    mpz_pow_ui(mpq_denref(r), mpq_denref(q), n);
}

// Whether |a|^b is exactly the value `tie` (positive), by |a|^p == tie^q for b = p/q.
bool is_exact_power(const std::string &a, const std::string &b, const std::string &tie) {
    mpq_t x, y, t, left, right;
    mpq_inits(x, y, t, left, right, nullptr);
    set_rational(x, a[0] == '-' ? a.substr(1) : a);
    set_rational(y, b);
    set_rational(t, tie);
    if (mpq_sgn(y) < 0) {
        mpq_inv(x, x);
        mpq_neg(y, y);
    }
    bool exact = false;
    if (mpz_cmp_ui(mpq_numref(y), 1000000) < 0 && mpz_cmp_ui(mpq_denref(y), 10000) < 0) {
        power(left, x, mpz_get_ui(mpq_numref(y)));
        power(right, t, mpz_get_ui(mpq_denref(y)));
        exact = mpq_equal(left, right) != 0;
    }
    mpq_clears(x, y, t, left, right, nullptr);
    return exact;
}

}  // namespace

QZCICalcNumber record(const std::string &text) {
    if (text == "inf" || text == "-inf") return {{0}, text == "inf" ? sb1{1} : sb1{-1}, 1, 0, 0, 0};
    const Digits d = parse(text);
    QZCICalcNumber n;
    for (ub4 &limb : n.data_part) limb = 0xdeadbeef;
    n.num_signed = d.negative ? -1 : 1;
    n.num_infinity = 0;
    n.start_pos = n.end_pos = 0;
    n.is_zero = d.digits.empty();
    if (n.is_zero) {
        n.data_part[0] = 0;
        return n;
    }
    long low = d.exp - static_cast<long>(d.digits.size());
    std::string digits = d.digits;
    for (; ((low % 8) + 8) % 8 != 0; --low) digits += '0';
    while (digits.size() % 8 != 0) digits.insert(0, "0");
    const size_t count = digits.size() / 8;
    for (size_t i = 0; i < count; ++i)
        n.data_part[i] = static_cast<ub4>(std::stoul(digits.substr(8 * (count - 1 - i), 8)));
    n.end_pos = static_cast<sb1>(low / 8);
    n.start_pos = static_cast<sb1>(low / 8 + static_cast<long>(count) - 1);
    return n;
}

std::string text(const QZCICalcNumber &n) {
    if (n.num_infinity == 1) return n.num_signed < 0 ? "-inf" : "inf";
    if (n.is_zero != 0) return n.num_signed == 1 && n.data_part[0] == 0 ? "0" : "bad zero";
    const int count = n.start_pos - n.end_pos + 1;
    if (count < 1 || count > 40 || n.data_part[0] == 0 || n.data_part[count - 1] == 0)
        return "not normal";
    std::string s = n.num_signed < 0 ? "-" : "";
    for (int i = count - 1; i >= 0; --i) {
        char limb[16];
        snprintf(limb, sizeof limb, "%08u", n.data_part[i]);
        s += limb;
    }
    return format(parse(s + "e" + std::to_string(8 * n.end_pos)));
}

std::string round20(const std::string &text) {
    const bool has_digits = text.find_first_of("0123456789") != std::string::npos;
    return has_digits && text != "0" ? format(round(parse(text))) : text;
}

std::string truncate20(const std::string &text) {
    Digits d = parse(text);
    if (d.digits.size() > kept_digits(d.exp)) d.digits.resize(kept_digits(d.exp));
    return format(d);
}

std::string expected(const std::string &function, const std::string &a, const std::string &b) {
    const Function &f = find(function);
    // Operands are off by 2^-prec, relatively; no function here multiplies that by more
    // than 2^650 (10^126 for a large angle, 10^45 next to a multiple of pi/2, 300 in an
    // exponent, 10^40 next to a zero). So 2^(slack - prec) bounds the result's error.
    constexpr mpfr_prec_t slack = 700;
    for (mpfr_prec_t prec = 1400; prec < 40000; prec *= 2) {
        Mpfr x(prec), y(prec), v(prec), low(prec), high(prec), e(prec);
        mpfr_set_str(x.v, a.c_str(), 10, MPFR_RNDN);
        if (f.binary != nullptr) {
            mpfr_set_str(y.v, b.c_str(), 10, MPFR_RNDN);
            if (mpfr_zero_p(x.v)) mpfr_abs(x.v, x.v, MPFR_RNDN);
            if (mpfr_zero_p(x.v) && mpfr_sgn(y.v) < 0 && function == "pow") return "error";
            f.binary(v.v, x.v, y.v, MPFR_RNDN);
        } else {
            if (function == "ln" && mpfr_zero_p(x.v)) return "error";
            f.unary(v.v, x.v, MPFR_RNDN);
        }
        if (mpfr_nan_p(v.v)) return "error";
        if (mpfr_inf_p(v.v)) return mpfr_sgn(v.v) < 0 ? "-inf" : "inf";
        if (mpfr_zero_p(v.v)) return "0";
        mpfr_mul_2si(e.v, v.v, slack - prec, MPFR_RNDN);
        mpfr_sub(low.v, v.v, e.v, MPFR_RNDZ);
        mpfr_add(high.v, v.v, e.v, MPFR_RNDA);
        const size_t count = static_cast<size_t>(static_cast<double>(prec - slack) * 0.3);
        const std::string down = in_range(round(digits_of(low.v, count, MPFR_RNDZ)));
        const std::string up = in_range(round(digits_of(high.v, count, MPFR_RNDA)));
        if (down == up) return up;
        if (function == "pow" && prec > 5000) {
            Digits tie = digits_of(high.v, count, MPFR_RNDA);
            tie.digits.resize(kept_digits(tie.exp) + 1);
            const bool negative = tie.negative;
            tie.negative = false;
            if (!is_exact_power(a, b, format(tie))) continue;
            tie.negative = negative;
            return in_range(round(tie));
        }
    }
    throw std::runtime_error("undecided: " + function + " " + a + " " + b);
}

sword call(const char *function, const QZCICalcNumber &a, const QZCICalcNumber &b,
           QZCICalcNumber &result) {
    const Function &f = find(function);
    return f.engine_unary != nullptr ? f.engine_unary(&a, &result)
                                     : f.engine_binary(&a, &b, &result);
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

int ln_agreement(const std::string &a) {
    QZCICalcNumber n = record(a);
    if (QZCICalcNumLn(&n, &n) != OCI_SUCCESS || !calc::is_logarithm(n)) return 0;
    calc::expand_logarithm(n, n);
    if (calc::is_logarithm(n)) return 0;
    Mpfr x(1400), got(1400);
    mpfr_set_str(x.v, a.c_str(), 10, MPFR_RNDN);
    mpfr_log(x.v, x.v, MPFR_RNDN);
    mpfr_set_str(got.v, text(n).c_str(), 10, MPFR_RNDN);
    mpfr_div(got.v, got.v, x.v, MPFR_RNDN);
    mpfr_sub_ui(got.v, got.v, 1, MPFR_RNDN);
    return mpfr_zero_p(got.v)
               ? 400
               : static_cast<int>(-0.30103 * static_cast<double>(mpfr_get_exp(got.v)));
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
