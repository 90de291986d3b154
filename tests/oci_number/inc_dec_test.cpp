#include "support/values.h"

namespace {

using Bytes = std::vector<int>;

Bytes stepped(sword (*step)(OCIError *, OCINumber *), OCINumber n) {
    ErrorHandle err;
    EXPECT_EQ(step(err, &n), OCI_SUCCESS);
    EXPECT_EQ(err.code(), 0);
    return value_bytes(n);
}

Bytes full(int exponent_byte, int first, int middle, int last) {
    Bytes bytes(22, middle);
    bytes[0] = 21;
    bytes[1] = exponent_byte;
    bytes[2] = first;
    bytes[21] = last;
    return bytes;
}

TEST(IncDec, Table) {
    Bytes nines(21, 100);  // 10^38 - 1
    nines[0] = 20;
    nines[1] = 211;
    Bytes ninety_nine_and_more = full(193, 100, 100, 100);  // 99.99...
    Bytes tie = full(193, 100, 1, 51), tie_dec = tie;       // 99.00...01 50
    tie[20] = tie_dec[20] = 2;
    tie_dec[2] = 99;
    Bytes tie_inc = full(194, 2, 1, 3);
    const struct {
        const char *value;
        Bytes number, inc, dec;
    } rows[] = {
        {"0", {1, 128}, {2, 193, 2}, {1, 128}},
        {"1", {2, 193, 2}, {2, 193, 3}, {1, 128}},
        {"2", {2, 193, 3}, {2, 193, 4}, {2, 193, 2}},
        {"99", {2, 193, 100}, {2, 194, 2}, {2, 193, 99}},
        {"100", {2, 194, 2}, {3, 194, 2, 2}, {2, 193, 100}},
        {"100, zero pair kept", {3, 194, 2, 1}, {3, 194, 2, 2}, {2, 193, 100}},
        {"101", {3, 194, 2, 2}, {3, 194, 2, 3}, {2, 194, 2}},
        {"199", {3, 194, 2, 100}, {2, 194, 3}, {3, 194, 2, 99}},
        {"9999", {3, 194, 100, 100}, {2, 195, 2}, {3, 194, 100, 99}},
        {"10000", {2, 195, 2}, {4, 195, 2, 1, 2}, {3, 194, 100, 100}},
        {"1000000", {2, 196, 2}, {5, 196, 2, 1, 1, 2}, {4, 195, 100, 100, 100}},
        {"20000", {2, 195, 3}, {4, 195, 3, 1, 2}, {4, 195, 2, 100, 100}},
        {"-5", {3, 62, 96, 102}, {2, 193, 2}, {1, 128}},
        {"0.5", {2, 192, 51}, {2, 193, 2}, {1, 128}},
        {"inf", {2, 255, 101}, {2, 193, 2}, {1, 128}},
        {"-inf", {1, 0}, {2, 193, 2}, {1, 128}},
        {"1E38", {2, 212, 2}, full(212, 2, 1, 2), nines},
        {"1E40-1", full(212, 100, 100, 100), {2, 213, 2}, full(212, 100, 100, 99)},
        {"1E40", {2, 213, 2}, {2, 193, 2}, {1, 128}},
        {"1E42", {2, 214, 2}, {2, 193, 2}, {1, 128}},
        {"1E44", {2, 215, 2}, {2, 193, 2}, {1, 128}},
        {"1.5", {3, 193, 2, 51}, {3, 193, 3, 51}, {2, 192, 51}},
        {"99.5", {3, 193, 100, 51}, {4, 194, 2, 1, 51}, {3, 193, 99, 51}},
        {"100.5", {4, 194, 2, 1, 51}, {4, 194, 2, 2, 51}, {3, 193, 100, 51}},
        {"99.0..0150", tie, tie_inc, tie_dec},
        // 21 digits after the carry: the last is rounded away, through all nines.
        {"99.9..9", ninety_nine_and_more, {3, 194, 2, 2}, full(193, 99, 100, 100)},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(stepped(OCINumberInc, number(row.number)), row.inc);
        EXPECT_EQ(stepped(OCINumberDec, number(row.number)), row.dec);
    }
}

// Exact plus or minus one from 1 up to 10^40, integers or not.
TEST(IncDec, RandomValues) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        const size_t length = 1 + random() % 40;
        const size_t places = random() % 2 ? 0 : random() % length;
        const Decimal value(random_digits(random, length), -static_cast<long>(places));
        const Bytes bytes = value.bytes();
        const Decimal exact = Decimal::of(bytes);
        SCOPED_TRACE(exact.plain());
        ASSERT_EQ(stepped(OCINumberInc, number(bytes)), exact.plus(1).bytes());
        ASSERT_EQ(stepped(OCINumberDec, number(bytes)), exact.plus(-1).bytes());
    }
}

}  // namespace
