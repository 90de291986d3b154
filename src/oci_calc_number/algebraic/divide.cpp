// Quotient and remainder by long division: the remainder is kept as a binary integer of
// three limbs, the quotient's digits come out in base 10^16.
#include "oci_calc_number/algebraic/algebraic.h"
#include "oci_calc_number/binary/operand.h"
#include "oci_calc_number/elementary/logarithm.h"

using namespace calc;

namespace {

using digit_words::Joined;
using digit_words::TwoWords;
using digit_words::word_base;

constexpr int words = 3;  // 24 digits are below 10^48 < 2^160
constexpr u64 power_of_100[] = {1,         100,         10000,         1000000,
                                100000000, 10000000000, 1000000000000, 100000000000000};

bool is_short(const Digits &d) { return (d.word[1] | d.word[2]) == 0; }

// (high:r) / d for high < d, d >= 2^63 and v = floor((2^128 - 1) / d) - 2^64; r becomes
// the remainder. Moeller and Granlund, Improved division by invariant integers, 2011.
inline u64 divide_2by1(u64 high, u64 &r, u64 d, u64 v) {
    const u128 q = static_cast<u128>(v) * high + (static_cast<u128>(high) << 64 | r);
    u64 quotient = calc::high(q) + 1;
    u64 rest = r - quotient * d;
    if (rest > low(q)) {
        --quotient;
        rest += d;
    }
    if (rest >= d) [[unlikely]] {
        ++quotient;
        rest -= d;
    }
    r = rest;
    return quotient;
}

constexpr u64 reciprocal_of(u64 d) {
    return static_cast<u64>((static_cast<u128>(~d) << 64 | ~u64{0}) / d);
}

// (high:r) / 10^16 for high < 10^16; r becomes the remainder.
inline u64 divide_by_word_base(u64 high, u64 &r) {
    // Both shifted to the top.
    constexpr int shift = 10;
    constexpr u64 d = word_base << shift;
    static_assert(d >> 63 == 1);
    u64 part = r << shift;
    const u64 q = divide_2by1(high << shift | r >> (64 - shift), part, d, reciprocal_of(d));
    r = part >> shift;
    return q;
}

// An integer below 10^48 < 2^160 as words below 10^16.
Joined to_words(const u64 *m) {
    u64 rest = m[1];
    const u64 upper = divide_by_word_base(m[2], rest);  // below 2^43, of 10^48 / 10^16 / 2^64
    u64 last = m[0];
    u64 middle = divide_by_word_base(rest, last);
    const u64 first = divide_by_word_base(upper, middle);
    return {{first, middle, last}};
}

class LongDivision {
public:
    // Of integers of 24 digits, the divisor's first not zero: it is 10^46 > 2^152 or more.
    // The rest starts as the dividend.
    LongDivision(const Digits &dividend, const Digits &divisor) {
        const auto [a0, b0] = join(TwoWords{dividend.word[0], divisor.word[0]});
        const auto [a1, b1] = join(TwoWords{dividend.word[1], divisor.word[1]});
        const auto [a2, b2] = join(TwoWords{dividend.word[2], divisor.word[2]});
        to_limbs(divisor_, Joined{{b0, b1, b2}});
        to_limbs(rest_, Joined{{a0, a1, a2}});
        shift_ = leading_zeros(divisor_[words - 1]);
        shift_left<words>(divisor_, divisor_, shift_);
        // The dividend is below 100 times the divisor.
        rest_[words] = 0;
        shift_left<words + 1>(rest_, rest_, shift_);
        // floor((2^127 - 1) / d) fits in a word for every d >= 2^63.
        reciprocal_ = low((static_cast<u128>(~u64{0} >> 1) << 64 | ~u64{0}) / divisor_[words - 1]);
    }

    // Divides the rest as it is.
    void reduce_dividend() { reduce(); }
    // Multiplies the rest by `factor`, at most 10^16, and divides.
    u64 next(u64 factor) {
        rest_[words] = mul_1<words>(rest_, rest_, factor);
        return reduce();
    }

    bool exact() const { return is_zero<words>(rest_); }
    Joined rest() const {
        Limbs<words> m;
        shift_right<words>(m, rest_, shift_);
        return to_words(m);
    }

private:
    // The quotient q < 2^54 of rest / divisor; leaves the rest below the divisor, with
    // rest_[words] = 0. With T the top 64 bits of rest / 2^10 (10 = 64 - 54), d the divisor's
    // top word and v the reciprocal, q is near T * v / 2^73. Cutting off T, v and d
    // moves this by less than 2^-9 each, so the estimate is off by one at most.
    u64 reduce() {
        const u64 top = rest_[words] << 10 | rest_[words - 1] >> 54;
        u64 q = mul_high_1(top, reciprocal_) >> 9;
        const u64 above = rest_[words] - sub_mul_1<words>(rest_, divisor_, q);
        if (above >> 63 != 0) [[unlikely]] {
            --q;
            add<words>(rest_, rest_, divisor_);
        } else if (above != 0 || rest_[words - 1] >= divisor_[words - 1]) [[unlikely]] {
            if (above != 0 || compare<words>(rest_, divisor_) >= 0) {
                ++q;
                sub<words>(rest_, rest_, divisor_);
            }
        }
        return q;
    }

