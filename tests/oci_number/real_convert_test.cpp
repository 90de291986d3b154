#include <mpfr.h>

#include <cfenv>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <limits>
#include <regex>

#include "support/guard_page.h"
#include "support/values.h"

namespace {

constexpr int rounding_modes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

// The process as a careless program may leave it: a comma locale, and a rounding
// mode during calls.
class RealConvert : public ::testing::Test {
protected:
    RealConvert() {
        std::setlocale(LC_ALL, "de_DE.UTF-8");
        EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    }
    ~RealConvert() override { std::setlocale(LC_ALL, "C"); }
};

template <class Call>
sword rounded(int mode, Call call) {
    std::fesetround(mode);
    const sword status = call();
    std::fesetround(FE_TONEAREST);
    return status;
}

// A real as exact bits: those of a long double, by value.
template <class Real>
std::string hex(Real value) {
    return text("%La", static_cast<long double>(value));
}

// ---- Number to real

// The stored real; "failed" and the error. Number and real end at the ends of pages.
template <class Real>
std::string to_real(const OCINumber &n, int mode = FE_TONEAREST) {
    const GuardedBytes record(&n, sizeof n);
    const GuardedBytes rsl(std::string(sizeof(Real), '#'));
    ErrorHandle err;
    const sword status = rounded(mode, [&] {
        return OCINumberToReal(err, record.as<OCINumber>(), sizeof(Real), rsl.address());
    });
    if (status != OCI_SUCCESS) {
        EXPECT_EQ(std::string(rsl.as<char>(), sizeof(Real)), std::string(sizeof(Real), '#'));
        return text("failed %d %s", err.code(), err.message().c_str());
    }
    Real value;
    std::memcpy(&value, rsl.address(), sizeof value);
    return hex(value);
}

TEST_F(RealConvert, ToRealResults) {
    const std::string too_large = "failed 602 float value is overflow";
    const struct {
        std::string number, as_float, as_double, as_long_double;
    } rows[] = {
        {"0", hex(0.0f), hex(0.0), hex(0.0L)},
        {"1.5", hex(1.5f), hex(1.5), hex(1.5L)},
        {"-0.1", hex(-0.1f), hex(-0.1), hex(-0.1L)},
        {"0.000123456789", hex(0.000123f), hex(0.000123456789), hex(0.000123456789L)},
        {"0.0000001", hex(0.0f), hex(1e-7), hex(1e-7L)},
        {"0.0000005", hex(0.000001f), hex(5e-7), hex(5e-7L)},
        {"-0.0000004", hex(-0.0f), hex(-4e-7), hex(-4e-7L)},
        {"0.00000000000000049", hex(0.0f), hex(0.0), hex(4.9e-16L)},
        {"0.0000000000000005", hex(0.0f), hex(1e-15), hex(5e-16L)},
        {"123456789.9999995", hex(123456790.0f), hex(123456789.9999995), hex(123456789.9999995L)},
        {"1" + std::string(39, '0'), too_large, hex(1e39), hex(1e39L)},
        {"340282346638528859811704183484516925440", hex(FLT_MAX), hex(double{FLT_MAX}),
         hex(static_cast<long double>(FLT_MAX))},
        {"-340282346638528859900000000000000000000", too_large, hex(-double{FLT_MAX}),
         hex(-340282346638528859900000000000000000000.0L)},
        {"9" + std::string(125, '0'), too_large, hex(9e125), hex(9e125L)},
        {"inf", hex(FLT_MAX), hex(1e126), hex(static_cast<long double>(1e126))},
        {"-inf", hex(-FLT_MAX), hex(-1e126), hex(static_cast<long double>(-1e126))},
        {"0." + std::string(127, '0') + "1", "failed 0 ", "failed 0 ", "failed 0 "},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.number);
        for (const int mode : rounding_modes) {
            const OCINumber n = from_text(row.number);
            EXPECT_EQ(to_real<float>(n, mode), row.as_float);
            EXPECT_EQ(to_real<double>(n, mode), row.as_double);
            EXPECT_EQ(to_real<long double>(n, mode), row.as_long_double);
        }
    }
    for (const OCINumber &bad : {number({0}), number({22, 193, 2}), number({1, 5})}) {
        EXPECT_EQ(to_real<double>(bad), "failed 0 ");
    }
    take_log();
}

