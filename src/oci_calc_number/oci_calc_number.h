// The calc engine's working record. The number module converts its operands
// into records, calls one engine function on them and converts the result back.
#pragma once

#include "oci.h"

struct QZCICalcNumber {
    ub4 data_part[40];  // the digits, base 10^8, least significant limb first
    sb1 num_signed;     // 1 when the value is not negative, -1 when it is
    sb1 num_infinity;   // 1 for an infinity of that sign, else 0
    sb1 start_pos;      // power of 10^8 of the most significant limb
    sb1 end_pos;        // power of 10^8 of data_part[0]
    sb1 is_zero;        // 1 for zero, else 0
};
