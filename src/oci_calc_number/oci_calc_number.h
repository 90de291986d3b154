// The calc engine's working record and its functions. The number module converts
// its operands into records, calls one engine function on them and converts the
// result back.
//
// Every function reads its operand records, writes the whole result record (which
// may be an operand) and returns OCI_SUCCESS, or returns OCI_ERROR and leaves the
// result unspecified. They keep no state, take no lock, allocate nothing, never
// touch the floating-point environment, and may run on any number of threads.
//
// For finite operands of at most 20 base-100 digits the result, once it is a number, is
// the exact mathematical value rounded once, half away from zero, to 20 base-100 digits;
// a magnitude of 10^126 or more after rounding is the infinity of that sign, one below
// 10^-128 is zero, both with success. docs/numerics.md says how. The algebraic functions
// leave the rounding to QZCICalcNumToNumber, the elementary ones round themselves
// (binary/rounding.h); the range rule is QZCICalcNumToNumber's.
#pragma once

#include "oci.h"

extern "C" {

struct QZCICalcNumber {
    ub4 data_part[40];  // 24 base-100 digits, one a byte; record.h tells how
    sb1 num_signed;     // 1 when the value is not negative, -1 when it is
    sb1 num_infinity;   // 1 for an infinity of that sign, 2 for a logarithm, else 0
    sb1 start_pos;      // power of 100 of the first digit
    sb1 end_pos;        // 0
    sb1 is_zero;        // 1 for zero, else 0
};

// The value of a number whose length byte is valid, normal form or not, or an infinity.
// OCI_ERROR, with the record unspecified, when there are no digit bytes (and it is
// neither zero nor negative infinity) or one is out of its range.
sword QZCICalcNumFromNumber(QZCICalcNumber *out, const OCINumber *in);

// The value rounded half away from zero to 20 base-100 digits, in normal form, under the
// range rule above. Never fails. May write any of the 22 bytes.
sword QZCICalcNumToNumber(const QZCICalcNumber *in, OCINumber *out);

// Terminated decimal text of the value in a buffer of `size` bytes: plain ("-0.05",
// "100") when the first digit's power of ten is -7 to 39, else with an exponent
// ("1.5E125", "1E-100"); "~" and "-~" for infinities. What the buffer cannot hold is
// rounded off, half away from zero; plain text whose integer digits do not fit takes
// an exponent. OCI_ERROR, with an empty text when there is a byte for it, when the
// buffer cannot hold one digit with its exponent, and for a record that no function made.
sword QZCICalcNumToStr(const QZCICalcNumber *in, char *buf, size_t size);

// Sum, difference and product: exact when they fit in 24 digits, else cut off toward zero
// behind the 23rd or 24th. OCI_ERROR for inf - inf and 0 x inf.
sword QZCICalcNumAdd(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                     QZCICalcNumber *result);
sword QZCICalcNumSub(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                     QZCICalcNumber *result);
sword QZCICalcNumMul(const QZCICalcNumber *operand1, const QZCICalcNumber *operand2,
                     QZCICalcNumber *result);

// The quotient cut off behind 22 digits or more; of two logarithms (QZCICalcNumLn) the quotient
// of their exact values, rounded. x / inf is 0.
// OCI_ERROR for inf / inf and a divisor of zero.
sword QZCICalcNumDiv(const QZCICalcNumber *dividend, const QZCICalcNumber *divisor,
                     QZCICalcNumber *quotient);

// The exact remainder of the truncated quotient: the dividend's sign, a magnitude below
// the divisor's. x mod inf is x. OCI_ERROR for an infinite dividend and a divisor of zero.
sword QZCICalcNumMod(const QZCICalcNumber *dividend, const QZCICalcNumber *divisor,
                     QZCICalcNumber *result);

// The nearest integer not below, and not above.
sword QZCICalcNumCeil(const QZCICalcNumber *operand, QZCICalcNumber *result);
sword QZCICalcNumFloor(const QZCICalcNumber *operand, QZCICalcNumber *result);

// The root cut off behind 24 digits. sqrt(inf) is inf. OCI_ERROR for a negative operand.
sword QZCICalcNumSqrt(const QZCICalcNumber *operand, QZCICalcNumber *result);

// e^x. e^-inf is 0, e^inf is inf.
sword QZCICalcNumExp(const QZCICalcNumber *operand, QZCICalcNumber *result);

// ln x, in a record of a kind of its own: elementary/logarithm.h. OCI_ERROR for zero and below.
sword QZCICalcNumLn(const QZCICalcNumber *operand, QZCICalcNumber *result);

// Angles in radians, of any size. OCI_ERROR for an infinity.
sword QZCICalcNumSinWithRound(const QZCICalcNumber *operand, QZCICalcNumber *result);
sword QZCICalcNumCosWithRound(const QZCICalcNumber *operand, QZCICalcNumber *result);
sword QZCICalcNumTanWithRound(const QZCICalcNumber *operand, QZCICalcNumber *result);

// OCI_ERROR outside [-1, 1].
sword QZCICalcNumAsin(const QZCICalcNumber *operand, QZCICalcNumber *result);
sword QZCICalcNumAcos(const QZCICalcNumber *operand, QZCICalcNumber *result);

sword QZCICalcNumAtan(const QZCICalcNumber *operand, QZCICalcNumber *result);

// The angle of the point (x, y), in (-pi, pi], as C's atan2; zero has no sign.
sword QZCICalcNumAtan2(const QZCICalcNumber *y, const QZCICalcNumber *x, QZCICalcNumber *result);

sword QZCICalcNumSinh(const QZCICalcNumber *operand, QZCICalcNumber *result);
sword QZCICalcNumCosh(const QZCICalcNumber *operand, QZCICalcNumber *result);
sword QZCICalcNumTanh(const QZCICalcNumber *operand, QZCICalcNumber *result);

// base^exponent; anything to the power 0 is 1. OCI_ERROR for a negative base with
// an exponent that is not an integer, and for zero to a negative power. Otherwise
// infinities follow C's pow.
sword QZCICalcNumPower(const QZCICalcNumber *base, const QZCICalcNumber *exponent,
                       QZCICalcNumber *result);
sword QZCICalcNumIntPower(const QZCICalcNumber *base, sword exp, QZCICalcNumber *result);

}  // extern "C"
