// Every entry of the generated tables recomputed with MPFR, and the generator run again.
#include "oci_calc_number/binary/tables.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using calc::u64;

constexpr mpfr_prec_t prec = 3000;

struct Number {
    Number() { mpfr_init2(v, prec); }
    explicit Number(long n) : Number() { mpfr_set_si(v, n, MPFR_RNDN); }
    ~Number() { mpfr_clear(v); }
    Number(const Number &) = delete;
    mpfr_t v;
};

// Expects the `count` limbs at `entry` to be the fraction `value`, truncated.
void expect_entry(const char *table, size_t index, const u64 *entry, size_t count, mpfr_ptr value) {
    const auto bits = static_cast<unsigned long>(64 * count);
    mpz_t want, got;
    mpz_inits(want, got, nullptr);
    mpz_import(got, count, -1, sizeof(u64), 0, 0, entry);
    mpfr_mul_2ui(value, value, bits, MPFR_RNDN);
    mpfr_get_z(want, value, MPFR_RNDD);
    EXPECT_EQ(mpz_cmp(want, got), 0) << table << "[" << index << "]";
    mpz_clears(want, got, nullptr);
}

constexpr mpfr_rnd_t nearest = MPFR_RNDN;

// Rows of Width limbs, of which `count` from `first` on hold compute(row).
template <size_t Rows, size_t Width>
void expect_table(const char *name, const u64 (&table)[Rows][Width], size_t first, size_t count,
                  const auto &compute) {
    for (size_t i = 0; i < Rows; ++i) {
        Number v;
        compute(v.v, static_cast<long>(i));
        expect_entry(name, i, table[i] + first, count, v.v);
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
    Number divisor;
    mpfr_fac_ui(divisor.v, static_cast<unsigned long>(k), nearest);
    mpfr_const_pi(v, nearest), half(v), mpfr_pow_si(v, v, k, nearest);
    mpfr_div(v, v, divisor.v, nearest), half(v);
}

// -ln of the entry's factor, c * 2^63 or 1 - g * 2^-64.
template <size_t Rows>
void expect_ln_table(const char *name, const u64 (&table)[Rows][9], unsigned level) {
    for (size_t i = 0; i < Rows; ++i) {
        Number factor, bound;
        const auto index = static_cast<unsigned long>(i);
        if (level == 1) {  // the smallest multiple of 2^-10 with c (1 + i/2^8) >= 1
            const unsigned long c = (1024 * 256 + 256 + index - 1) / (256 + index);
            EXPECT_EQ(table[i][0], c << 53) << i;
            mpfr_set_ui_2exp(factor.v, c, -10, MPFR_RNDN);
        } else {  // g * 2^64 = floor(2^64 j / (2^(7 level) + j))
            const u64 step = u64{1} << (7 * level);
            EXPECT_EQ(table[i][0],
                      calc::low((static_cast<calc::u128>(index) << 64) / (step + index)))
                << i;
            mpfr_set_ui_2exp(factor.v, table[i][0], -64, MPFR_RNDN);
            mpfr_ui_sub(factor.v, 1, factor.v, MPFR_RNDN);
        }
        mpfr_log(factor.v, factor.v, MPFR_RNDN);
        mpfr_abs(factor.v, factor.v, MPFR_RNDN);
        expect_entry(name, i, table[i] + 1, 8, factor.v);
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
        Number two_pi;
        mpfr_const_pi(two_pi.v, nearest), mpfr_mul_2ui(two_pi.v, two_pi.v, 1, nearest);
        mpfr_set_ui(v, 10, nearest), mpfr_pow_si(v, v, 8 * (i + calc::min_turns), nearest);
        mpfr_div(v, v, two_pi.v, nearest), mpfr_frac(v, v, nearest);
    });
    EXPECT_TABLE(sin_cos_half, 0, 4, { angle(v, i), mpfr_sin(v, v, nearest), half(v); });
    EXPECT_TABLE(sin_cos_half, 4, 4, { angle(v, i), mpfr_cos(v, v, nearest), half(v); });
    EXPECT_TABLE(sine_coefficient, 0, 4, { half_pi_term(v, 2 * i + 1); });
    EXPECT_TABLE(versine_coefficient, 0, 4, { half_pi_term(v, 2 * i + 2); });
    EXPECT_TABLE(atan_level_1, 0, 4, { ratio(v, i, 8), mpfr_atan(v, v, nearest); });
    EXPECT_TABLE(atan_level_2, 0, 4, { ratio(v, i, 16), mpfr_atan(v, v, nearest); });
    EXPECT_TABLE(atan_level_3, 0, 4, { ratio(v, i, 24), mpfr_atan(v, v, nearest); });
    EXPECT_TABLE(atan_coefficient, 0, 4, { inverse(v, 2 * i + 3); });
    Number v;
    mpfr_const_log2(v.v, MPFR_RNDN);
    expect_entry("ln_2", 0, calc::ln_2, 16, v.v);
    mpfr_const_pi(v.v, MPFR_RNDN);
    mpfr_div_2ui(v.v, v.v, 2, MPFR_RNDN);
    expect_entry("quarter_pi", 0, calc::quarter_pi, 16, v.v);
}

std::string contents(const std::filesystem::path &path) {
    std::ostringstream s;
    s << std::ifstream(path, std::ios::binary).rdbuf();
    return s.str();
}

TEST(Tables, GeneratorWritesTheFilesOfTheTree) {
    namespace fs = std::filesystem;
    const fs::path source = OCI_NUMBER_SOURCE_DIR;
    const fs::path scratch = fs::path(testing::TempDir()) / "oci_number_tables";
    fs::create_directories(scratch);
    const std::string command = "python3 '" + (source / "tools/tables/generate.py").string() +
                                "' '" + scratch.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    int files = 0;
    for (const auto &file : fs::directory_iterator(source / "src/oci_calc_number/binary/tables")) {
        EXPECT_EQ(contents(file.path()), contents(scratch / file.path().filename())) << file.path();
        ++files;
    }
    EXPECT_EQ(files, 5);
    fs::remove_all(scratch);
}

}  // namespace
