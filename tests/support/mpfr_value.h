// A value of MPFR's that clears itself.
#pragma once

#define MPFR_USE_NO_MACRO
#include <mpfr.h>

#include <string>

struct Mpfr {
    explicit Mpfr(mpfr_prec_t precision) { mpfr_init2(v, precision); }
    Mpfr(mpfr_prec_t precision, const std::string &decimal) : Mpfr(precision) {
        mpfr_set_str(v, decimal.c_str(), 10, MPFR_RNDN);
    }
    ~Mpfr() { mpfr_clear(v); }
    Mpfr(const Mpfr &) = delete;
    Mpfr &operator=(const Mpfr &) = delete;
    operator mpfr_ptr() { return v; }

    // The first `count` significant decimal digits, behind a sign, and the decimal exponent of
    // the first of them.
    std::string digits(size_t count, mpfr_exp_t &exponent, mpfr_rnd_t rounding = MPFR_RNDN) {
        std::string text(count + 2, '\0');
        mpfr_get_str(text.data(), &exponent, 10, count, v, rounding);
        --exponent;
        return text.c_str();
    }

    mpfr_t v;
};
