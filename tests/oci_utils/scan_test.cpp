#include <gtest/gtest.h>
#include <mpfr.h>

#include <cfenv>
#include <clocale>
#include <vector>

#include "oci_utils/oci_utils.h"
#include "support/numbers.h"

namespace {

TEST(Scan, Integers) {
    for (const auto &[line, columns] : data_rows("integer_texts.txt")) {
        SCOPED_TRACE(line);
        // The digit behind the end does not count.
        std::string s = columns[0] + "9";
        char *const end = s.data() + columns[0].size(), *stop = end;
        int error = 7;
        EXPECT_EQ(my_strtoll10(s.data(), &stop, &error), std::stoll(columns[1]));
        EXPECT_EQ(error, std::stoi(columns[2]));
        EXPECT_EQ(stop, end);
    }
}

// A failed comparison names the text and the rounding mode of the scan.
void check_real(const std::string &s, int mode) {
    std::vector<char> exact(s.begin(), s.end());
    int error = 7;
    std::fesetround(mode);
    const long double value = qz_atold(exact.data(), exact.data() + exact.size(), &error);
    std::fesetround(FE_TONEAREST);
    mpfr_t expected;
    mpfr_init2(expected, LDBL_MANT_DIG);
    mpfr_set_str(expected, s.c_str(), 10, MPFR_RNDN);
    EXPECT_EQ(error, 0) << s << " mode " << mode;
    EXPECT_EQ(value, mpfr_get_ld(expected, MPFR_RNDN)) << s << " mode " << mode;
    mpfr_clear(expected);
}

// Nearest long double under a comma locale and in every rounding mode.
TEST(Scan, Reals) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    auto random = seeded();
    for (int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        for (long i = random_cases(4000); i > 0 && !HasFailure(); --i) {
            std::string s;
            for (size_t k = 1 + random() % (random() % 8 ? 45 : 1000); k > 0; --k) {
                s += static_cast<char>('0' + random() % 10);
            }
            s.insert(random() % (s.size() + 1), ".");
            check_real(random() % 2 ? "-" + s : s, mode);
        }
        // Ties between two long doubles, and just beside them.
        for (const char *s : {"18446744073709551617", "18446744073709551619",
                              "9223372036854775808.5", "9223372036854775809.5",
                              "36893488147419103230.000000000000000000000000000000000000000001",
                              "36893488147419103234.0", "-36893488147419103233.99999999999999999",
                              ".5", "-.25", "5.", "0", "-0.0", "1"}) {
            check_real(s, mode);
        }
    }
    std::setlocale(LC_ALL, "C");
}

TEST(Scan, NotReals) {
    const auto scan = [](const std::string &s) {
        int error = 7;
        const long double value = qz_atold(s.data(), s.data() + s.size(), &error);
        EXPECT_TRUE(error == 0 || value == 0.0L) << s;
        return error;
    };
    for (const char *s :
         {"", "-", ".", "-.", "1.2.3", "1e5", "+1", " 1", "1 ", "inf", "nan", "1,5"}) {
        EXPECT_EQ(scan(s), 1) << s;
    }
    const std::string longest = std::string(2000, '0') + std::string(1024, '1');
    EXPECT_EQ(scan(longest), 0);
    EXPECT_EQ(scan(longest + "1"), 1);
}

}  // namespace
