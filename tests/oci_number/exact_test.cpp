// Shifts, steps and cuts of random values against exact arithmetic.
#include "support/functions.h"
#include "support/values.h"

namespace {

using Bytes = std::vector<int>;

Bytes run(const char *name, const OCINumber &operand, int count = 0) {
    ErrorHandle err;
    const Function &f = function(name);
    OCINumber n = operand, result;
    EXPECT_EQ(f.call(err, &n, nullptr, count, &result), OCI_SUCCESS);
    return value_bytes(f.result == 0 ? n : result);
}

TEST(Exact, Shift) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const int size = static_cast<int>(random() % (random() % 4 ? 9 : 500));
        const int count = random() % 2 ? size : -size;
        EXPECT_EQ(run("Shift", number(value.bytes()), count), result_bytes(value.shifted(count)))
            << value.plain() << " by " << count;
    }
}

// From 1 up to 10^40, integers or not.
TEST(Exact, Steps) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const size_t length = 1 + random() % 40;
        const size_t places = random() % 2 ? 0 : random() % length;
        const Decimal value(random_digits(random, length), -static_cast<long>(places));
        const Bytes bytes = value.bytes();
        const Decimal exact = Decimal::of(bytes);
        SCOPED_TRACE(exact.plain());
        EXPECT_EQ(run("Inc", number(bytes)), exact.plus(1).bytes());
        EXPECT_EQ(run("Dec", number(bytes)), exact.plus(-1).bytes());
    }
}

void check_cuts(const Decimal &value, int count) {
    SCOPED_TRACE(value.plain() + text(" at %d", count));
    const OCINumber n = number(value.bytes());
    const bool full_negative =
        n.OCINumberPart[0] == 21 && value.sign() < 0 && n.OCINumberPart[21] != 102;
    const long last = 2 * (value.first_pair() - 19);  // the weight of the last digit pair
    // A negative value of 20 digit bytes stays as it is where its last one is cut.
    const auto expected = [&](long place) {
        const bool kept = full_negative && (place == last + 1 || place == last + 2);
        return kept ? value.bytes() : result_bytes(value.rounded(place));
    };
    const long top = static_cast<long>(value.digits().size()) + value.exponent();
    EXPECT_EQ(run("Round", n, count), expected(-count));
    EXPECT_EQ(run("Trunc", n, count), result_bytes(value.truncated(-count)));
    if (count >= 0) EXPECT_EQ(run("Prec", n, count), expected(top - count));
}

TEST(Exact, CutsOfAllShortValues) {
    for (int digits = 1; digits < 10000 && !HasFailure(); ++digits) {
        for (const int exponent : {-5, -2, 1}) {
            const Decimal value((digits % 2 ? "" : "-") + std::to_string(digits), exponent);
            for (int count = -exponent - 5; count <= -exponent + 1; ++count) {
                check_cuts(value, count);
            }
        }
    }
}

TEST(Exact, Cuts) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const long span = -value.exponent() - static_cast<long>(random() % 45) + 2;
        check_cuts(value, static_cast<int>(random() % 8 ? span : static_cast<long>(random() % 45)));
    }
}

}  // namespace
