// Correctly rounded results by MPFR, and records as decimal text.
//
// A value's text is MANTISSAeEXPONENT with no zero at the mantissa's ends ("-15e-1",
// "1e2"), "0", "inf", "-inf", or "error" for a refused operand.
#pragma once

#include <string>

#include "oci_calc_number/oci_calc_number.h"

namespace oracle {

QZCICalcNumber record(const std::string &text);  // any decimal text with "e"
std::string text(const QZCICalcNumber &n);       // all digits of the record

// "MANTISSAeEXPONENT" rounded half away to 20 base-100 digits, without the range rule.
std::string round20(const std::string &text);
// The longest prefix of the digits that an OCINumber holds.
std::string truncate20(const std::string &text);

// The exact value of function(a) or function(a, b), rounded once, with the range rule.
// Names: exp ln sin cos tan asin acos atan sinh cosh tanh pow atan2. Finite operands.
std::string expected(const std::string &function, const std::string &a, const std::string &b);

// The engine's function of that name; b counts for two operands only.
sword call(const char *function, const QZCICalcNumber &a, const QZCICalcNumber &b,
           QZCICalcNumber &result);

// Its result, as text; "error" when it refuses. Computed twice, also in place.
std::string actual(const std::string &function, const std::string &a, const std::string &b);

// How many significant digits of ln a are right in the record that a division sees.
int ln_agreement(const std::string &a);

// The multiple n of pi/2 to `digits` digits, cut off.
std::string half_pi_multiple(const std::string &n, int digits);

}  // namespace oracle
