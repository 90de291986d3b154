// Binary floating-point values of N limbs, and their arithmetic by truncation.
#pragma once

#include "oci_calc_number/binary/limbs.h"

namespace calc {

// +-m / 2^(64N) * 2^exp. The top bit of a non-zero value's m is set; of zero only
// m[N - 1] == 0 is sure.
template <int N>
struct Real {
    Limbs<N> m;
    int exp;
    bool negative;
};

// The relative error of one mul, div, add of like signs, or conversion is below
// 2^-real_bits<N>: at most 2N ulps before a shift by two places, 8N <= 2^7, N <= 16.
template <int N>
inline constexpr int real_bits = 64 * N - 8;
// That of sqrt.
template <int N>
inline constexpr int sqrt_bits = 56 * N;

template <int N>
inline bool is_zero(const Real<N> &a) {
    return a.m[N - 1] == 0;
}

template <int N>
inline void set_zero(Real<N> &r) {
    clear<N>(r.m);
    r.exp = 0;
    r.negative = false;
}

template <int N>
inline void set_int(Real<N> &r, u64 value) {
    clear<N>(r.m);
    r.negative = false;
    r.exp = 0;
    if (value == 0) return;
    r.exp = 64 - leading_zeros(value);
    r.m[N - 1] = value << leading_zeros(value);
}

// The fraction `a` of N limbs times 2^exp.
template <int N>
inline void set_fraction(Real<N> &r, const u64 *a, int exp, bool negative) {
    copy<N>(r.m, a);
    r.negative = negative;
    r.exp = is_zero<N>(a) ? 0 : exp - normalize<N>(r.m);
}

// Another width: cut off or filled with zeros.
template <int N, int From>
inline void set_width(Real<N> &r, const Real<From> &a) {
    for (int i = 0; i < N; ++i) {
        const int j = i + From - N;
        r.m[i] = j >= 0 ? a.m[j >= 0 ? j : 0] : 0;
    }
    r.exp = a.exp;
    r.negative = a.negative;
}

// The top N limbs of a table entry in [1/2, 1).
template <int N, size_t Width>
inline void set_constant(Real<N> &r, const u64 (&entry)[Width], int exp) {
    copy<N>(r.m, entry + Width - N);
    r.exp = exp;
    r.negative = false;
}

// |a| as a fraction of N limbs, for |a| < 1; cut off.
template <int N>
inline void to_fraction(u64 *r, const Real<N> &a) {
    if (is_zero(a)) return clear<N>(r);
    shift_right_any<N>(r, a.m, -a.exp);
}

template <int N>
inline int compare_magnitude(const Real<N> &a, const Real<N> &b) {
    if (is_zero(a) || is_zero(b)) return (is_zero(b) ? 1 : 0) - (is_zero(a) ? 1 : 0);
    if (a.exp != b.exp) return a.exp < b.exp ? -1 : 1;
    return compare<N>(a.m, b.m);
}

template <int N>
inline void mul(Real<N> &r, const Real<N> &a, const Real<N> &b) {
    if (is_zero(a) || is_zero(b)) return set_zero(r);
    r.negative = a.negative != b.negative;
    r.exp = a.exp + b.exp;
    mul_high<N>(r.m, a.m, b.m);
    if (r.m[N - 1] >> 63 == 0) {
        // The mantissas' product is at least 1/4 less a few ulps.
        const int bits = leading_zeros(r.m[N - 1]);
        shift_left<N>(r.m, r.m, bits);
        r.exp -= bits;
    }
}

// Adds |a| and |b|, or subtracts them when `subtract`; exact but for the bits of the
// smaller one that fall below the larger one's last limb, and one place in a carry.
template <int N>
__attribute__((noinline)) void add(Real<N> &r, const Real<N> &a, const Real<N> &b,
                                   bool subtract = false) {
    if (is_zero(b)) {
        r = a;
        return;
    }
    const bool b_negative = b.negative != subtract;
    if (is_zero(a)) {
        r = b;
        r.negative = b_negative;
        return;
    }
    const bool a_larger = compare_magnitude(a, b) >= 0;
    const Real<N> &large = a_larger ? a : b;
    const Real<N> &small = a_larger ? b : a;
    const bool negative = a_larger ? a.negative : b_negative;
    Limbs<N> t;
    shift_right_any<N>(t, small.m, large.exp - small.exp);
    int exp = large.exp;
    if (a.negative == b_negative) {
        if (add<N>(t, large.m, t)) {
            shift_right<N>(t, t, 1);
            t[N - 1] |= u64{1} << 63;
            ++exp;
        }
        copy<N>(r.m, t);
    } else {
        sub<N>(t, large.m, t);
        if (is_zero<N>(t)) return set_zero(r);
        exp -= normalize<N>(t);
        copy<N>(r.m, t);
    }
    r.exp = exp;
    r.negative = negative;
}

template <int N>
inline void sub(Real<N> &r, const Real<N> &a, const Real<N> &b) {
    add(r, a, b, true);
}

template <int N>
__attribute__((noinline)) void div_1(Real<N> &r, const Real<N> &a, u64 w) {
    if (is_zero(a)) return set_zero(r);
    Limbs<N + 1> t;
    copy<N>(t + 1, a.m);
    t[0] = 0;
    div_1<N + 1>(t, t, w);
    r.exp = a.exp - normalize<N + 1>(t);
    copy<N>(r.m, t + 1);
    r.negative = a.negative;
}

// floor((2^192 - 1) / (d1 * 2^64 + d0)) - 2^64 for d1 >= 2^63: [Moller, Granlund:
// Improved division by invariant integers, 2011], algorithm 6.
inline u64 reciprocal_2(u64 d1, u64 d0) {
    u64 v = low((static_cast<u128>(~d1) << 64 | ~u64{0}) / d1);
    u64 p = d1 * v + d0;
    if (p < d0) {
        --v;
        if (p >= d1) {
            --v;
            p -= d1;
        }
        p -= d1;
    }
    const u128 t = static_cast<u128>(v) * d0;
    p += high(t);
    if (p < high(t)) {
        --v;
        if (p > d1 || (p == d1 && low(t) >= d0)) --v;
    }
    return v;
}

// The quotient of (u2, u1, u0) by (d1, d0), (u2, u1) < (d1, d0): algorithm 4 there.
inline u64 divide_3_by_2(u64 u2, u64 u1, u64 u0, u64 d1, u64 d0, u64 v) {
    u128 q = static_cast<u128>(v) * u2 + (static_cast<u128>(u2) << 64 | u1);
    const u64 q0 = low(q);
    u64 q1 = high(q);
    const u128 d = static_cast<u128>(d1) << 64 | d0;
    u128 r = (static_cast<u128>(u1 - q1 * d1) << 64 | u0) - static_cast<u128>(d0) * q1 - d;
    ++q1;
    if (high(r) >= q0) {
        --q1;
        r += d;
    }
    if (r >= d) ++q1;
    return q1;
}

// Schoolbook division of the mantissas [Knuth, The Art of Computer Programming 2,
// 4.3.1 D], N quotient limbs.
template <int N>
__attribute__((noinline)) void div(Real<N> &r, const Real<N> &a, const Real<N> &b) {
    static_assert(N >= 2);
    if (is_zero(a)) return set_zero(r);
    const bool negative = a.negative != b.negative;
    int exp = a.exp - b.exp;
    Limbs<N + 1> rest;
    Limbs<N> d;
    copy<N>(d, b.m);
    rest[0] = 0;
    copy<N>(rest + 1, a.m);
    if (compare<N>(a.m, d) >= 0) {
        shift_right<N + 1>(rest, rest, 1);
        ++exp;
    }
    // rest is the remainder times 2^64; its top N limbs are below d.
    const u64 v = reciprocal_2(d[N - 1], d[N - 2]);
    for (int i = N - 1; i >= 0; --i) {
        u64 q;
        if (rest[N] == d[N - 1] && rest[N - 1] == d[N - 2])
            q = ~u64{0};
        else
            q = divide_3_by_2(rest[N], rest[N - 1], rest[N - 2], d[N - 1], d[N - 2], v);
        const u64 borrow = sub_mul_1<N>(rest, d, q);
        if (rest[N] < borrow) {
            --q;
            add<N>(rest, rest, d);
        }
        r.m[i] = q;
        for (int j = N; j > 0; --j) rest[j] = rest[j - 1];
        rest[0] = 0;
    }
    r.negative = negative;
    r.exp = exp;
    if (r.m[N - 1] >> 63 == 0) {  // the quotient lies in [1/2, 1), less an ulp at most
        shift_left<N>(r.m, r.m, 1);
        --r.exp;
    }
}

// 1/sqrt(a) for a.m / 2^(64N) * 2^odd, odd 0 or -1, by Newton's iteration
// y + y (1 - a y^2) / 2, which squares the relative error (times 3/2) at each
// doubling of the width; below 2^-(58 N) + 2^-56 at the start.
template <int N>
__attribute__((noinline)) void reciprocal_sqrt(Real<N> &y, const Real<N> &a) {
    if constexpr (N == 1) {
        // x in [1/4, 1) with 64 bits; z in (1, 2] with 62.
        const u64 x = a.m[0] >> -a.exp;
        constexpr u64 one = u64{1} << 62;
        // 2.05 - 1.1 x is within 12 % of it.
        u64 z = 2 * one + one / 20 - mul_high_1(x, one + one / 10);
        for (int i = 0; i < 5; ++i) {
            const u64 xzz = mul_high_1(x, mul_high_1(z, z));  // with 60 bits
            z = mul_high_1(z, 3 * (one >> 2) - xzz) << 3;
        }
        set_int(y, z);
        y.exp -= 62;
    } else {
        constexpr int Half = (N + 1) / 2;
        Real<Half> narrow;
        set_width(narrow, a);
        Real<Half> start;
        reciprocal_sqrt<Half>(start, narrow);
        set_width(y, start);
        Real<N> t, one;
        mul(t, y, y);
        mul(t, t, a);
        set_int(one, 1);
        sub(t, one, t);
        mul(t, t, y);
        --t.exp;
        add(y, y, t);
    }
}

// sqrt(a) for a >= 0: s = a y with y = 1/sqrt(a) of half the width, then
// s + y (a - s^2) / 2.
template <int N>
__attribute__((noinline)) void sqrt(Real<N> &r, const Real<N> &a) {
    if (is_zero(a)) return set_zero(r);
    const int odd = -(a.exp & 1);
    const int half_exp = (a.exp - odd) / 2;
    Real<N> x = a;
    x.exp = odd;
    constexpr int Half = (N + 1) / 2;
    Real<Half> narrow, start;
    set_width(narrow, x);
    reciprocal_sqrt<Half>(start, narrow);
    Real<N> y, s, t;
    set_width(y, start);
    mul(s, x, y);
    mul(t, s, s);
    sub(t, x, t);
    mul(t, t, y);
    --t.exp;
    add(r, s, t);
    r.exp += half_exp;
}

}  // namespace calc
