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
        SCOPED_TRACE(value.plain() + text(" by %d", count));
        const Bytes bytes = value.bytes(), shifted = run("Shift", number(bytes), count);
        EXPECT_EQ(shifted, result_bytes(value.shifted(count)));
        // And back, where nothing was lost.
        const bool in_range = shifted[0] != 1 && shifted != Bytes{2, 255, 101};
        if (in_range && bytes[0] < 21) EXPECT_EQ(run("Shift", number(shifted), -count), bytes);
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

// Whether Round and Prec leave the value as it is: negative, with 20 digit bytes,
// and cut at the last of them.
bool is_kept(const Decimal &value, long place) {
    const Bytes bytes = value.bytes();
    const long last = 2 * (value.first_pair() - 19);  // the weight of the last digit pair
    return bytes[0] == 21 && value.sign() < 0 && bytes[21] != 102 &&
           (place == last + 1 || place == last + 2);
}

void check_cuts(const Decimal &value, int count) {
    SCOPED_TRACE(value.plain() + text(" at %d", count));
    const OCINumber n = number(value.bytes());
    const auto rounded = [&](long place) {
        return is_kept(value, place) ? value.bytes() : result_bytes(value.rounded(place));
    };
    const long top = static_cast<long>(value.digits().size()) + value.exponent();
    EXPECT_EQ(run("Round", n, count), rounded(-count));
    EXPECT_EQ(run("Trunc", n, count), result_bytes(value.truncated(-count)));
    if (count >= 0) EXPECT_EQ(run("Prec", n, count), rounded(top - count));
}

TEST(Exact, CutsOfAllShortValues) {
    for (int digits = 1; digits < 10000 && !HasFailure(); ++digits) {
        for (const long exponent : {-5L, -2L, 1L}) {
            const Decimal value((digits % 2 ? "" : "-") + std::to_string(digits), exponent);
            const int last = static_cast<int>(-exponent) + 1;
            for (int count = last - 6; count <= last; ++count) check_cuts(value, count);
        }
    }
}

TEST(Exact, CutsOfRandomValues) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const int near = static_cast<int>(-value.exponent()) + 2,
                  some = static_cast<int>(random() % 45);
        check_cuts(value, random() % 8 ? near - some : some);
    }
}

// An operation on the negated value is the negation of the operation.
TEST(Exact, Mirror) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const Decimal value = random_value(random);
        const OCINumber n = number(value.bytes()), mirrored = number(run("Neg", n));
        const Decimal negative = Decimal::of(value_bytes(value.sign() < 0 ? n : mirrored));
        const int count = static_cast<int>(random() % 90) - 45;
        const long top = static_cast<long>(value.digits().size()) + value.exponent();
        for (const char *operation : {"Round", "Trunc", "Prec", "Shift"}) {
            SCOPED_TRACE(value.plain() + text(" %s %d", operation, count));
            const bool prec = operation[0] == 'P';
            if ((prec || operation[0] == 'R') && is_kept(negative, prec ? top - count : -count)) {
                continue;
            }
            const OCINumber a = number(run(operation, n, count));
            EXPECT_EQ(value_bytes(a), run("Neg", number(run(operation, mirrored, count))));
        }
    }
}

}  // namespace
