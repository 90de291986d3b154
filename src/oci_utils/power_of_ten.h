// Multiplication by powers of ten between 10^-4941 and 10^4994, to nearly 128 bits.
//
// The conversions between binary and decimal try such a product first. It is too
// low by less than a known bound, so it tells how to round, but where the value
// falls within that bound of a tie: there, exact arithmetic decides. With a sparse
// table as in F. Loitsch, "Printing floating-point numbers quickly and accurately
// with integers" (2010).
#pragma once

#include "oci_utils/natural.h"

namespace power_of_ten {

// Stands for a value of at least `bits` and less than `bits` + below, times
// 2^exponent; `bits` is 2^125 or more.
struct Approximation {
    natural::ub16 bits;
    int exponent;
    static constexpr unsigned below = 4;
};

// mantissa * 2^exponent * 10^p, for a mantissa with its top bit set.
Approximation multiply(natural::ub16 mantissa, int exponent, int p);

}  // namespace power_of_ten
