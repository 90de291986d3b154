// Exact decimal values by GMP, and their number bytes built the slow way.
#pragma once

#include <gmp.h>

#include <algorithm>
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

    // The same value in units of 10^exponent, which divides its own unit.
    Decimal to_unit(long exponent) const {
        Decimal result = power_of_ten(exponent_ - exponent);
        mpz_mul(result.units_, result.units_, units_);
        result.exponent_ = exponent;
        return result;
    }

    Decimal plus(long integer) const {
        Decimal result = to_unit(std::min(exponent_, 0L)), term = power_of_ten(-result.exponent_);
        mpz_mul_si(term.units_, term.units_, integer);
        mpz_add(result.units_, result.units_, term.units_);
        return result;
    }

    // Rounds half away from zero to a multiple of 10^place.
    Decimal rounded(long place) const {
        if (place <= exponent_) return *this;
        Decimal half = power_of_ten(place - exponent_), result = *this;
        mpz_tdiv_q_ui(half.units_, half.units_, 2);
        (sign() < 0 ? mpz_sub : mpz_add)(result.units_, result.units_, half.units_);
        return result.truncated(place);
    }

    // Drops what lies below 10^place.
    Decimal truncated(long place) const {
        if (place <= exponent_) return *this;
        Decimal result = *this;
        mpz_tdiv_q(result.units_, units_, power_of_ten(place - exponent_).units_);
        result.exponent_ = place;
        return result;
    }

    // All digits of the magnitude, without leading zeros; "0" for zero.
    std::string digits() const {
        std::string result(mpz_sizeinbase(units_, 10) + 2, '\0');
        mpz_get_str(result.data(), 10, units_);
        return result.c_str() + (sign() < 0);
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
        const Decimal aligned = kept.to_unit(kept.exponent_ - (kept.exponent_ & 1));
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
    static Decimal power_of_ten(long places) {
        Decimal result;
        mpz_ui_pow_ui(result.units_, 10, static_cast<unsigned long>(places));
        return result;
    }

    mpz_t units_;
    long exponent_ = 0;
};
