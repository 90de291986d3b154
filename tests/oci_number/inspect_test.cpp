#include "support/numbers.h"

namespace {

const OCINumber zero = number({1, 128});
const OCINumber positive_infinity = number({2, 255, 101});
const OCINumber negative_infinity = number({1, 0});

struct Row {
    const char *value;
    OCINumber bytes;
    int is_zero, is_int, sign;
};
const Row rows[] = {
    {"0", zero, 1, 1, 0},
    {"1", number({2, 193, 2}), 0, 1, 1},
    {"123", number({3, 0xC2, 2, 0x18}), 0, 1, 1},
    {"100", number({2, 0xC2, 2}), 0, 1, 1},
    {"100, zero pair kept", number({3, 0xC2, 2, 1}), 0, 1, 1},
    {"-1", number({3, 0x3E, 0x64, 0x66}), 0, 1, -1},
    {"0.5", number({2, 0xC0, 0x33}), 0, 0, 1},
    {"-0.5", number({3, 0x3F, 0x33, 0x66}), 0, 0, -1},
    {"1.5", number({3, 0xC1, 2, 0x33}), 0, 0, 1},
    {"-1.5", number({4, 0x3E, 0x64, 0x33, 0x66}), 0, 0, -1},
    {"1E-128", number({2, 129, 2}), 0, 0, 1},
    {"1E125", number({2, 255, 11}), 0, 1, 1},
    {"-1E125", number({3, 0, 0x5B, 0x66}), 0, 1, -1},
    {"inf", positive_infinity, 0, 0, 1},
    {"-inf", negative_infinity, 0, 0, -1},
    // 20 digits: a negative integer without ending byte, and one place more.
    {"-1E38 - 1", number({21,  43,  100, 101, 101, 101, 101, 101, 101, 101, 101,
                          101, 101, 101, 101, 101, 101, 101, 101, 101, 101, 100}),
     0, 1, -1},
    {"-1E36 - 0.01", number({21,  44,  100, 101, 101, 101, 101, 101, 101, 101, 101,
                             101, 101, 101, 101, 101, 101, 101, 101, 101, 101, 100}),
     0, 0, -1},
};

TEST(Inspect, Predicates) {
    for (const Row &row : rows) {
        SCOPED_TRACE(row.value);
        ErrorHandle err;
        int is_zero = 7, is_int = 7, sign = 7;
        EXPECT_EQ(OCINumberIsZero(err, &row.bytes, &is_zero), OCI_SUCCESS);
        EXPECT_EQ(OCINumberIsInt(err, &row.bytes, &is_int), OCI_SUCCESS);
        EXPECT_EQ(OCINumberSign(err, &row.bytes, &sign), OCI_SUCCESS);
        EXPECT_EQ(is_zero, row.is_zero);
        EXPECT_EQ(is_int, row.is_int);
        EXPECT_EQ(sign, row.sign);
        EXPECT_EQ(err.code(), 0);
    }
}

TEST(Inspect, IsIntOfAStrangeByteIsOnlyLogged) {
    const OCINumber strange = number({1, 5});
    int result = 7;
    check_call({"01 05",
                [&](OCIError *err) {
                    const sword status = OCINumberIsInt(err, &strange, &result);
                    const auto log = take_log();
                    EXPECT_EQ(log.at(1),
                              "E number length is 1, bug OCINumberPart[1] is not 128, "
                              "OCINumberPart[1]:5");
                    EXPECT_EQ(log.at(2), "D function OCINumberIsInt return with status -1");
                    return status;
                },
                OCI_ERROR,
                0,
                "",
                {}});
    EXPECT_EQ(result, 7);
}

// Values in ascending order: every pair must compare as its places do.
TEST(Inspect, CmpOrdersValues) {
    const OCINumber ascending[] = {
        negative_infinity,
        number({3, 0, 0x5B, 0x66}),           // -1E125
        number({4, 0x3D, 0x64, 0x4E, 0x66}),  // -123
        number({4, 0x3E, 0x64, 0x33, 0x66}),  // -1.5
        number({3, 0x3E, 0x64, 0x66}),        // -1
        number({3, 0x3F, 0x33, 0x66}),        // -0.5
        zero,
        number({2, 129, 2}),         // 1E-128
        number({2, 0xC0, 0x33}),     // 0.5
        number({2, 0xC1, 2}),        // 1
        number({3, 0xC1, 2, 0x33}),  // 1.5
        number({2, 0xC1, 0x0B}),     // 10
        number({2, 255, 11}),        // 1E125
        positive_infinity,
    };
    ErrorHandle err;
    const auto sign = [](int v) { return (v > 0) - (v < 0); };
    for (const OCINumber &a : ascending) {
        for (const OCINumber &b : ascending) {
            sword result = 7;
            ASSERT_EQ(OCINumberCmp(err, &a, &b, &result), OCI_SUCCESS);
            EXPECT_EQ(sign(result), sign(static_cast<int>(&a - &b)));
        }
    }
}

TEST(Inspect, AssignCopiesAllBytes) {
    ErrorHandle err;
    OCINumber from = number({2, 193, 2, 7, 8, 9}), to = number({});
    EXPECT_EQ(OCINumberAssign(err, &from, &to), OCI_SUCCESS);
    EXPECT_EQ(to, from);
    EXPECT_EQ(OCINumberAssign(err, &to, &to), OCI_SUCCESS);
    EXPECT_EQ(to, from);
}

TEST(Inspect, SetZeroAndSetPi) {
    struct SetRow {
        bool zero, null_handle, null_number;
        std::vector<std::string> errors;
    };
    const std::string invalid = "E get a invalid handle";
    const std::string argument = "E 21560: argument 2 is null, invalid, or out of range";
    const std::string both = "E OCINumberSetZero null number and null errhp";
    const SetRow set_rows[] = {
        {true, false, false, {}},
        {true, true, false, {invalid}},
        {true, false, true, {argument, both}},
        {true, true, true, {invalid, both}},
        {false, false, false, {}},
        {false, true, false, {invalid}},
        {false, false, true, {argument}},
        {false, true, true, {invalid}},
    };
    const OCINumber pi = number({0x15, 0xC1, 0x04, 0x0F, 0x10, 0x5D, 0x42, 0x24, 0x5A, 0x50, 0x21,
                                 0x27, 0x2F, 0x1B, 0x2C, 0x27, 0x21, 0x50, 0x33, 0x1D, 0x55, 0x15});
    for (const SetRow &row : set_rows) {
        SCOPED_TRACE(text("row %ld", &row - set_rows));
        ErrorHandle err;
        OCIError *errhp = row.null_handle ? nullptr : err.get();
        OCINumber result = number({});
        OCINumber *target = row.null_number ? nullptr : &result;
        take_log();
        (row.zero ? OCINumberSetZero : OCINumberSetPi)(errhp, target);
        std::vector<std::string> log = {text("D call %s with params [err:%p] [number:%p]",
                                             row.zero ? "OCINumberSetZero" : "OCINumberSetPi",
                                             static_cast<void *>(errhp),
                                             static_cast<void *>(target))};
        log.insert(log.end(), row.errors.begin(), row.errors.end());
        EXPECT_EQ(take_log(), log);
        EXPECT_EQ(err.message(),
                  row.null_number && !row.null_handle ? argument_error(21560, 2) : "");
        EXPECT_TRUE(err.other_fields_untouched());
        EXPECT_EQ(result, row.null_number ? number({}) : row.zero ? zero : pi);
    }
}

}  // namespace
