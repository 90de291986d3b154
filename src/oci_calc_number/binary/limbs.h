// Multi-limb integers and fixed-point fractions of a fixed number N of 64-bit limbs,
// least significant limb first. As a fraction, N limbs x stand for x / 2^(64N), and
// an ulp is 2^(-64N).
#pragma once

#include "oci_utils/natural.h"

namespace calc {

using u64 = ub8;
__extension__ typedef unsigned __int128 u128;
__extension__ typedef __int128 s128;

// Loops over limbs are short and of constant length: unrolled, their arrays live in
// registers, which halves the kernels' time. Those of the wide pass stay loops.
#if defined(__clang__)
#define CALC_UNROLL _Pragma("clang loop unroll(full)")
#else
#define CALC_UNROLL _Pragma("GCC unroll 9")
#endif

template <int N>
using Limbs = u64[static_cast<unsigned>(N)];

inline u64 high(u128 x) { return static_cast<u64>(x >> 64); }
inline u64 low(u128 x) { return static_cast<u64>(x); }
inline u64 mul_high_1(u64 a, u64 b) { return high(static_cast<u128>(a) * b); }
inline int leading_zeros(u64 x) { return x == 0 ? 64 : __builtin_clzll(x); }

template <int N>
inline void copy(u64 *r, const u64 *a) {
    CALC_UNROLL
    for (int i = 0; i < N; ++i) r[i] = a[i];
}

template <int N>
inline void clear(u64 *r) {
    CALC_UNROLL
    for (int i = 0; i < N; ++i) r[i] = 0;
}

template <int N>
inline bool is_zero(const u64 *a) {
    u64 any = 0;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) any |= a[i];
    return any == 0;
}

template <int N>
inline int compare(const u64 *a, const u64 *b) {
    CALC_UNROLL
    for (int i = N - 1; i >= 0; --i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return 0;
}

// r = a + b and r = a - b; return the carry or borrow. r may be a or b.
template <int N>
inline u64 add(u64 *r, const u64 *a, const u64 *b) {
    u64 carry = 0;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) + b[i] + carry;
        r[i] = low(t);
        carry = high(t);
    }
    return carry;
}

template <int N>
inline u64 sub(u64 *r, const u64 *a, const u64 *b) {
    u64 borrow = 0;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) - b[i] - borrow;
        r[i] = low(t);
        borrow = high(t) & 1;
    }
    return borrow;
}

// r = a + w; returns the carry.
template <int N>
inline u64 add_1(u64 *r, const u64 *a, u64 w) {
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) + w;
        r[i] = low(t);
        w = high(t);
    }
    return w;
}

template <int N>
inline void negate(u64 *a) {
    u64 carry = 1;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(~a[i]) + carry;
        a[i] = low(t);
        carry = high(t);
    }
}

// r = a * w, r += a * w, r -= a * w; return the limb that goes out at the top.
template <int N>
inline u64 mul_1(u64 *r, const u64 *a, u64 w) {
    u64 carry = 0;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) * w + carry;
        r[i] = low(t);
        carry = high(t);
    }
    return carry;
}

template <int N>
inline u64 add_mul_1(u64 *r, const u64 *a, u64 w) {
    u64 carry = 0;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) * w + r[i] + carry;
        r[i] = low(t);
        carry = high(t);
    }
    return carry;
}

template <int N>
inline u64 sub_mul_1(u64 *r, const u64 *a, u64 w) {
    u64 borrow = 0;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) * w + borrow;
        borrow = high(t) + (r[i] < low(t) ? 1 : 0);
        r[i] -= low(t);
    }
    return borrow;
}

// r = a / w; returns the remainder. r may be a.
template <int N>
inline u64 div_1(u64 *r, const u64 *a, u64 w) {
    copy<N>(r, a);
    return natural::divide_limbs(r, N, w);
}

// The top N limbs of the fraction a * w, w a one-limb fraction. Error: below 1 ulp,
// never above the exact value. r may be a.
template <int N>
inline void mul_fraction_1(u64 *r, const u64 *a, u64 w) {
    u64 carry = mul_high_1(a[0], w);
    CALC_UNROLL
    for (int i = 1; i < N; ++i) {
        const u128 t = static_cast<u128>(a[i]) * w + carry;
        r[i - 1] = low(t);
        carry = high(t);
    }
    r[N - 1] = carry;
}

// mul_high's loops for many limbs, out of line.
template <int N>
__attribute__((noinline)) void mul_high_long(u64 *r, const u64 *a, const u64 *b) {
    Limbs<N> t;
    for (int i = 0; i < N; ++i) {
        u64 carry = mul_high_1(a[N - 1 - i], b[i]);
        for (int k = 0; k < i; ++k) {
            const u128 p = static_cast<u128>(a[N - i + k]) * b[i] + t[k] + carry;
            t[k] = low(p);
            carry = high(p);
        }
        t[i] = carry;
    }
    copy<N>(r, t);
}

