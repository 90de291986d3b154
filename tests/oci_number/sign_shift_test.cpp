#include "support/values.h"

namespace {

using Bytes = std::vector<int>;

Bytes shifted(const OCINumber &n, int count) {
    ErrorHandle err;
    OCINumber result = number({}), same = n;
    EXPECT_EQ(OCINumberShift(err, &n, count, &result), OCI_SUCCESS);
    EXPECT_EQ(OCINumberShift(err, &same, count, &same), OCI_SUCCESS);
    EXPECT_EQ(value_bytes(same), value_bytes(result));
    EXPECT_EQ(err.code(), 0);
    return value_bytes(result);
}

Bytes signed_by(sword (*f)(OCIError *, const OCINumber *, OCINumber *), const OCINumber &n) {
    ErrorHandle err;
    OCINumber result = number({}), same = n;
    EXPECT_EQ(f(err, &n, &result), OCI_SUCCESS);
    EXPECT_EQ(f(err, &same, &same), OCI_SUCCESS);
    EXPECT_EQ(value_bytes(same), value_bytes(result));
    return value_bytes(result);
}

TEST(SignShift, AbsAndNeg) {
    const Bytes full_positive = {21, 212, 100, 1, 1, 1, 1, 1, 1, 1, 1,
                                 1,  1,   1,   1, 1, 1, 1, 1, 1, 1, 2};
    const Bytes full_negative = {21,  43,  2,   101, 101, 101, 101, 101, 101, 101, 101,
                                 101, 101, 101, 101, 101, 101, 101, 101, 101, 101, 100};
    const struct {
        Bytes number, abs, neg;
    } rows[] = {
        {{1, 128}, {1, 128}, {1, 128}},
        {{2, 193, 2}, {2, 193, 2}, {3, 62, 100, 102}},
        {{3, 62, 100, 102}, {2, 193, 2}, {2, 193, 2}},
        {{4, 61, 100, 78, 102}, {3, 194, 2, 24}, {3, 194, 2, 24}},
        {{2, 255, 101}, {2, 255, 101}, {1, 0}},
        {{1, 0}, {2, 255, 101}, {2, 255, 101}},
        {{2, 255, 11}, {2, 255, 11}, {3, 0, 91, 102}},
        {{3, 0, 91, 102}, {2, 255, 11}, {2, 255, 11}},
        {full_positive, full_positive, full_negative},
        {full_negative, full_positive, full_positive},
    };
    for (const auto &row : rows) {
        const OCINumber n = number(row.number);
        SCOPED_TRACE(::testing::PrintToString(n));
        EXPECT_EQ(signed_by(OCINumberAbs, n), row.abs);
        EXPECT_EQ(signed_by(OCINumberNeg, n), row.neg);
    }
}

TEST(SignShift, Shift) {
    const struct {
        Bytes number;
        int count;
        Bytes result;
    } rows[] = {
        {{2, 193, 13}, 0, {2, 193, 13}},
        {{2, 193, 13}, 1, {3, 194, 2, 21}},
        {{2, 193, 13}, -1, {3, 193, 2, 21}},
        {{2, 193, 6}, 1, {2, 193, 51}},
        {{2, 193, 6}, -1, {2, 192, 51}},
        {{2, 193, 100}, 1, {3, 194, 10, 91}},
        {{4, 194, 2, 24, 46}, 3, {4, 195, 13, 35, 51}},
        {{4, 194, 2, 24, 46}, -3, {4, 192, 13, 35, 51}},
        {{3, 62, 89, 102}, 1, {4, 61, 100, 81, 102}},
        {{3, 62, 96, 102}, -1, {3, 63, 51, 102}},
        {{3, 63, 51, 102}, 2, {3, 62, 51, 102}},
        {{3, 194, 2, 1}, 2, {3, 195, 2, 1}},  // even: the digit bytes stay
        {{3, 194, 2, 1}, 1, {2, 194, 11}},
        {{2, 255, 11}, 1, {2, 255, 101}},
        {{2, 255, 11}, 2, {2, 255, 101}},
        {{2, 255, 2}, 1, {2, 255, 11}},
        {{2, 129, 2}, -1, {1, 128}},
        {{2, 129, 2}, -2, {1, 128}},
        {{2, 129, 11}, -1, {2, 129, 2}},
        {{3, 0, 91, 102}, 1, {1, 0}},
        {{3, 0, 100, 102}, 1, {3, 0, 91, 102}},
        {{3, 0, 91, 102}, 0, {3, 0, 91, 102}},
        // Below 10^-128 is zero for either sign.
        {{3, 126, 100, 102}, -1, {1, 128}},
        {{3, 126, 100, 102}, -2, {1, 128}},
        {{3, 126, 100, 102}, -4, {1, 128}},
        {{3, 126, 91, 102}, -1, {3, 126, 100, 102}},
        {{2, 193, 2}, 2147483647, {2, 255, 101}},
        {{2, 193, 2}, -2147483647 - 1, {1, 128}},
        {{3, 62, 100, 102}, 2147483647, {1, 0}},
        {{1, 128}, 7, {1, 128}},
        {{1, 0}, -7, {1, 0}},
        {{2, 255, 101}, -7, {2, 255, 101}},
    };
    for (const auto &row : rows) {
        const OCINumber n = number(row.number);
        SCOPED_TRACE(::testing::PrintToString(n) + text("by %d", row.count));
        EXPECT_EQ(shifted(n, row.count), row.result);
    }
}

TEST(SignShift, ShiftOfRandomValuesIsExact) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        const Decimal value = random_value(random);
        const int count =
            static_cast<int>(random() % (random() % 4 ? 9 : 500)) * (random() % 2 ? 1 : -1);
        const OCINumber n = number(value.bytes());
        SCOPED_TRACE(::testing::PrintToString(n) + text("by %d", count));
        const Bytes result = shifted(n, count);
        ASSERT_EQ(result, result_bytes(value.shifted(count)));
        // Back again, where nothing was lost.
        const bool in_range = result[0] != 1 && result != Bytes({2, 255, 101});
        if (in_range && value.bytes().size() < 21) {
            ASSERT_EQ(shifted(number(result), -count), value.bytes());
        }
    }
}

}  // namespace
