// The record of a logarithm. A quotient of two logarithms rounds right only with more digits
// of each than a number has: some 130 when both operands lie next to 1. So QZCICalcNumLn
// leaves beside the rounded digits, which all readers of a record see, the logarithm before
// its rounding, and its operand, of which a wider pass makes it again.
#pragma once

#include "oci_calc_number/binary/operand.h"

namespace calc {

struct Logarithm {
    Operand x;
    Real<3> value;  // ln x, with a relative error below 2^-ln_bits<3>
};

// Keeps the logarithm beside the digits of a record, which need not be set yet.
void keep_logarithm(QZCICalcNumber &n, const Operand &x, const Real<3> &value);
inline void mark_logarithm(QZCICalcNumber &n) {
    n.num_infinity = static_cast<sb1>(Kind::logarithm);
}

// Rounds a / b, two records with is_logarithm. The quotient may be one of them.
sword divide_logarithms(const QZCICalcNumber &a, const QZCICalcNumber &b, QZCICalcNumber &quotient);

}  // namespace calc
