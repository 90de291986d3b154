#include <cfloat>
#include <clocale>
#include <cmath>
#include <limits>

#include "support/guard_page.h"
#include "support/mpfr_value.h"
#include "support/surroundings.h"
#include "support/values.h"

namespace {

// The process as a careless program may leave it: a comma locale, and surroundings during calls.
class RealConvert : public ::testing::Test {
protected:
    RealConvert() {
        std::setlocale(LC_ALL, "de_DE.UTF-8");
        EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    }
    ~RealConvert() override { std::setlocale(LC_ALL, "C"); }
};

// A real as exact bits: those of a long double, by value.
std::string hex(long double value) { return text("%La", value); }

// ---- Number to real

// The stored real; "overflow", or "refused" without an error. Number and real end at the
// ends of pages.
template <class Real>
std::string to_real(const OCINumber &n, long surroundings) {
    const GuardedBytes record(&n, sizeof n);
    const std::string unwritten(sizeof(Real), '#');
    const GuardedBytes rsl(unwritten);
    ErrorHandle err;
    const sword status = [&] {
        const Surroundings set(surroundings);
        return OCINumberToReal(err, record.as<OCINumber>(), sizeof(Real), rsl.address());
    }();
    take_log();
    const std::string stored(rsl.as<char>(), sizeof(Real));
    if (status != OCI_SUCCESS) {
        EXPECT_EQ(stored, unwritten);
        return err.message() == "float value is overflow" ? "overflow" : err.message() + "refused";
    }
    // An 80-bit real has ten bytes; the others are zero.
    if (sizeof(Real) == 16 && real_digits == 64) EXPECT_EQ(stored.substr(10), std::string(6, '\0'));
    Real value;
    std::memcpy(&value, rsl.address(), sizeof value);
    return hex(value);
}

TEST_F(RealConvert, ToRealResults) {
    for (const auto &[line, c] : data_rows("real_convert.txt")) {
        if (c[0] != "to") continue;
        SCOPED_TRACE(line);
        const OCINumber n = from_text(c[1]);
        const auto check = [&n]<class Real>(Real, const std::string &s) {
            const std::string expected =
                s == "overflow" || s == "refused" ? s : hex(parsed<Real>(s));
            for (long i = 0; i < Surroundings::count; ++i) EXPECT_EQ(to_real<Real>(n, i), expected);
        };
        check(float(), c[2]);
        check(double(), c[3]);
        if (has_long_double) check(0.0L, c[4]);
    }
    for (const char *bad : {"00", "16C102", "0105"}) {
        EXPECT_EQ(to_real<double>(::hex(bad), 0), "refused");
    }
}

// The nearest long double of the decimal rounded to `places`, converted.
template <class Real>
std::string exact_real(const Decimal &value, long places) {
    Mpfr wide(real_digits, value.rounded(-places).plain()),
        narrow(std::numeric_limits<Real>::digits);
    mpfr_set(narrow, wide, MPFR_RNDN);
    if (mpfr_zero_p(narrow) != 0) mpfr_setsign(narrow, narrow, value.sign() < 0, MPFR_RNDN);
    const bool beyond = std::is_same_v<Real, float> &&
                        (mpfr_cmp_d(wide, FLT_MAX) > 0 || mpfr_cmp_d(wide, -FLT_MAX) < 0);
    return beyond ? "overflow" : hex(mpfr_get_ld(narrow, MPFR_RNDN));
}

TEST_F(RealConvert, RandomNumbersToReal) {
    auto random = seeded();
    for (long i = random_cases(8000); i > 0; --i) {
        const Decimal value = random_value(random);
        SCOPED_TRACE(value.plain());
        if (value.plain().size() > 128) continue;
        const OCINumber n = number(value.bytes());
        ASSERT_EQ(to_real<float>(n, i), exact_real<float>(value, 6));
        ASSERT_EQ(to_real<double>(n, i), exact_real<double>(value, 15));
        if (has_long_double)
            ASSERT_EQ(to_real<long double>(n, i), exact_real<long double>(value, 18));
    }
}

TEST_F(RealConvert, Arrays) {
    const OCINumber one = from_text("1"), half = from_text("-0.5");
    const OCINumber *numbers[] = {&one, &half, nullptr, &one};
    double rsl[] = {7, 7, 7, 7};
    ErrorHandle err;
    EXPECT_EQ(OCINumberToRealArray(err, numbers, 4, 8, rsl), OCI_ERROR);
    EXPECT_TRUE(std::ranges::equal(rsl, std::vector{1., -0.5, 7., 7.}));
    take_log();
}

// ---- Real to number

// The number of a real, none where it is refused, and the first line behind the call's and the
// allocator's.
struct FromReal {
    Bytes bytes;
    std::string printed;
};

FromReal from_real(const void *real, uword length, long surroundings = 0) {
    const GuardedBytes bytes(real, length);
    const OCINumber unwritten = number({});
    const GuardedBytes record(&unwritten, sizeof unwritten);
    ErrorHandle err;
    take_log();
    const sword status = [&] {
        const Surroundings set(surroundings);
        return OCINumberFromReal(err, bytes.address(), length, record.as<OCINumber>());
    }();
    const std::string printed = take_log().at(2);
    if (status == OCI_SUCCESS) return {value_bytes(*record.as<OCINumber>()), printed};
    EXPECT_EQ(*record.as<OCINumber>(), unwritten);
    EXPECT_EQ(err.code(), 0);
    return {{}, printed};
}

TEST_F(RealConvert, FromRealResults) {
    for (const auto &[line, c] : data_rows("real_convert.txt")) {
        if (c[0] != "from") continue;
        SCOPED_TRACE(line);
        const auto check = [&expected = c[3]](auto value) {
            for (long k = 0; k < Surroundings::count; ++k) {
                EXPECT_EQ(from_real(&value, sizeof value, k).bytes, bytes_of(expected));
            }
        };
        if (c[1] == "float") check(parsed<float>(c[2]));
        if (c[1] == "double") check(parsed<double>(c[2]));
        if (c[1] == "long" && has_long_double) check(parsed<long double>(c[2]));
    }
}

// Random bits of each type, every second time with an exponent near the range of
// numbers: the printed text and the number against MPFR's digits.
template <class Real>
void check_random_bits(unsigned decimals) {
    auto random = seeded();
    for (long i = random_cases(6000); i > 0; --i) {
        Real value;
        ub8 bits[2] = {random(), random()};
        std::memcpy(&value, bits, sizeof value);
        if (i % 2 == 0) {
            int exponent;
            const Real mantissa = std::frexp(value, &exponent);
            value = std::ldexp(mantissa, static_cast<int>(random() % 900) - 450);
        }
        // Patterns of the long double without its units bit hold no value.
        if (!std::isfinite(value) || value == 0) continue;
        SCOPED_TRACE(hex(value));
        Mpfr exact(real_digits);
        mpfr_set_ld(exact, value, MPFR_RNDN);
        mpfr_exp_t exponent;
        const std::string digits = exact.digits(decimals + 1, exponent);
        const std::string sign = value < 0 ? "-" : "", d = digits.substr(sign.size());
        const FromReal result = from_real(&value, sizeof value, i / 2);
        ASSERT_EQ(result.printed,
                  text("D covert real to string: %s%c.%s buffer_size:%zu number_exp:%ld",
                       sign.c_str(), d[0], d.c_str() + 1, sign.size() + 2 + decimals, exponent));
        const long unit = exponent - decimals + 1;
        const Decimal expected = Decimal(sign + d.substr(0, decimals), unit).rounded(unit + 1);
        ASSERT_EQ(result.bytes, expected.bytes());
    }
}

TEST_F(RealConvert, RandomBits) {
    check_random_bits<float>(7);
    check_random_bits<double>(16);
    if (has_long_double) check_random_bits<long double>(19);
    if (real_digits != 64) return;
    // Bits without a value, and the denormal with a units bit, which has one.
    const ub8 unnormal[2] = {ub8{1} << 62, 0x4000}, pseudo_infinity[2] = {0, 0x7fff};
    const ub8 pseudo_denormal[2] = {~ub8{0}, 0x8000};
    EXPECT_EQ(from_real(unnormal, 16).bytes, Bytes{});
    EXPECT_EQ(from_real(pseudo_infinity, 16).bytes, Bytes{});
    EXPECT_EQ(from_real(pseudo_denormal, 16).printed,
              "D covert real to string: -6.7242062862241870122 buffer_size:22 number_exp:-4932");
}

}  // namespace
