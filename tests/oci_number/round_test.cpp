#include "support/values.h"

namespace {

using Bytes = std::vector<int>;
using Operation = sword (*)(OCIError *, const OCINumber *, sword, OCINumber *);

Bytes cut(Operation operation, const OCINumber &n, int count) {
    ErrorHandle err;
    OCINumber result = number({}), same = n;
    EXPECT_EQ(operation(err, &n, count, &result), OCI_SUCCESS);
    EXPECT_EQ(operation(err, &same, count, &same), OCI_SUCCESS);
    EXPECT_EQ(value_bytes(same), value_bytes(result));
    EXPECT_EQ(err.code(), 0);
    return value_bytes(result);
}

TEST(Round, Table) {
    const Bytes n123_456 = {5, 194, 2, 24, 46, 61};
    const Bytes full_negative = {21, 43, 89, 67, 45, 23, 11, 89, 67, 45, 23,
                                 11, 89, 67, 45, 23, 11, 89, 67, 45, 23, 11};
    Bytes full_truncated = full_negative;
    full_truncated[0] = 21;
    full_truncated[21] = 102;
    const Bytes positive_infinity = {2, 255, 101}, negative_infinity = {1, 0}, zero = {1, 128};
    const auto round = OCINumberRound, trunc = OCINumberTrunc, prec = OCINumberPrec;
    const struct {
        Operation operation;
        Bytes number;
        int count;
        Bytes result;
    } rows[] = {
        {round, n123_456, 2, {4, 194, 2, 24, 47}},
        {round, n123_456, 1, {4, 194, 2, 24, 51}},
        {round, n123_456, -1, {3, 194, 2, 21}},
        {round, n123_456, -2, {2, 194, 2}},
        {round, n123_456, -3, zero},
        {round, n123_456, -4, zero},
        {round, n123_456, -5, zero},
        {round, n123_456, 2147483647, n123_456},
        {round, n123_456, -2147483647 - 1, zero},
        {trunc, n123_456, 2147483647, n123_456},
        {trunc, n123_456, -2147483647 - 1, zero},
        {prec, n123_456, 2147483647, n123_456},
        {prec, n123_456, -1, zero},
        {prec, n123_456, -2147483647 - 1, zero},
        {round, {3, 193, 100, 100}, 1, {2, 194, 2}},
        {trunc, {3, 193, 100, 100}, 1, {3, 193, 100, 91}},
        {round, {4, 62, 2, 2, 102}, 1, {3, 61, 100, 102}},
        {trunc, {4, 62, 2, 2, 102}, 1, {4, 62, 2, 11, 102}},
        {round, {4, 62, 89, 51, 102}, 0, {3, 62, 88, 102}},
        {trunc, {4, 62, 89, 51, 102}, 0, {3, 62, 89, 102}},
        {round, {2, 191, 51}, 2, {2, 192, 2}},
        {trunc, {2, 191, 51}, 2, zero},
        {round, {3, 194, 6, 56}, -3, {2, 194, 11}},
        {round, {4, 194, 2, 21, 5}, 1, {3, 194, 2, 21}},
        {round, {2, 193, 61}, -2, {2, 194, 2}},
        {round, {2, 193, 61}, -4, zero},
        {prec, n123_456, 4, {4, 194, 2, 24, 51}},
        {prec, {3, 193, 10, 97}, 2, {2, 193, 11}},
        {prec, {4, 62, 100, 16, 102}, 2, {4, 62, 100, 11, 102}},
        {prec, {4, 62, 2, 51, 102}, 2, {3, 61, 100, 102}},
        {prec, {2, 193, 6}, 0, {2, 193, 11}},
        {prec, {2, 193, 5}, 0, zero},
        {prec, zero, 3, zero},
        {round, zero, -3, zero},
        // Infinities are cut like the bytes that they are.
        {prec, negative_infinity, 0, negative_infinity},
        {prec, negative_infinity, -1, zero},
        {round, negative_infinity, -126, negative_infinity},
        {trunc, negative_infinity, -126, negative_infinity},
        {round, negative_infinity, -127, zero},
        {trunc, negative_infinity, -127, zero},
        {prec, positive_infinity, 1, positive_infinity},
        {prec, positive_infinity, 0, positive_infinity},
        {prec, positive_infinity, -1, zero},
        {round, positive_infinity, -125, positive_infinity},
        {round, positive_infinity, -126, positive_infinity},
        {round, positive_infinity, -127, zero},
        {trunc, positive_infinity, -125, positive_infinity},
        {trunc, positive_infinity, -126, zero},
        {trunc, positive_infinity, -127, zero},
        // A carry out of the range.
        {round, {2, 255, 61}, -126, positive_infinity},
        {prec, {3, 255, 100, 100}, 3, positive_infinity},
        {round, {3, 0, 41, 102}, -126, negative_infinity},
        {prec, {4, 0, 2, 2, 102}, 3, negative_infinity},
        // A negative value of 20 digit bytes, cut at its last one.
        {round, full_negative, -1, full_negative},
        {prec, full_negative, 39, full_negative},
        {round, full_negative, -2, full_negative},
        {trunc, full_negative, -2, full_truncated},
        {round, full_negative, -3,
         [&] {
             Bytes b = full_truncated;
             b[20] = 21;  // ...78 90 -> ...80
             return b;
         }()},
    };
    for (const auto &row : rows) {
        const OCINumber n = number(row.number);
        SCOPED_TRACE(::testing::PrintToString(n) +
                     text("cut at %d, row %ld", row.count, &row - rows));
        EXPECT_EQ(cut(row.operation, n, row.count), row.result);
    }
}

// The three operations on exact values; and on the mirrored value.
void check_exact(const Decimal &value, int count) {
    const OCINumber n = number(value.bytes());
    const bool full_negative =
        n.OCINumberPart[0] == 21 && value.sign() < 0 && n.OCINumberPart[21] != 102;
    // The last digit pair's weight is 10^last.
    const long first = value.sign() < 0 ? 62 - n.OCINumberPart[1] : n.OCINumberPart[1] - 193;
    const long last = 2 * (first - 19);
    const auto expected = [&](const Decimal &exact, long place) {
        const bool kept = full_negative && (place == last + 1 || place == last + 2);
        return kept ? value.bytes() : result_bytes(exact);
    };
    const long top = static_cast<long>(value.digits().size()) + value.exponent();
    const long place = -static_cast<long>(count);
    ASSERT_EQ(cut(OCINumberRound, n, count), expected(value.rounded(place), place));
    ASSERT_EQ(cut(OCINumberTrunc, n, count), result_bytes(value.truncated(place)));
    if (count >= 0) {
        ASSERT_EQ(cut(OCINumberPrec, n, count), expected(value.rounded(top - count), top - count));
    }
}

TEST(Round, AllShortValues) {
    for (int pairs = 1; pairs < 10000; ++pairs) {
        const std::string digits = std::to_string(pairs);
        for (const long exponent : {-5L, -2L, 1L}) {
            const Decimal value((pairs % 2 ? "" : "-") + digits, exponent);
            const int last = static_cast<int>(-exponent) + 1;
            for (int count = last - 6; count <= last; ++count) {
                check_exact(value, count);
                if (HasFatalFailure()) FAIL() << value.plain() << " at " << count;
            }
        }
    }
}

TEST(Round, RandomValues) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        const Decimal value = random_value(random);
        const long span = -value.exponent() - static_cast<long>(random() % 45) + 2;
        const int count = static_cast<int>(random() % 8 ? span : static_cast<long>(random() % 45));
        check_exact(value, count);
        if (HasFatalFailure()) FAIL() << value.plain() << " at " << count;
    }
}

