#include "support/numbers.h"

namespace {

const OCINumber zero = number({1, 128}), one = number({2, 193, 2}), two = number({2, 193, 3}),
                half = number({2, 192, 51}), minus_two = number({3, 62, 99, 102}),
                infinity = number({2, 255, 101}), negative_infinity = number({1, 0}),
                invalid = number({0, 193, 2}), bad_digit = number({2, 193, 200});

std::string refused(int code, int index) {
    return code == 21560
               ? text("E 21560: argument %d is null, invalid, or out of range", index)
               : text("E 22060: argument [%d] is an invalid or uninitialized number", index);
}

struct Row {
    const char *name;
    const OCINumber *base, *number;  // or the exponent
    int exp;
    bool has_result;
    int code;
    int argument;         // of error 21560 and 22060
    const char *message;  // of error 602
};

// Argument errors in the order of the checks, and what the engine refuses.
TEST(LogIntPower, Failures) {
    const char *const unread = "OCINumberLn failed to convert number to calcnumber";
    const Row logs[] = {
        {"null base", nullptr, nullptr, 0, false, 21560, 2, ""},
        {"invalid base", &invalid, nullptr, 0, true, 22060, 2, ""},
        {"base 0 before a null number", &zero, nullptr, 0, true, 22060, 2, ""},
        {"negative base", &minus_two, &two, 0, true, 22060, 2, ""},
        {"base -inf", &negative_infinity, &two, 0, true, 22060, 2, ""},
        {"null number", &two, nullptr, 0, false, 21560, 3, ""},
        {"number 0", &two, &zero, 0, false, 22060, 3, ""},
        {"negative number", &two, &minus_two, 0, false, 22060, 3, ""},
        {"null result", &two, &two, 0, false, 21560, 4, ""},
        {"bad base", &bad_digit, &two, 0, true, 602, 0, unread},
        {"bad number", &two, &bad_digit, 0, true, 602, 0, unread},
        {"inf / inf", &infinity, &infinity, 0, true, 602, 0,
         "OCINumberLn call QZCICalcNumDiv error"},
    };
    const Row powers[] = {
        {"null base", nullptr, nullptr, 2, false, 21560, 2, ""},
        {"invalid base", &invalid, nullptr, 2, false, 22060, 2, ""},
        {"null result", &two, nullptr, 2, false, 21560, 4, ""},
        {"bad base", &bad_digit, nullptr, 2, true, 602, 0,
         "OCINumberIntPower call QZCICalcNumFromNumber error"},
        {"0^-1", &zero, nullptr, -1, true, 602, 0, "OCINumberIntPower call QZCICalcFunc error"},
    };
    OCINumber stored;
    const auto check = [&](const Row &row, bool is_log) {
        stored = number({});
        OCINumber *const result = row.has_result ? &stored : nullptr;
        ErrorHandle err;
        std::string entry = "";
        check_call(
            {row.name,
             [&](OCIError *e) {
                 const auto *base = static_cast<const void *>(row.base);
                 entry =
                     is_log
                         ? text(
                               "D call OCINumberLon with params [err:%p] [base:%p] "
                               "[number:%p] [result:%p]",
                               static_cast<void *>(e), base, static_cast<const void *>(row.number),
                               static_cast<void *>(result))
                         : text(
                               "D call OCINumberIntPower with params [err:%p] "
                               "[base:%p] [exp:%d] [result:%p]",
                               static_cast<void *>(e), base, row.exp, static_cast<void *>(result));
                 const sword status = is_log ? OCINumberLog(e, row.base, row.number, result)
                                             : OCINumberIntPower(e, row.base, row.exp, result);
                 const std::string line = row.code == 602 ? std::string("E ") + row.message
                                                          : refused(row.code, row.argument);
                 EXPECT_EQ(take_log(), (std::vector<std::string>{
                                           entry, line,
                                           text("D function %s return with status -1",
                                                is_log ? "OCNumberLog" : "OCINumberIntPower")}));
                 return status;
             },
             OCI_ERROR,
             row.code,
             row.code == 602 ? row.message : argument_error(row.code, row.argument),
             {}});
        EXPECT_EQ(stored, number({})) << row.name;
    };
    for (const Row &row : logs) check(row, true);
    for (const Row &row : powers) check(row, false);
}

TEST(LogIntPower, NullHandle) {
    OCINumber result = number({});
    check_call({"OCINumberLog",
                [&](OCIError *) { return OCINumberLog(nullptr, &two, &two, &result); },
                OCI_INVALID_HANDLE,
                0,
                "",
                {text("D call OCINumberLon with params [err:(nil)] [base:%p] [number:%p] "
                      "[result:%p]",
                      static_cast<const void *>(&two), static_cast<const void *>(&two),
                      static_cast<void *>(&result)),
                 "E get a invalid handle", "D function OCNumberLog return with status -2"},
                true});
    check_call({"OCINumberIntPower",
                [&](OCIError *) { return OCINumberIntPower(nullptr, &two, -3, &result); },
                OCI_INVALID_HANDLE,
                0,
                "",
                {text("D call OCINumberIntPower with params [err:(nil)] [base:%p] [exp:-3] "
                      "[result:%p]",
                      static_cast<const void *>(&two), static_cast<void *>(&result)),
                 "E get a invalid handle", "D function OCINumberIntPower return with status -2"},
                true});
}

// Exact logarithms and powers, each also with the result in an operand's place.
TEST(LogIntPower, Values) {
    const OCINumber ten = number({2, 193, 11}), thousand = number({2, 194, 11}),
                    four = number({2, 193, 5}), eight = number({2, 193, 9});
    const struct {
        const char *name;
        OCINumber base, number;
        std::vector<int> expected;
    } logs[] = {
        {"log 10 1000", ten, thousand, {2, 193, 4}},
        {"log 4 8", four, eight, {3, 193, 2, 51}},
        {"log 2 0.5", two, half, {3, 62, 100, 102}},
        {"log 2 1", two, one, {1, 128}},
        {"log 1 2", one, two, {2, 255, 101}},
        {"log 1 1", one, one, {2, 255, 101}},
        {"log 1 0.5", one, half, {1, 0}},
        {"log 2 inf", two, infinity, {2, 255, 101}},
        {"log 0.5 inf", half, infinity, {1, 0}},
        {"log inf 2", infinity, two, {1, 128}},
    };
    for (const auto &row : logs) {
        ErrorHandle err;
        OCINumber result, base = row.base, operand = row.number;
        take_log();
        EXPECT_EQ(OCINumberLog(err, &row.base, &row.number, &result), 0);
        const auto log = take_log();
        EXPECT_EQ(value_bytes(result), row.expected) << row.name;
        const bool base_one = row.base == one;
        EXPECT_EQ(log.size(), base_one ? 3u : 2u);
        if (base_one) EXPECT_EQ(log[1], "D number is infinity , set result to infinity");
        EXPECT_EQ(OCINumberLog(err, &base, &row.number, &base), 0);
        EXPECT_EQ(value_bytes(base), row.expected) << row.name;
        EXPECT_EQ(OCINumberLog(err, &row.base, &operand, &operand), 0);
        EXPECT_EQ(value_bytes(operand), row.expected) << row.name;
    }
    const struct {
        OCINumber base;
        int exp;
        std::vector<int> expected;
    } powers[] = {
        {two, 10, {3, 194, 11, 25}},      {two, -2, {2, 192, 26}},
        {minus_two, 3, {3, 62, 93, 102}}, {zero, 0, {2, 193, 2}},
        {infinity, 0, {2, 193, 2}},       {two, 2147483647, {2, 255, 101}},
        {two, -2147483647 - 1, {1, 128}},
    };
    for (const auto &row : powers) {
        ErrorHandle err;
        OCINumber n = row.base;
        EXPECT_EQ(OCINumberIntPower(err, &n, row.exp, &n), 0);
        EXPECT_EQ(value_bytes(n), row.expected) << row.exp;
    }
}

}  // namespace
