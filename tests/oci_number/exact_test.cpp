// Shifts, steps and cuts of values of both signs against exact arithmetic.
#include "support/functions.h"
#include "support/values.h"

namespace {

Bytes run(const char *name, const Bytes &operand, int count = 0) {
    return result_of(function(name), number(operand), number({}), count);
}

TEST(Exact, Shift) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const int size = between(random, 0, random() % 4 ? 9 : 500);
        const int count = random() % 2 ? size : -size;
        EXPECT_EQ(run("Shift", value.bytes(), count), value.shifted(count).bytes())
            << value.plain() << " by " << count;
    }
}

// From 1 up to 10^40, integers or not.
TEST(Exact, Steps) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const int length = between(random, 1, 40);
        const Decimal value =
            random_value(random, length, between(random, 0, length - 1)).magnitude();
        SCOPED_TRACE(value.plain());
        EXPECT_EQ(run("Inc", value.bytes()), value.plus(1).bytes());
        EXPECT_EQ(run("Dec", value.bytes()), value.plus(-1).bytes());
    }
}

void check_cuts(const Decimal &value, int count) {
    SCOPED_TRACE(value.plain() + text(" at %d", count));
    const Bytes bytes = value.bytes();
    // Round and Prec leave a value as it is that is negative, has 20 digit bytes, and is
    // cut at the last of them.
    const long last = 2 * (value.first_pair() - 19);
    const bool is_full = bytes[0] == 21 && value.sign() < 0 && bytes[21] != 102;
    const auto rounded = [&](long place) {
        return is_full && (place == last + 1 || place == last + 2) ? bytes
                                                                   : value.rounded(place).bytes();
    };
    EXPECT_EQ(run("Round", bytes, count), rounded(-count));
    EXPECT_EQ(run("Trunc", bytes, count), value.truncated(-count).bytes());
    if (count >= 0) EXPECT_EQ(run("Prec", bytes, count), rounded(value.top() + 1 - count));
}

TEST(Exact, CutsOfAllShortValues) {
    for (int digits = 1; digits < 10000 && !HasFailure(); ++digits) {
        for (const int places : {-1, 2, 5}) {
            const Decimal value(mpz_class(digits % 2 ? digits : -digits), -places);
            for (int count = places - 5; count <= places + 1; ++count) check_cuts(value, count);
        }
    }
}

TEST(Exact, CutsOfRandomValues) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const int near = static_cast<int>(-value.exponent()) + 2, some = between(random, 0, 44);
        check_cuts(value, random() % 8 ? near - some : some);
    }
}

}  // namespace
