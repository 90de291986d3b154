// Exact decimal values by GMP, and their number bytes built the slow way.
#pragma once

#include <gmpxx.h>

#include <algorithm>
#include <string>
#include <vector>

using Bytes = std::vector<int>;

// An exact decimal value: units * 10^exponent.
class Decimal {
public:
    Decimal(const mpz_class &units, long exponent) : units_(units), exponent_(exponent) {}
    Decimal(const std::string &digits, long exponent) : Decimal(mpz_class(digits, 10), exponent) {}
    // The value of a text: "-12.5", "1e-128".
    explicit Decimal(std::string text) : Decimal(mpz_class(0), 0) {
        const size_t e = std::min(text.find('e'), text.size());
        if (e < text.size()) exponent_ = std::stol(text.substr(e + 1));
        text.resize(e);
        if (const size_t dot = text.find('.'); dot < text.size()) {
            exponent_ -= static_cast<long>(text.size() - dot - 1);
            text.erase(dot, 1);
        }
        units_.set_str(text, 10);
    }

    // The value of number bytes, finite and not zero.
    static Decimal of(const Bytes &bytes) {
        const bool negative = bytes[1] < 128;
        const size_t pairs = bytes.size() - 2 - (bytes.back() == 102);
        mpz_class units;
        for (size_t i = 0; i < pairs; ++i) {
            units = 100 * units + (negative ? 101 - bytes[2 + i] : bytes[2 + i] - 1);
        }
        const int first = negative ? 62 - bytes[1] : bytes[1] - 193;
        return Decimal(negative ? mpz_class(-units) : units,
                       2 * (first - static_cast<long>(pairs) + 1));
    }

    int sign() const { return sgn(units_); }
    long exponent() const { return exponent_; }
    Decimal negated() const { return Decimal(mpz_class(-units_), exponent_); }
    Decimal magnitude() const { return Decimal(mpz_class(abs(units_)), exponent_); }

    // The value times 10^places.
    Decimal shifted(long places) const { return Decimal(units_, exponent_ + places); }

    Decimal plus(long integer) const {
        const long unit = std::min(exponent_, 0L);
        return Decimal(in_units_of(unit) + integer * power_of_ten(-unit), unit);
    }

    Decimal plus(const Decimal &other) const {
        const long unit = std::min(exponent_, other.exponent_);
        return Decimal(mpz_class(in_units_of(unit) + other.in_units_of(unit)), unit);
    }
    Decimal times(const Decimal &other) const {
        return Decimal(mpz_class(units_ * other.units_), exponent_ + other.exponent_);
    }

    // Of the quotient that is an integer cut off.
    Decimal remainder(const Decimal &divisor) const {
        const long unit = std::min(exponent_, divisor.exponent_);
        return Decimal(mpz_class(in_units_of(unit) % divisor.in_units_of(unit)), unit);
    }

    // Rounds half away from zero to a multiple of 10^place.
    Decimal rounded(long place) const {
        if (place <= exponent_) return *this;
        const mpz_class half = power_of_ten(place - exponent_) / 2;
        return Decimal(mpz_class(units_ + sign() * half), exponent_).truncated(place);
    }

    // Drops what lies below 10^place.
    Decimal truncated(long place) const {
        if (place <= exponent_) return *this;
        return Decimal(mpz_class(units_ / power_of_ten(place - exponent_)), place);
    }

    // All digits of the magnitude, without leading zeros; "0" for zero.
    std::string digits() const { return mpz_class(abs(units_)).get_str(); }

    // The first digit stands at 10^top().
    long top() const { return static_cast<long>(digits().size()) + exponent_ - 1; }

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
    long first_pair() const { return top() >= 0 ? top() / 2 : -((1 - top()) / 2); }

    // Number bytes in normal form, rounded half away from zero to 20 digit bytes: an
    // infinity from 10^126 on, zero below 10^-128.
    Bytes bytes() const {
        if (sign() == 0) return {1, 128};
        const bool negative = sign() < 0;
        const Decimal kept = rounded(2 * (first_pair() - 19));
        const long e = kept.first_pair();
        if (e > 62) return negative ? Bytes{1, 0} : Bytes{2, 255, 101};
        if (e < -64) return {1, 128};
        std::string d = kept.digits();
        if (kept.exponent_ % 2 != 0) d += '0';
        if (d.size() % 2 != 0) d.insert(0, 1, '0');
        while (d.ends_with("00")) d.resize(d.size() - 2);
        Bytes out = {0, static_cast<int>(negative ? 62 - e : 193 + e)};
        for (size_t i = 0; i < d.size(); i += 2) {
            const int pair = std::stoi(d.substr(i, 2));
            out.push_back(negative ? 101 - pair : pair + 1);
        }
        if (negative && out.size() < 22) out.push_back(102);
        out[0] = static_cast<int>(out.size()) - 1;
        return out;
    }

private:
    static mpz_class power_of_ten(long places) {
        mpz_class result;
        mpz_ui_pow_ui(result.get_mpz_t(), 10, static_cast<unsigned long>(places));
        return result;
    }
    // The value in units of 10^unit, which divides its own unit.
    mpz_class in_units_of(long unit) const { return units_ * power_of_ten(exponent_ - unit); }

    mpz_class units_;
    long exponent_;
};

inline bool is_infinite(const Bytes &bytes) {
    return bytes == Bytes{1, 0} || bytes == Bytes{2, 255, 101};
}
