// Quotient and remainder by long division: the remainder is kept as a binary integer,
// the quotient's digits come out in base 10^16.
//
// Both operands are written as integers of 2N limbs with the top limb filled, units of
// the last limb apart, so that their quotient lies between 10^-8 and 10^8. The division
// brings in zeros only, because 2N limbs hold all of either operand.
#include <algorithm>

#include "oci_calc_number/engine.h"
#include "oci_calc_number/limbs.h"

namespace {

using calc::limb_base;
using calc::Limbs;
using calc::low;
using calc::u128;
using calc::u64;
using calc::word_base;

// The value of the record's top 2N limbs, filled up with zeros. The lowest limb's
// position is start_pos - 2N + 1.
template <int N>
void to_integer(u64 *r, const QZCICalcNumber &n) {
    const int top = calc::limb_count(n) - 1;
    calc::clear<N>(r);
    for (int i = 0; i < 2 * N; i += 2) {
        const u64 high = i <= top ? n.data_part[top - i] : 0;
        const u64 rest = i + 1 <= top ? n.data_part[top - i - 1] : 0;
        calc::mul_1<N>(r, r, word_base);
        calc::add_1<N>(r, r, high * limb_base + rest);
    }
}

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

// Writes the integer as 2N limbs, least significant first. r is used up.
template <int N>
void to_limbs(u64 *r, ub4 *limbs) {
    constexpr int shift = 10;
    constexpr u64 d = word_base << shift;
    static_assert(d >> 63 == 1);
    constexpr u64 v = static_cast<u64>((static_cast<u128>(~d) << 64 | ~u64{0}) / d);
    for (int i = 0; i < 2 * N; i += 2) {
        u64 rest = 0;
        for (int k = N - 1; k >= 0; --k) {
            // Divided by word_base through both shifted; rest < d holds.
            u64 part = r[k] << shift;
            const u64 high = rest | r[k] >> (64 - shift);
            r[k] = divide_2by1(high, part, d, v);
            rest = part;
        }
        rest >>= shift;
        limbs[i] = static_cast<ub4>(rest % limb_base);
        limbs[i + 1] = static_cast<ub4>(rest / limb_base);
    }
}

template <int N>
class LongDivision {
public:
    // The rest starts as the dividend.
    LongDivision(const QZCICalcNumber &dividend, const QZCICalcNumber &divisor) {
        to_integer<N>(divisor_, divisor);
        to_integer<N>(rest_, dividend);
        // The dividend is below 10^8 times the divisor, so both can be shifted alike:
        // the rest has one word more.
        rest_[N] = 0;
        while (divisor_[N - 1] == 0) {
            shift_word<N>(divisor_);
            shift_word<N + 1>(rest_);
        }
        shift_ = calc::leading_zeros(divisor_[N - 1]);
        calc::shift_left<N>(divisor_, divisor_, shift_);
        calc::shift_left<N + 1>(rest_, rest_, shift_);
        // floor((2^127 - 1) / d) fits in a word for every d >= 2^63.
        reciprocal_ = low((static_cast<u128>(~u64{0} >> 1) << 64 | ~u64{0}) / divisor_[N - 1]);
    }

    // Divides the rest as it is; the quotient is below 10^8.
    ub4 first() { return static_cast<ub4>(reduce()); }
    // Multiplies the rest by `factor`, at most 10^16, and divides.
    u64 next(u64 factor) {
        rest_[N] = calc::mul_1<N>(rest_, rest_, factor);
        return reduce();
    }

    bool exact() const { return calc::is_zero<N>(rest_); }
    void take_rest(u64 *r) {
        calc::shift_right<N>(r, rest_, shift_);
        for (; words_ > 0; --words_) {
            std::copy(r + 1, r + N, r);
            r[N - 1] = 0;
        }
    }

private:
    template <int M>
    void shift_word(u64 *r) {
        std::copy_backward(r, r + M - 1, r + M);
        r[0] = 0;
        if (M == N) ++words_;
    }