// The nearest long double of the decimal rounded to `places`, converted.
template <class Real>
std::string exact_real(const Decimal &value, long places) {
    mpfr_t wide, narrow;
    mpfr_init2(wide, 64);
    mpfr_init2(narrow, std::numeric_limits<Real>::digits);
    mpfr_set_str(wide, value.rounded(-places).plain().c_str(), 10, MPFR_RNDN);
    mpfr_set(narrow, wide, MPFR_RNDN);
    if (mpfr_zero_p(narrow)) mpfr_setsign(narrow, narrow, value.sign() < 0, MPFR_RNDN);
    const long double result = mpfr_get_ld(narrow, MPFR_RNDN);
    const bool beyond = std::is_same_v<Real, float> &&
                        (mpfr_cmp_d(wide, FLT_MAX) > 0 || mpfr_cmp_d(wide, -FLT_MAX) < 0);
    mpfr_clear(wide);
    mpfr_clear(narrow);
    return beyond ? "failed 602 float value is overflow" : hex(result);
}

TEST_F(RealConvert, RandomNumbersToReal) {
    auto random = seeded();
    for (long i = random_cases(8000); i > 0; --i) {
        const Decimal value = random_value(random);
        SCOPED_TRACE(value.plain());
        if (value.plain().size() > 128) continue;
        const OCINumber n = number(value.bytes());
        const int mode = rounding_modes[i % 4];
        ASSERT_EQ(to_real<float>(n, mode), exact_real<float>(value, 6));
        ASSERT_EQ(to_real<double>(n, mode), exact_real<double>(value, 15));
        ASSERT_EQ(to_real<long double>(n, mode), exact_real<long double>(value, 18));
        take_log();
    }
}

TEST_F(RealConvert, Arrays) {
    const OCINumber one = from_text("1"), half = from_text("-0.5");
    const OCINumber *numbers[] = {&one, &half, nullptr, &one};
    std::vector<double> rsl(4, 7);
    ErrorHandle err;
    EXPECT_EQ(OCINumberToRealArray(err, numbers, 4, 8, rsl.data()), OCI_ERROR);
    EXPECT_EQ(rsl, (std::vector<double>{1, -0.5, 7, 7}));
    EXPECT_EQ(OCINumberToRealArray(err, numbers, 2, 8, rsl.data() + 2), OCI_SUCCESS);
    EXPECT_EQ(rsl, (std::vector<double>{1, -0.5, 1, -0.5}));
    take_log();
}

// ---- Real to number

struct FromReal {
    sword status;
    int code;
    OCINumber number;
    std::string log;  // without the call's and its result's line
};

FromReal from_real(const void *real, uword length, int mode = FE_TONEAREST) {
    const GuardedBytes bytes(real, length);
    const OCINumber unwritten = number({});
    const GuardedBytes record(&unwritten, sizeof unwritten);
    ErrorHandle err;
    take_log();
    heap.tags.clear();
    const sword status = rounded(mode, [&] {
        return OCINumberFromReal(err, bytes.address(), length, record.as<OCINumber>());
    });
    std::string log;
    for (const std::string &line : take_log()) log += line + "\n";
    const size_t first = log.find('\n') + 1;
    const std::string end = text("D function OCINumberFromReal return with status %d\n", status);
    EXPECT_EQ(log.find(end), log.size() - end.size());
    EXPECT_EQ(heap.live, 0);
    return {status, err.code(), *record.as<OCINumber>(),
            log.substr(first, log.size() - end.size() - first)};
}

TEST_F(RealConvert, FromRealResults) {
    const auto check = [](auto value, const char *expected) {
        SCOPED_TRACE(expected);
        for (const int mode : rounding_modes) {
            const FromReal result = from_real(&value, sizeof value, mode);
            EXPECT_EQ(result.status, OCI_SUCCESS);
            EXPECT_EQ(value_bytes(result.number), value_bytes(from_text(expected)));
        }
    };
    check(1.2345678f, "1.23457");
    check(9.9999999f, "10");
    check(9.9999951f, "10");
    check(0.1, "0.1");
    check(-0.1, "-0.1");
    check(1e23, "100000000000000000000000");
    check(0.0, "0");
    check(-0.0, "0");
    check(0.0L, "0");
    check(1.5L, "1.5");
    check(123456789012345678.0L, "123456789012345678");
    check(999999999999999.5, "1000000000000000");
    check(1.00000000000000049, "1");
    check(INFINITY, "inf");
    check(-HUGE_VAL, "-inf");
    check(-HUGE_VALL, "-inf");
    check(1e300, "inf");
    check(-1e300, "-inf");
    check(1e-300, "0");
    check(LDBL_MAX, "inf");
    check(-DBL_TRUE_MIN, "0");
    for (const double nan : {NAN, -NAN}) {
        const OCINumber untouched = number({});
        const auto f = static_cast<float>(nan);
        const auto l = static_cast<long double>(nan);
        for (const FromReal &result : {from_real(&nan, 8), from_real(&f, 4), from_real(&l, 16)}) {
            EXPECT_EQ(result.status, OCI_ERROR);
            EXPECT_EQ(result.code, 0);
            EXPECT_EQ(result.number, untouched);
        }
    }
}

