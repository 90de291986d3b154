// Correctly rounded results by MPFR.
#pragma once

#include "oci_calc_number/oci_calc_number.h"
#include "support/exact.h"

namespace oracle {

// The number bytes of function(a) or function(a, b), of a name in support/functions.h; none for
// refused operands.
Bytes expected(const std::string &function, const Decimal &a, const Decimal &b);

// The multiple n of pi/2 to 40 digits or one less, cut off.
Decimal half_pi_multiple(const std::string &n);

// Records of the engine, by way of number bytes.
QZCICalcNumber record(const Bytes &bytes);
Bytes bytes(const QZCICalcNumber &record);

}  // namespace oracle
