// Integers of 256 bits, least significant limb first: the units of decimals.
#pragma once

#include <bit>

#include "oci_utils/natural.h"

namespace columns {

struct Wide {
    ub8 limb[4];
};

inline ub8 little_endian(ub8 x) {
    return std::endian::native == std::endian::little ? x : __builtin_bswap64(x);
}

constexpr natural::ub16 power_of_ten(unsigned exponent) {
    natural::ub16 power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
}

// w * factor + addend, which has to fit.
inline void multiply_add(Wide &w, ub8 factor, ub8 addend) {
    natural::ub16 carry = addend;
    for (ub8 &limb : w.limb) {
        carry += static_cast<natural::ub16>(limb) * factor;
        limb = static_cast<ub8>(carry);
        carry >>= 64;
    }
}

inline void multiply_by_power_of_ten(Wide &w, unsigned exponent) {
    for (; exponent > 0;) {
        const unsigned step =
            exponent < natural::decimals_per_limb ? exponent : natural::decimals_per_limb;
        multiply_add(w, static_cast<ub8>(power_of_ten(step)), 0);
        exponent -= step;
    }
}

inline bool is_less(const Wide &a, const Wide &b) {
    for (int i = 3; i > 0; --i) {
        if (a.limb[i] != b.limb[i]) return a.limb[i] < b.limb[i];
    }
    return a.limb[0] < b.limb[0];
}

// Divides, and returns the rest.
inline ub8 divide(Wide &w, ub8 divisor) { return natural::divide_limbs(w.limb, 4, divisor); }

}  // namespace columns
