// Private header of the calc engine: the layout of the record and the helpers that
// every function uses to read and build records.
//
// A finite non-zero value is num_signed * sum of data_part[i] * 10^(8*(end_pos + i)),
// i from 0 to start_pos - end_pos. The first and the last limb of that range are not
// zero; limbs beyond it are unspecified. Zero has num_signed 1, both positions 0 and
// data_part[0] 0; an infinity has num_infinity 1, is_zero 0 and both positions 0.
// A limb holds four base-100 digits, aligned on the decimal point as those of an
// OCINumber are.
//
// A logarithm (num_infinity 2) is a finite value like any other, the rounded ln x. Beyond
// its limbs it keeps x: a quotient of two logarithms can only be rounded right with some 130
// digits of each, which divide_logarithms computes as it needs them, while nobody else
// needs more than the rounded value. Only QZCICalcNumLn sets the mark; every helper that
// builds a record clears it.
#pragma once

#include "oci_calc_number/oci_calc_number.h"

namespace calc {

inline constexpr ub4 limb_base = 100000000;
inline constexpr ub8 word_base = ub8{limb_base} * limb_base;  // of two limbs; below 2^54
inline constexpr int limb_digits = 8;
inline constexpr int max_limbs = 40;
// An OCINumber's 20 base-100 digits lie in at most 6 limbs, at these positions:
// 10^-128 is limb 1 at position -16, 10^126 would be 10^6 at position 15.
inline constexpr int max_number_limbs = 6;
inline constexpr int min_number_pos = -16;
inline constexpr int max_number_pos = 15;
inline constexpr ub4 top_limb_limit = 1000000;  // of the limb at max_number_pos

inline int limb_count(const QZCICalcNumber &n) { return n.start_pos - n.end_pos + 1; }
inline bool is_negative(const QZCICalcNumber &n) { return n.num_signed < 0; }
inline bool is_infinite(const QZCICalcNumber &n) { return n.num_infinity == 1; }

inline constexpr sb1 logarithm_mark = 2;
inline bool is_logarithm(const QZCICalcNumber &n) { return n.num_infinity == logarithm_mark; }

// Rounds a / b, two records with is_logarithm. `quotient` may be one of them.
void divide_logarithms(QZCICalcNumber &quotient, const QZCICalcNumber &a, const QZCICalcNumber &b);

// How many base-100 digits a top limb has.
inline int top_digits(ub4 limb) {
    return limb < 100 ? 1 : limb < 10000 ? 2 : limb < 1000000 ? 3 : 4;
}

// Whether |n| >= limit, for n finite and not zero, 1 <= limit < 10^8.
inline bool magnitude_at_least(const QZCICalcNumber &n, ub4 limit) {
    return n.start_pos > 0 || (n.start_pos == 0 && n.data_part[limb_count(n) - 1] >= limit);
}

inline void set_zero(QZCICalcNumber &n) {
    n.data_part[0] = 0;
    n.num_signed = 1;
    n.num_infinity = 0;
    n.start_pos = n.end_pos = 0;
    n.is_zero = 1;
}

inline void set_infinity(QZCICalcNumber &n, bool negative) {
    n.data_part[0] = 0;
    n.num_signed = negative ? -1 : 1;
    n.num_infinity = 1;
    n.start_pos = n.end_pos = 0;
    n.is_zero = 0;
}

// Makes n the finite non-zero value of `count` limbs that are in data_part already,
// data_part[0] at position `end_pos`; first and last limb are not zero.
inline void set_frame(QZCICalcNumber &n, bool negative, int end_pos, int count) {
    n.num_signed = negative ? -1 : 1;
    n.num_infinity = 0;
    n.end_pos = static_cast<sb1>(end_pos);
    n.start_pos = static_cast<sb1>(end_pos + count - 1);
    n.is_zero = 0;
}

// The same for limbs that may begin and end with zeros, or be all zero.
inline void set_trimmed(QZCICalcNumber &n, bool negative, int end_pos, int count) {
    while (count > 0 && n.data_part[count - 1] == 0) --count;
    if (count == 0) return set_zero(n);
    int low = 0;
    while (n.data_part[low] == 0) ++low;
    if (low > 0)
        for (int i = low; i < count; ++i) n.data_part[i - low] = n.data_part[i];
    set_frame(n, negative, end_pos + low, count - low);
}

inline void set_small(QZCICalcNumber &n, bool negative, ub4 value) {
    if (value == 0) return set_zero(n);
    n.data_part[0] = value;
    set_frame(n, negative, 0, 1);
}

// Copies a record's value: not the limbs that are no part of it, nor a logarithm's mark.
inline void copy(QZCICalcNumber &to, const QZCICalcNumber &from) {
    const int count = limb_count(from);
    for (int i = 0; i < count; ++i) to.data_part[i] = from.data_part[i];
    to.num_signed = from.num_signed;
    to.num_infinity = is_infinite(from) ? 1 : 0;
    to.start_pos = from.start_pos;
    to.end_pos = from.end_pos;
    to.is_zero = from.is_zero;
}

// The range rule of rounded results: 10^126 and more is an infinity, less than
// 10^-128 is zero. n is finite and not zero.
inline void clamp_to_range(QZCICalcNumber &n) {
    if (n.start_pos > max_number_pos ||
        (n.start_pos == max_number_pos && n.data_part[limb_count(n) - 1] >= top_limb_limit))
        set_infinity(n, is_negative(n));
    else if (n.start_pos < min_number_pos)
        set_zero(n);
}

}  // namespace calc