// An operation on the negated value is the negation of the operation, but for
// the 20-byte negative that is cut at its last byte.
TEST(Round, MirrorProperty) {
    auto random = seeded();
    ErrorHandle err;
    const Operation operations[] = {OCINumberRound, OCINumberTrunc, OCINumberPrec, OCINumberShift};
    for (long i = random_cases(20000); i > 0; --i) {
        const Decimal value = random_value(random);
        OCINumber n = number(value.bytes()), mirrored;
        OCINumberNeg(err, &n, &mirrored);
        const int count = static_cast<int>(random() % 90) - 45;
        for (const Operation operation : operations) {
            OCINumber a, b, back;
            operation(err, &n, count, &a);
            operation(err, &mirrored, count, &b);
            OCINumberNeg(err, &b, &back);
            // Digit 19 is the last: the cut falls on it at these places.
            const long last = 2 * (Decimal::of(value_bytes(n)).first_pair() - 19);
            const long top = static_cast<long>(value.digits().size()) + value.exponent();
            const long place = operation == OCINumberPrec ? top - count : -count;
            const bool guard = operation != OCINumberTrunc && operation != OCINumberShift &&
                               (place == last + 1 || place == last + 2);
            if (!guard) ASSERT_EQ(value_bytes(back), value_bytes(a)) << value.plain() << count;
        }
    }
}

}  // namespace
