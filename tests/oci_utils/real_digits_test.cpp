#include "oci_utils/oci_utils.h"
#include "support/mpfr_value.h"
#include "support/values.h"

namespace {

// Digits and decimal exponent as "d...d e".
std::string digits_of(ub8 mantissa, int exponent, unsigned count) {
    char digits[20];
    const int decimal_exponent = qz_decimal_digits(mantissa, exponent, count, digits);
    return std::string(digits, count) + " " + std::to_string(decimal_exponent);
}

TEST(RealDigits, Known) {
    for (const auto &[line, c] : data_rows("real_digits.txt")) {
        EXPECT_EQ(digits_of(std::stoull(c[0], nullptr, 0), std::stoi(c[1]),
                            static_cast<unsigned>(std::stoul(c[2]))),
                  c[3] + " " + c[4])
            << line;
    }
}

// Ties and their next neighbours, above and below the point, where the table
// cannot tell and exact arithmetic decides.
TEST(RealDigits, Ties) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        // t / 2^k ends in a 5 at its last place; so does t * 5^j * 2^(j-1).
        const int places = between(random, -12, 11), exponent = places - 1;
        ub8 t = (random() >> (30 + random() % 30)) | 1;
        for (int j = 0; j < places; ++j) t *= 5;
        if (t >> 62 != 0) continue;
        mpz_class exact = t;
        for (int k = exponent; k < 0; ++k) exact *= 5;
        for (int k = exponent; k > 0; --k) exact *= 2;
        const std::string all = exact.get_str();
        const auto count = static_cast<unsigned>(all.find_last_not_of('0'));
        ASSERT_EQ(all[count], '5');
        if (count < 2 || count > 20) continue;
        for (const ub8 near : {t, (t << 2) - 1, (t << 2) + 1}) {
            const int scale = near == t ? exponent : exponent - 2;
            Mpfr value(64);
            mpfr_set_ui_2exp(value, near, scale, MPFR_RNDN);
            mpfr_exp_t first;
            const std::string digits = value.digits(count, first);
            ASSERT_EQ(digits_of(near, scale, count), digits + " " + std::to_string(first))
                << near << " * 2^" << scale << " to " << count;
        }
    }
}

}  // namespace
