// Every entry of the generated tables recomputed with MPFR.
#include "oci_calc_number/binary/tables.h"

#include <gmpxx.h>
#include <gtest/gtest.h>
#include "support/mpfr_value.h"

namespace {

using calc::u64;

constexpr mpfr_prec_t prec = 3000;

// Expects the `count` limbs at `entry` to be the fraction `value`, truncated.
void expect_entry(const char *table, size_t index, const u64 *entry, size_t count, mpfr_ptr value) {
    const auto bits = static_cast<unsigned long>(64 * count);
    mpz_class want, got;
    mpz_import(got.get_mpz_t(), count, -1, sizeof(u64), 0, 0, entry);
    mpfr_mul_2ui(value, value, bits, MPFR_RNDN);
    mpfr_get_z(want.get_mpz_t(), value, MPFR_RNDD);
    EXPECT_TRUE(want == got) << table << "[" << index << "]";
}

constexpr mpfr_rnd_t nearest = MPFR_RNDN;

// Rows of Width limbs, of which `count` from `first` on hold compute(row).
template <size_t Rows, size_t Width>
void expect_table(const char *name, const u64 (&table)[Rows][Width], size_t first, size_t count,
                  const auto &compute) {
    for (size_t i = 0; i < Rows; ++i) {
        Mpfr v(prec);
        compute(v, static_cast<long>(i));
        expect_entry(name, i, table[i] + first, count, v);
    }
}

#define EXPECT_TABLE(table, first, count, ...) \
    expect_table(#table, calc::table, first, count, [](mpfr_ptr v, long i) __VA_ARGS__)

void ratio(mpfr_ptr v, long num, unsigned bits) {
    mpfr_set_si_2exp(v, num, -static_cast<mpfr_exp_t>(bits), MPFR_RNDN);
}

void half(mpfr_ptr v) { mpfr_div_2ui(v, v, 1, nearest); }

// pi/2 * i / 2^9
void angle(mpfr_ptr v, long i) {
    mpfr_const_pi(v, nearest), mpfr_mul_si(v, v, i, nearest), mpfr_div_2ui(v, v, 10, nearest);
}

// (pi/2)^k / k! / 2
void half_pi_term(mpfr_ptr v, long k) {
    Mpfr divisor(prec);
    mpfr_fac_ui(divisor, static_cast<unsigned long>(k), nearest);
    mpfr_const_pi(v, nearest), half(v), mpfr_pow_si(v, v, k, nearest);
    mpfr_div(v, v, divisor, nearest), half(v);
}

// -ln of the entry's factor: the smallest c = n / 2^10 with c (1 + i / 2^8) >= 1, or 1 - g with
// g * 2^64 = floor(2^64 i / (2^(7 level) + i)).
template <size_t Rows>
void expect_ln_table(const char *name, const u64 (&table)[Rows][9], unsigned level) {
    for (size_t i = 0; i < Rows; ++i) {
        const u64 n = (1024 * 256 + 256 + i - 1) / (256 + i), step = u64{1} << (7 * level);
        const u64 g = calc::low((static_cast<calc::u128>(i) << 64) / (step + i));
        EXPECT_EQ(table[i][0], level == 1 ? n << 53 : g) << name << i;
        Mpfr factor(prec);
        mpfr_set_ui_2exp(factor, level == 1 ? n : g, level == 1 ? -10 : -64, nearest);
        if (level > 1) mpfr_ui_sub(factor, 1, factor, nearest);
        mpfr_log(factor, factor, nearest), mpfr_abs(factor, factor, nearest);
        expect_entry(name, i, table[i] + 1, 8, factor);
    }
}

void inverse(mpfr_ptr v, long n) { mpfr_set_si(v, n, nearest), mpfr_ui_div(v, 1, v, nearest); }

TEST(Tables, EveryEntryIsTheTruncatedValue) {
    EXPECT_TABLE(power_mantissa, 0, 16, {
        mpfr_set_ui(v, 10, nearest), mpfr_pow_si(v, v, 8 * (i + calc::min_power), nearest);
        EXPECT_EQ(mpfr_get_exp(v), calc::power_exp(static_cast<int>(i) + calc::min_power));
        mpfr_set_exp(v, 0);
    });
    EXPECT_TABLE(exp_high, 0, 4, { ratio(v, i, 8), mpfr_exp(v, v, nearest), half(v); });
    EXPECT_TABLE(exp_low, 0, 4, { ratio(v, i, 16), mpfr_expm1(v, v, nearest); });
    EXPECT_TABLE(exp_coefficient, 0, 4, {
        mpfr_fac_ui(v, static_cast<unsigned long>(i + 2), nearest), mpfr_ui_div(v, 1, v, nearest);
    });
    expect_ln_table("ln_level_1", calc::ln_level_1, 1);
    expect_ln_table("ln_level_2", calc::ln_level_2, 2);
    expect_ln_table("ln_level_3", calc::ln_level_3, 3);
    expect_ln_table("ln_level_4", calc::ln_level_4, 4);
    expect_ln_table("ln_level_5", calc::ln_level_5, 5);
    EXPECT_TABLE(ln_coefficient, 0, 8, { inverse(v, i + 2); });
    EXPECT_TABLE(turns, 0, 20, {
        Mpfr two_pi(prec);
        mpfr_const_pi(two_pi, nearest), mpfr_mul_2ui(two_pi, two_pi, 1, nearest);
        mpfr_set_ui(v, 10, nearest), mpfr_pow_si(v, v, 8 * (i + calc::min_turns), nearest);
        mpfr_div(v, v, two_pi, nearest), mpfr_frac(v, v, nearest);
    });
    EXPECT_TABLE(sin_cos_half, 0, 4, { angle(v, i), mpfr_sin(v, v, nearest), half(v); });
    EXPECT_TABLE(sin_cos_half, 4, 4, { angle(v, i), mpfr_cos(v, v, nearest), half(v); });
    EXPECT_TABLE(sine_coefficient, 0, 4, { half_pi_term(v, 2 * i + 1); });
    EXPECT_TABLE(versine_coefficient, 0, 4, { half_pi_term(v, 2 * i + 2); });
    EXPECT_TABLE(atan_level_1, 0, 4, { ratio(v, i, 8), mpfr_atan(v, v, nearest); });
    EXPECT_TABLE(atan_level_2, 0, 4, { ratio(v, i, 16), mpfr_atan(v, v, nearest); });
    EXPECT_TABLE(atan_level_3, 0, 4, { ratio(v, i, 24), mpfr_atan(v, v, nearest); });
    EXPECT_TABLE(atan_coefficient, 0, 4, { inverse(v, 2 * i + 3); });
    Mpfr v(prec);
    mpfr_const_log2(v, MPFR_RNDN);
    expect_entry("ln_2", 0, calc::ln_2, 16, v);
    mpfr_const_pi(v, MPFR_RNDN);
    mpfr_div_2ui(v, v, 2, MPFR_RNDN);
    expect_entry("quarter_pi", 0, calc::quarter_pi, 16, v);
}

}  // namespace
