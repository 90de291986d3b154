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

TEST(Exact, Cuts) {
    auto random = seeded();
    for (long i = random_cases(50000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const int near = static_cast<int>(-value.exponent()) + 2,
                  some = static_cast<int>(random() % 45);
        const int count = random() % 8 ? near - some : some;
        SCOPED_TRACE(value.plain() + text(" at %d", count));
        const Bytes bytes = value.bytes();
        // A negative value of 20 digit bytes stays as it is where its last one is cut.
        const bool full_negative = bytes[0] == 21 && value.sign() < 0 && bytes[21] != 102;
        const long last = 2 * (value.first_pair() - 19);  // the weight of the last digit pair
        const auto expected = [&](long place) {
            const bool kept = full_negative && (place == last + 1 || place == last + 2);
            return kept ? bytes : result_bytes(value.rounded(place));
        };
        const long top = static_cast<long>(value.digits().size()) + value.exponent();
        EXPECT_EQ(run("Round", number(bytes), count), expected(-count));
        EXPECT_EQ(run("Trunc", number(bytes), count), result_bytes(value.truncated(-count)));
        if (count >= 0) EXPECT_EQ(run("Prec", number(bytes), count), expected(top - count));
    }
}

}  // namespace
