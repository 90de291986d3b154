// Eight digits at a time against decimal text and GMP. Built twice, with vector instructions and
// without.
#include "digit_words.h"

#include <gmpxx.h>

#include "support/values.h"

namespace {

using namespace digit_words;

Digits words(const std::string &decimals) {
    ub1 bytes[window];
    for (size_t i = 0; i < window; ++i) {
        bytes[i] = static_cast<ub1>(std::stoi(decimals.substr(2 * i, 2)));
    }
    return {{load(bytes), load(bytes + 8), load(bytes + 16)}};
}

std::string decimals(const Digits &d) {
    std::string out;
    for (unsigned i = 0; i < window; ++i) out += text("%02u", digit_at(d, i));
    return out;
}

std::string padded(const mpz_class &value) {
    const std::string digits = value.get_str();
    return std::string(2 * window - digits.size(), '0') + digits;
}

TEST(DigitWords, AgainstTextAndIntegers) {
    Random random = seeded();
    for (long i = random_cases(2000); i > 0 && !HasFailure(); --i) {
        const std::string a = random_digits(random, 2 * window),
                          b = random_digits(random, 2 * window);
        SCOPED_TRACE(a + " " + b);
        const Digits x = words(a), y = words(b);
        EXPECT_EQ(decimals(x), a);
        const Joined joined = join(x);
        for (size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(joined.word[k], std::stoull(a.substr(16 * k, 16)));
            char characters[16];
            write_characters(characters, x.word[k]);
            EXPECT_EQ(std::string(characters, 16), a.substr(16 * k, 16));
        }
        EXPECT_EQ(decimals(split(joined)), a);

        const auto count = static_cast<unsigned>(between(random, 0, window - 1));
        const std::string zeros(2 * count, '0');
        EXPECT_EQ(decimals(moved_back(x, count)), zeros + a.substr(0, 2 * (window - count)));
        EXPECT_EQ(decimals(moved_forward(x, count)), a.substr(2 * count) + zeros);
        EXPECT_TRUE(is_zero(moved_back(x, window + count)));
        EXPECT_EQ(leading_zeros(moved_back(x, count)), count + (a[0] == '0' && a[1] == '0'));

        const mpz_class p(a), q(b);
        Digits sum = x, difference = p < q ? y : x;
        const bool carry = combine(sum, y, false, false) != 0;
        EXPECT_EQ((carry ? "1" : "") + decimals(sum), mpz_class(p + q).get_str());
        const bool one_less = p != q && random() % 2 != 0;
        combine(difference, p < q ? x : y, true, one_less);
        EXPECT_EQ(decimals(difference), padded(abs(p - q) - one_less));
    }
}

// A digit byte out of its range, at every place and of both signs, is seen, and only among the
// digits that count.
TEST(DigitWords, BytesOutOfRange) {
    for (const bool negative : {false, true}) {
        for (unsigned at = 0; at < number_bytes::max_digits; ++at) {
            for (const int bad : {0, negative ? 1 : 101, negative ? 102 : 255}) {
                OCINumber n = number({});
                std::fill_n(n.OCINumberPart + 2, number_bytes::max_digits, negative ? 2 : 100);
                n.OCINumberPart[2 + at] = static_cast<ub1>(bad);
                Digits d;
                EXPECT_FALSE(read_digits(n, negative, at + 1, d)) << at << " " << bad;
                EXPECT_TRUE(read_digits(n, negative, at, d)) << at << " " << bad;
                const std::string nines(2 * at, '9');
                EXPECT_EQ(decimals(d), nines + std::string(2 * window - 2 * at, '0'));
            }
        }
    }
}

}  // namespace
