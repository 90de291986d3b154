#include "oci_utils/power_of_ten.h"

#include "support/mpfr_value.h"
#include "support/numbers.h"

namespace {

void set(mpfr_ptr out, natural::ub16 value) {
    mpfr_set_ui_2exp(out, static_cast<ub8>(value >> 64), 64, MPFR_RNDN);
    mpfr_add_ui(out, out, static_cast<ub8>(value), MPFR_RNDN);
}

// Every power, times random mantissas, lies within the bound that is promised.
TEST(PowerOfTen, AllWithinTheirBound) {
    auto random = seeded();
    Mpfr low(400), high(400), bits(400);
    for (int p = -4941; p <= 4994; ++p) {
        const ub8 top = ub8{1} << 63 | (p % 3 != 0 ? random() : 0);
        const natural::ub16 mantissa =
            static_cast<natural::ub16>(top) << 64 | (p % 5 != 0 ? random() : 0);
        const auto product = power_of_ten::multiply(mantissa, 7, p);
        mpfr_set_ui(bits, 10, MPFR_RNDN);
        mpfr_pow_si(low, bits, p, MPFR_RNDD);
        mpfr_pow_si(high, bits, p, MPFR_RNDU);
        set(bits, mantissa);
        mpfr_mul(low, low, bits, MPFR_RNDD);
        mpfr_mul(high, high, bits, MPFR_RNDU);
        for (Mpfr *x : {&low, &high}) mpfr_mul_2si(*x, *x, 7 - product.exponent, MPFR_RNDN);
        set(bits, product.bits);
        ASSERT_GE(mpfr_cmp(low, bits), 0) << p;
        mpfr_add_ui(bits, bits, product.below, MPFR_RNDN);
        ASSERT_LT(mpfr_cmp(high, bits), 0) << p;
        ASSERT_NE(static_cast<ub8>(product.bits >> 125), 0u) << p;
    }
}

}  // namespace