    // The quotient q < 2^54 of rest / divisor; leaves the rest below the divisor, with
    // rest_[N] = 0. With T the top 64 bits of rest / 2^10 (10 = 64 - 54), d the divisor's
    // top word and v the reciprocal, q is near T * v / 2^73. Cutting off T, v and d
    // moves this by less than 2^-9 each, so the estimate is off by one at most.
    u64 reduce() {
        const u64 top = rest_[N] << 10 | rest_[N - 1] >> 54;
        u64 q = calc::mul_high_1(top, reciprocal_) >> 9;
        const u64 above = rest_[N] - calc::sub_mul_1<N>(rest_, divisor_, q);
        if (above >> 63 != 0) [[unlikely]] {
            --q;
            calc::add<N>(rest_, rest_, divisor_);
        } else if (above != 0 || rest_[N - 1] >= divisor_[N - 1]) [[unlikely]] {
            if (above != 0 || calc::compare<N>(rest_, divisor_) >= 0) {
                ++q;
                calc::sub<N>(rest_, rest_, divisor_);
            }
        }
        return q;
    }

    Limbs<N> divisor_;
    Limbs<N + 1> rest_;
    u64 reciprocal_;
    int shift_;
    int words_ = 0;
};

// Six quotient limbs from the first that is not zero: the rounding to 20 base-100
// digits looks at one digit more than it keeps, which the sixth limb holds at least.
template <int N>
void divide(const QZCICalcNumber &a, const QZCICalcNumber &b, bool negative,
            QZCICalcNumber &result) {
    const int end_pos = a.start_pos - b.start_pos - 6;
    LongDivision<N> division(a, b);
    result.data_part[6] = division.first();
    for (int i = 4; i >= 0; i -= 2) {
        const u64 q = division.next(word_base);
        result.data_part[i] = static_cast<ub4>(q % limb_base);
        result.data_part[i + 1] = static_cast<ub4>(q / limb_base);
    }
    calc::set_trimmed(result, negative, end_pos, 7);
}

// For a.start_pos >= b.start_pos: |a| is an integer of the divisor's units with
// a.start_pos - b.start_pos zero limbs behind its 2N limbs.
template <int N>
void remainder(const QZCICalcNumber &a, const QZCICalcNumber &b, QZCICalcNumber &result) {
    const bool negative = calc::is_negative(a);
    const int end_pos = b.start_pos - 2 * N + 1;
    int zeros = a.start_pos - b.start_pos;
    LongDivision<N> division(a, b);
    division.first();
    for (; zeros >= 2 && !division.exact(); zeros -= 2) division.next(word_base);
    if (zeros == 1) division.next(limb_base);
    Limbs<N> rest;
    division.take_rest(rest);
    to_limbs<N>(rest, result.data_part);
    calc::set_trimmed(result, negative, end_pos, 2 * N);
}

// Words for the operands: three for numbers, as many as a record fills for others.
constexpr int narrow = calc::max_number_limbs / 2;
constexpr int wide = calc::max_limbs / 2;

inline bool is_narrow(const QZCICalcNumber &n) { return calc::limb_count(n) <= 2 * narrow; }

}  // namespace

extern "C" sword QZCICalcNumDiv(const QZCICalcNumber *dividend, const QZCICalcNumber *divisor,
                                QZCICalcNumber *quotient) {
    const QZCICalcNumber &a = *dividend;
    const QZCICalcNumber &b = *divisor;
    if (calc::is_logarithm(a) && calc::is_logarithm(b)) {
        calc::divide_logarithms(*quotient, a, b);
        return OCI_SUCCESS;
    }
    const bool negative = calc::is_negative(a) != calc::is_negative(b);
    if (b.is_zero != 0 || (calc::is_infinite(a) && calc::is_infinite(b))) return OCI_ERROR;
    if (calc::is_infinite(a)) {
        calc::set_infinity(*quotient, negative);
    } else if (a.is_zero != 0 || calc::is_infinite(b)) {
        calc::set_zero(*quotient);
    } else if (is_narrow(a) && is_narrow(b)) {
        divide<narrow>(a, b, negative, *quotient);
    } else {
        divide<wide>(a, b, negative, *quotient);
    }
    return OCI_SUCCESS;
}

extern "C" sword QZCICalcNumMod(const QZCICalcNumber *dividend, const QZCICalcNumber *divisor,
                                QZCICalcNumber *result) {
    const QZCICalcNumber &a = *dividend;
    const QZCICalcNumber &b = *divisor;
    if (b.is_zero != 0 || calc::is_infinite(a)) return OCI_ERROR;
    if (a.is_zero != 0 || calc::is_infinite(b) || a.start_pos < b.start_pos) {
        calc::copy(*result, a);
    } else if (is_narrow(a) && is_narrow(b)) {
        remainder<narrow>(a, b, *result);
    } else {
        remainder<wide>(a, b, *result);
    }
    return OCI_SUCCESS;
}
