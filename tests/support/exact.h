// Exact decimal values by GMP, and their number bytes built the slow way.
#pragma once

#include <gmp.h>

#include <string>
#include <vector>

// An exact decimal value: units * 10^exponent.
class Decimal {
public:
    Decimal() { mpz_init(units_); }
    Decimal(const std::string &digits, long exponent) : exponent_(exponent) {
        mpz_init_set_str(units_, digits.c_str(), 10);
    }
    Decimal(const Decimal &other) : exponent_(other.exponent_) {
        mpz_init_set(units_, other.units_);
    }
    Decimal &operator=(const Decimal &other) {
        mpz_set(units_, other.units_);
        exponent_ = other.exponent_;
        return *this;
    }
    ~Decimal() { mpz_clear(units_); }

    // The value of number bytes, finite and not zero.
    static Decimal of(const std::vector<int> &bytes) {
        const bool negative = bytes[1] < 128;
        const size_t pairs = bytes.size() - 2 - (bytes.back() == 102);
        std::string digits = negative ? "-" : "";
        for (size_t i = 0; i < pairs; ++i) {
            const int pair = negative ? 101 - bytes[2 + i] : bytes[2 + i] - 1;
            digits += static_cast<char>('0' + pair / 10);
            digits += static_cast<char>('0' + pair % 10);
        }
        const int first = negative ? 62 - bytes[1] : bytes[1] - 193;
        return Decimal(digits, 2 * (first - static_cast<long>(pairs) + 1));
    }

    mpz_ptr units() { return units_; }
    mpz_srcptr units() const { return units_; }
    long exponent() const { return exponent_; }
    int sign() const { return mpz_sgn(units_); }

    // The value times 10^places.
    Decimal shifted(long places) const {
        Decimal result = *this;
        result.exponent_ += places;
        return result;
    }

    Decimal plus(long integer) const {
        Decimal result = exponent_ > 0 ? Decimal(*this, 0) : *this;
        mpz_t term;
        mpz_init(term);
        mpz_ui_pow_ui(term, 10, static_cast<unsigned long>(-result.exponent_));
        mpz_mul_si(term, term, integer);
        mpz_add(result.units_, result.units_, term);
        mpz_clear(term);
        return result;
    }

    // Rounds half away from zero to a multiple of 10^place.
    Decimal rounded(long place) const {
        Decimal result = *this;
        if (place <= exponent_) return result;
        mpz_t unit, half;
        mpz_init(unit);
        mpz_init(half);
        mpz_ui_pow_ui(unit, 10, static_cast<unsigned long>(place - exponent_));
        mpz_tdiv_q_ui(half, unit, 2);
        (sign() < 0 ? mpz_sub : mpz_add)(result.units_, result.units_, half);
        mpz_tdiv_q(result.units_, result.units_, unit);
        result.exponent_ = place;
        mpz_clear(unit);
        mpz_clear(half);
        return result;
    }

    // Drops what lies below 10^place.
    Decimal truncated(long place) const {
        Decimal result = *this;
        if (place <= exponent_) return result;
        mpz_t unit;
        mpz_init(unit);
        mpz_ui_pow_ui(unit, 10, static_cast<unsigned long>(place - exponent_));
        mpz_tdiv_q(result.units_, result.units_, unit);
        result.exponent_ = place;
        mpz_clear(unit);
        return result;
    }

    // All digits of the magnitude, without leading zeros; "0" for zero.
    std::string digits() const {
        char *s = mpz_get_str(nullptr, 10, units_);
        std::string result = s + (sign() < 0);
        void (*release)(void *, size_t);
        mp_get_memory_functions(nullptr, nullptr, &release);
        release(s, result.size() + 1 + (sign() < 0));
        return result;
    }

    // Canonical text: no exponent, no zeros at either end, "0" before the point.
    std::string plain() const {
        if (sign() == 0) return "0";
        std::string d = digits();
        if (exponent_ >= 0) {
            d.append(static_cast<size_t>(exponent_), '0');
        } else {
            const auto places = static_cast<size_t>(-exponent_);
            if (d.size() <= places) d.insert(0, places + 1 - d.size(), '0');
            d.insert(d.size() - places, ".");
            while (d.back() == '0') d.pop_back();
            if (d.back() == '.') d.pop_back();
        }
        return sign() < 0 ? "-" + d : d;
    }

    // The first digit pair's weight is 100^first_pair().
    long first_pair() const {
        const long top = static_cast<long>(digits().size()) + exponent_ - 1;
        return top >= 0 ? top / 2 : -((1 - top) / 2);
    }

    // Number bytes in normal form, rounded half away from zero to 20 digit
    // bytes; empty for 10^126 and more, zero below 10^-128.
    std::vector<int> bytes() const {
        if (sign() == 0) return {1, 128};
        const Decimal kept = rounded(2 * (first_pair() - 19));
        const long e = kept.first_pair();
        if (e > 62) return {};
        if (e < -64) return {1, 128};
        const Decimal aligned = kept.exponent_ % 2 == 0 ? kept : Decimal(kept, kept.exponent_ - 1);
        std::string d = aligned.digits();
        if (d.size() % 2 != 0) d.insert(0, 1, '0');
        const bool negative = sign() < 0;
        std::vector<int> out = {0, static_cast<int>(negative ? 62 - e : 193 + e)};
        while (d.size() >= 2 && d.compare(d.size() - 2, 2, "00") == 0) d.resize(d.size() - 2);
        for (size_t i = 0; i < d.size(); i += 2) {
            const int pair = (d[i] - '0') * 10 + d[i + 1] - '0';
            out.push_back(negative ? 101 - pair : pair + 1);
        }
        if (negative && out.size() < 22) out.push_back(102);
        out[0] = static_cast<int>(out.size()) - 1;
        return out;
    }

private:
    // The same value with a lower exponent.
    Decimal(const Decimal &v, long exponent) : exponent_(exponent) {
        mpz_init(units_);
        mpz_ui_pow_ui(units_, 10, static_cast<unsigned long>(v.exponent_ - exponent));
        mpz_mul(units_, units_, v.units_);
    }

    mpz_t units_;
    long exponent_ = 0;
};