    Limbs<words> divisor_;
    Limbs<words + 1> rest_;
    u64 reciprocal_;
    int shift_;
};

// 24 digits of a / b, taken as 0.00dd...: of dividend / 100 and divisor the quotient is below 1
// and not below 10^-4, so that 22 digits at least follow its zeros.
Joined quotient_of(const Digits &a, const Digits &b) {
    const Digits dividend = moved_back(a, 1);
    if (!is_short(b)) {
        LongDivision division(dividend, b);
        Joined q;
        for (u64 &word : q.word) word = division.next(word_base);
        return q;
    }
    // A divisor of one word: the same with a rest of one word.
    auto [rest, d] = join(TwoWords{dividend.word[0], b.word[0]});
    const auto [x1, x2] = join(TwoWords{dividend.word[1], dividend.word[2]});
    const int shift = __builtin_clzll(d);
    d <<= shift;
    const u64 v = reciprocal_of(d);
    const u64 brought[] = {x1, x2, 0};
    Joined q;
    for (int i = 0; i < words; ++i) {
        const u128 part = (static_cast<u128>(rest) * word_base + brought[i]) << shift;
        u64 r = low(part);
        q.word[i] = divide_2by1(high(part), r, d, v);
        rest = r >> shift;
    }
    return q;
}

// a mod b for a's exponent `zeros` above b's: |a| is an integer of b's units with as many
// digits 0 behind its 24.
Digits remainder_of(const Digits &a, const Digits &b, unsigned zeros) {
    constexpr unsigned step = digit_words::digits_per_word;
    if (is_short(a) && is_short(b)) {
        // Without the zeros behind both a short dividend stays within a word.
        const auto behind = static_cast<unsigned>(std::countr_zero(a.word[0] | b.word[0])) / 8;
        auto [rest, d] = join(TwoWords{a.word[0] >> 8 * behind, b.word[0] >> 8 * behind});
        if (zeros <= behind) {
            rest = rest * power_of_100[zeros] % d;
        } else {
            rest %= d;
            for (; zeros >= step && rest != 0; zeros -= step) {
                rest = low(static_cast<u128>(rest) * word_base % d);
            }
            rest = low(static_cast<u128>(rest) * power_of_100[zeros % step] % d);
        }
        return {{split(TwoWords{0, rest}).low << 8 * behind, 0, 0}};
    }
    LongDivision division(a, b);
    division.reduce_dividend();
    for (; zeros >= step && !division.exact(); zeros -= step) division.next(word_base);
    division.next(power_of_100[zeros % step]);
    return split(division.rest());
}

}  // namespace

Finite calc::quotient(const Finite &a, const Finite &b) {
    Finite q{split(quotient_of(a.digits, b.digits)), a.exponent - b.exponent,
             a.negative != b.negative};
    normalize_once(q);
    return q;
}

Finite calc::remainder(const Finite &a, const Finite &b) {
    const int zeros = a.exponent - b.exponent;
    if (zeros < 0) return a;
    Finite r{remainder_of(a.digits, b.digits, static_cast<unsigned>(zeros)), b.exponent,
             a.negative};
    normalize(r);
    return r;
}

extern "C" sword QZCICalcNumDiv(const QZCICalcNumber *dividend, const QZCICalcNumber *divisor,
                                QZCICalcNumber *result) {
    const QZCICalcNumber &a = *dividend;
    const QZCICalcNumber &b = *divisor;
    if (is_logarithm(a) && is_logarithm(b)) return divide_logarithms(a, b, *result);
    const bool negative = is_negative(a) != is_negative(b);
    if (b.is_zero != 0 || (is_infinite(a) && is_infinite(b))) return OCI_ERROR;
    if (is_infinite(a)) {
        set_infinity(*result, negative);
    } else if (a.is_zero != 0 || is_infinite(b)) {
        set_zero(*result);
    } else {
        set_finite(*result, quotient(finite_of(a), finite_of(b)));
    }
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumMod(const QZCICalcNumber *dividend, const QZCICalcNumber *divisor,
                                QZCICalcNumber *result) {
    const QZCICalcNumber &a = *dividend;
    const QZCICalcNumber &b = *divisor;
    if (b.is_zero != 0 || is_infinite(a)) return OCI_ERROR;
    if (a.is_zero != 0 || is_infinite(b)) {
        copy(*result, a);
    } else {
        set_finite(*result, remainder(finite_of(a), finite_of(b)));
    }
    return OCI_SUCCESS;
}
