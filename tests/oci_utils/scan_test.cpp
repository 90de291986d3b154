#include <gtest/gtest.h>
#include <mpfr.h>

#include <cfenv>
#include <clocale>
#include <vector>

#include "oci_utils/oci_utils.h"
#include "support/numbers.h"

namespace {

TEST(Scan, Integers) {
    const struct {
        const char *text;
        size_t length;
        long long value;
        int error;
    } rows[] = {
        {"12.9", 4, 12, 0},
        {"-0.5", 4, 0, 0},
        {"+7", 2, 7, 0},
        {"-7x", 3, -7, -1},
        {"12345", 3, 123, 0},
        {"", 0, 0, 33},
        {"-", 1, 0, 33},
        {".5", 2, 0, 33},
        {" 1", 2, 0, 33},
        {"9223372036854775807", 19, 9223372036854775807, 0},
        {"9223372036854775808", 19, -9223372036854775807 - 1, 0},
        {"18446744073709551615", 20, -1, 0},
        {"18446744073709551616", 20, 0, 34},
        {"99999999999999999999999", 23, 0, 34},
        {"-9223372036854775808", 20, -9223372036854775807 - 1, -1},
        {"-9223372036854775809", 20, 0, 34},
        {"00000000000000000000000000012", 29, 12, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        std::vector<char> exact(row.text, row.text + row.length);
        char *end = exact.data() + row.length;
        int error = 7;
        EXPECT_EQ(my_strtoll10(exact.data(), &end, &error), row.value);
        EXPECT_EQ(error, row.error);
    }
}

bool scans_as_mpfr(const std::string &s) {
    std::vector<char> exact(s.begin(), s.end());
    int error = 7;
    const long double value = qz_atold(exact.data(), exact.data() + exact.size(), &error);
    mpfr_t expected;
    mpfr_init2(expected, LDBL_MANT_DIG);
    mpfr_set_str(expected, s.c_str(), 10, MPFR_RNDN);
    const bool same = error == 0 && value == mpfr_get_ld(expected, MPFR_RNDN);
    mpfr_clear(expected);
    return same;
}

// Nearest long double under a comma locale and in every rounding mode.
TEST(Scan, Reals) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    auto random = seeded();
    for (int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        for (long i = random_cases(4000); i > 0; --i) {
            std::string s = random() % 2 ? "-" : "";
            const size_t length = 1 + random() % (random() % 8 ? 45 : 1000);
            const size_t point = random() % (length + 1);
            for (size_t k = 0; k < length; ++k) {
                if (k == point) s += '.';
                s += static_cast<char>('0' + random() % 10);
            }
            std::fesetround(mode);
            const bool same = scans_as_mpfr(s);
            std::fesetround(FE_TONEAREST);
            ASSERT_TRUE(same) << s << " mode " << mode;
        }
        // Ties between two long doubles, and just beside them.
        for (const char *s : {"18446744073709551617", "18446744073709551619",
                              "9223372036854775808.5", "9223372036854775809.5",
                              "36893488147419103230.000000000000000000000000000000000000000001",
                              "36893488147419103234.0", "-36893488147419103233.99999999999999999",
                              ".5", "-.25", "5.", "0", "-0.0", "1"}) {
            std::fesetround(mode);
            const bool same = scans_as_mpfr(s);
            std::fesetround(FE_TONEAREST);
            EXPECT_TRUE(same) << s << " mode " << mode;
        }
    }
    std::setlocale(LC_ALL, "C");
}

TEST(Scan, NotReals) {
    for (const std::string s :
         {"", "-", ".", "-.", "1.2.3", "1e5", "+1", " 1", "1 ", "inf", "nan", "1,5"}) {
        int error = 0;
        EXPECT_EQ(qz_atold(s.data(), s.data() + s.size(), &error), 0.0L);
        EXPECT_NE(error, 0) << s;
    }
    int error = 0;
    const std::string longest = std::string(2000, '0') + std::string(1024, '1');
    qz_atold(longest.data(), longest.data() + longest.size(), &error);
    EXPECT_EQ(error, 0);
    const std::string longer = longest + "1";
    qz_atold(longer.data(), longer.data() + longer.size(), &error);
    EXPECT_NE(error, 0);
}

}  // namespace
