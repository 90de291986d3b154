// A value of MPFR's that clears itself.
#pragma once

#define MPFR_USE_NO_MACRO
#include <mpfr.h>

#include <string>

class Mpfr {
public:
    explicit Mpfr(mpfr_prec_t precision) { mpfr_init2(v_, precision); }
    Mpfr(mpfr_prec_t precision, const std::string &decimal) : Mpfr(precision) {
        mpfr_set_str(v_, decimal.c_str(), 10, MPFR_RNDN);
    }
    ~Mpfr() { mpfr_clear(v_); }
    Mpfr(const Mpfr &) = delete;
    Mpfr &operator=(const Mpfr &) = delete;
    operator mpfr_ptr() { return v_; }

    // The first `count` significant decimal digits, behind a sign, and the decimal exponent of
    // the first of them.
    std::string digits(size_t count, mpfr_exp_t &exponent, mpfr_rnd_t rounding = MPFR_RNDN) {
        std::string text(count + 2, '\0');
        mpfr_get_str(text.data(), &exponent, 10, count, v_, rounding);
        --exponent;
        return text.c_str();
    }

private:
    mpfr_t v_;
};