// The product of two fractions, r = a * b. Only what can reach the top N limbs is summed:
// the partial products below column N-1 are at most N-1 ulps and a trifle, the low halves
// of that column's N products below N ulps, so
//     a * b - 2N ulps < r <= a * b.
// r may be a or b.
template <int N>
inline void mul_high(u64 *r, const u64 *a, const u64 *b) {
    if constexpr (N > 8) return mul_high_long<N>(r, a, b);
    Limbs<N> t;
    CALC_UNROLL
    for (int i = 0; i < N; ++i) {
        u64 carry = mul_high_1(a[N - 1 - i], b[i]);
        CALC_UNROLL
        for (int k = 0; k < i; ++k) {
            const u128 p = static_cast<u128>(a[N - i + k]) * b[i] + t[k] + carry;
            t[k] = low(p);
            carry = high(p);
        }
        t[i] = carry;
    }
    CALC_UNROLL
    for (int i = 0; i < N; ++i) r[i] = t[i];
}

// The exact product of A and B limbs, A + B limbs long. r is neither a nor b.
template <int A, int B>
inline void mul(u64 *r, const u64 *a, const u64 *b) {
    r[B] = 0;
    r[B] = mul_1<B>(r, b, a[0]);
    CALC_UNROLL
    for (int i = 1; i < A; ++i) r[i + B] = add_mul_1<B>(r + i, b, a[i]);
}

// Shifts by 0 <= bits < 64; r may be a.
template <int N>
inline void shift_left(u64 *r, const u64 *a, int bits) {
    if (bits == 0) return copy<N>(r, a);
    CALC_UNROLL
    for (int i = N - 1; i > 0; --i) r[i] = a[i] << bits | a[i - 1] >> (64 - bits);
    r[0] = a[0] << bits;
}

template <int N>
inline void shift_right(u64 *r, const u64 *a, int bits) {
    if (bits == 0) return copy<N>(r, a);
    CALC_UNROLL
    for (int i = 0; i < N - 1; ++i) r[i] = a[i] >> bits | a[i + 1] << (64 - bits);
    r[N - 1] = a[N - 1] >> bits;
}

// Shifts by any number of bits >= 0; r may be a.
template <int N>
inline void shift_right_any(u64 *r, const u64 *a, int bits) {
    const int limbs = bits / 64;
    if (limbs >= N) return clear<N>(r);
    CALC_UNROLL
    for (int i = 0; i < N; ++i) r[i] = i + limbs < N ? a[i + limbs] : 0;
    shift_right<N>(r, r, bits % 64);
}

// Shifts the highest set bit to the top; returns the number of places. Not for zero.
template <int N>
inline int normalize(u64 *a) {
    int limbs = 0;
    while (a[N - 1 - limbs] == 0) ++limbs;
    if (limbs > 0) CALC_UNROLL
    for (int i = N - 1; i >= 0; --i) a[i] = i >= limbs ? a[i - limbs] : 0;
    const int bits = leading_zeros(a[N - 1]);
    if (bits > 0) shift_left<N>(a, a, bits);
    return 64 * limbs + bits;
}

// How many limbs a coefficient of r^k needs in a sum of N limbs when r < 2^-Bits: the
// power takes k * Bits bits away. Six guard bits keep the error of one step, at most
// 2N + 1 units of the shortened last place, below 1/3 ulp of the sum, N <= 8.
constexpr int horner_limbs(int n, int bits, int k) {
    const int needed = (64 * n - bits * k + 6 + 63) / 64;
    return needed < n ? (needed < 1 ? 1 : needed) : n;
}

// sum of (Alternate ? (-1)^k : 1) * c[k] * r^k, k from 0 to Degree, by Horner's rule
// with each step at the precision that its power of r leaves. c[k] and every partial
// sum lie in [0, 1); c[k] is the top of an entry of Width limbs. Beside the missing
// terms, the error is below 2N + 8 ulps: the last step's product and coefficient, and 1/3
// from each of the others, of which there are 18 at most.
template <int N, int Bits, bool Alternate, int Degree, int K = 0, unsigned long Count,
          unsigned long Width>
inline void horner(u64 *sum, const u64 *r, const u64 (&c)[Count][Width]) {
    static_assert(Bits >= 9 && Degree < Count);
    constexpr int width = int{Width};
    constexpr int L = horner_limbs(N, Bits, K);
    if constexpr (K == Degree) {
        clear<N - L>(sum);
        copy<L>(sum + N - L, c[K] + width - L);
    } else {
        horner<N, Bits, Alternate, Degree, K + 1>(sum, r, c);
        mul_high<L>(sum + N - L, sum + N - L, r + N - L);
        if constexpr (Alternate)
            sub<L>(sum + N - L, c[K] + width - L, sum + N - L);
        else
            add<L>(sum + N - L, sum + N - L, c[K] + width - L);
    }
}

}  // namespace calc