TEST_F(RealConvert, FromRealTraces) {
    const auto check = [](auto value, const char *tag, const char *printed, const char *kept) {
        const std::string shift =
            std::isfinite(value) ? "D function OCINumberShift return with status 0\n" : "";
        const std::string log = std::regex_replace(from_real(&value, sizeof value).log,
                                                   std::regex("D call OCINumberShift.*\n"), "");
        EXPECT_EQ(log, (*printed ? text("D covert real to string: %s\n", printed) : "") +
                           text("D after carry, covert real to string: %s\n", kept) + shift);
        EXPECT_EQ(heap.tags, std::vector<std::string>{tag});
    };
    check(0.1, "OCINumberFromReal 8:23", "1.0000000000000001 buffer_size:18 number_exp:-1",
          "1.00000000000000 buffer_size:16 number_exp:-1");
    check(-0.0, "OCINumberFromReal 8:24", "-0.0000000000000000 buffer_size:19 number_exp:0",
          "-0.000000000000000 buffer_size:18 number_exp:0");
    check(-9.999997f, "OCINumberFromReal 4:15", "-9.9999971 buffer_size:10 number_exp:0",
          "-1.00000 buffer_size:8 number_exp:1");
    check(-LDBL_MAX, "OCINumberFromReal 16:29",
          "-1.1897314953572317650 buffer_size:22 number_exp:4932",
          "-1.18973149535723177 buffer_size:20 number_exp:4932");
    check(1e999L, "OCINumberFromReal 16:27", "1.0000000000000000000 buffer_size:21 number_exp:999",
          "1.00000000000000000 buffer_size:19 number_exp:999");
    check(-HUGE_VAL, "OCINumberFromReal 8:5", "", "-inf buffer_size:5 number_exp:0");
    check(NAN, "OCINumberFromReal 4:4", "", "nan buffer_size:4 number_exp:0");

    const double tenth = 0.1;
    heap.fail = true;
    const FromReal result = from_real(&tenth, 8);
    heap.fail = false;
    EXPECT_EQ(result.code, 602);
    EXPECT_EQ(result.log, "E malloc error in OCINumberFromReal\n");
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
        mpfr_t exact;
        mpfr_init2(exact, 64);
        mpfr_set_ld(exact, value, MPFR_RNDN);
        mpfr_exp_t exponent;
        char digits[32];
        mpfr_get_str(digits, &exponent, 10, decimals + 1, exact, MPFR_RNDN);
        mpfr_clear(exact);
        --exponent;
        const std::string sign = value < 0 ? "-" : "", d = digits + (value < 0);
        const FromReal result = from_real(&value, sizeof value, rounding_modes[i / 2 % 4]);
        ASSERT_EQ(result.log.substr(0, result.log.find('\n')),
                  text("D covert real to string: %s%c.%s buffer_size:%zu number_exp:%ld",
                       sign.c_str(), d[0], d.c_str() + 1, sign.size() + 2 + decimals, exponent));
        const long unit = exponent - decimals + 1;
        const Decimal expected = Decimal(sign + d.substr(0, decimals), unit).rounded(unit + 1);
        ASSERT_EQ(value_bytes(result.number), result_bytes(expected));
    }
}

TEST_F(RealConvert, RandomBits) {
    check_random_bits<float>(7);
    check_random_bits<double>(16);
    check_random_bits<long double>(19);
    // Bits without a value, and the denormal with a units bit, which has one.
    const ub8 unnormal[2] = {ub8{1} << 62, 0x4000}, pseudo_infinity[2] = {0, 0x7fff};
    const ub8 pseudo_denormal[2] = {~ub8{0}, 0x8000};
    EXPECT_EQ(from_real(unnormal, 16).status, OCI_ERROR);
    EXPECT_EQ(from_real(pseudo_infinity, 16).status, OCI_ERROR);
    EXPECT_EQ(from_real(pseudo_denormal, 16)
                  .log.find("D covert real to string: -6.7242062862241870122 buffer_size:22 "
                            "number_exp:-4932\n"),
              0u);
}

}  // namespace
