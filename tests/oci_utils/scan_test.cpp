#include <clocale>
#include <cmath>

#include "oci_utils/oci_utils.h"
#include "support/guard_page.h"
#include "support/mpfr_value.h"
#include "support/surroundings.h"
#include "support/values.h"

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

// The nearest long double in all surroundings; 0 where the text is none.
void check_real(const std::string &s, bool refused = false) {
    const GuardedBytes exact(s);
    Mpfr expected(real_digits, refused ? "0" : s);
    if (!has_long_double && mpfr_zero_p(expected) == 0 &&
        !std::isnormal(mpfr_get_d(expected, MPFR_RNDN)))
        return;
    for (long i = 0; i < Surroundings::count; ++i) {
        int error = 7;
        const long double value = [&] {
            const Surroundings set(i);
            return qz_atold(exact.as<char>(), exact.as<char>() + s.size(), &error);
        }();
        EXPECT_EQ(error, refused) << s << " in " << i;
        EXPECT_EQ(value, mpfr_get_ld(expected, MPFR_RNDN)) << s << " in " << i;
    }
}

// Under a comma locale.
TEST(Scan, Reals) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    for (const auto &[line, columns] : data_rows("reals.txt")) {
        check_real(columns[0], columns.size() > 1);
    }
    auto random = seeded();
    for (long i = random_cases(4000); i > 0 && !HasFailure(); --i) {
        std::string s = random_digits(random, 1 + random() % (random() % 8 ? 45 : 1000));
        s.insert(random() % (s.size() + 1), ".");
        check_real(random() % 2 ? "-" + s : s);
    }
    std::setlocale(LC_ALL, "C");
}

}  // namespace
