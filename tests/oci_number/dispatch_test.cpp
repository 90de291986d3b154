// The frame of the functions that the calc engine computes: traces, order of checks,
// messages, and what a failure leaves alone. Values are the engine's tests' affair.
#include <unistd.h>

#include "oci_calc_number/oci_calc_number.h"
#include "oci_number/oci_number.h"
#include "support/numbers.h"

namespace {

using TwoParam = sword (*)(OCIError *, const OCINumber *, const OCINumber *, OCINumber *);
using OneParam = sword (*)(OCIError *, const OCINumber *, OCINumber *);

const OCINumber zero = number({1, 128}), one = number({2, 193, 2}), two = number({2, 193, 3}),
                ten = number({2, 193, 11}), minus_four = number({3, 62, 97, 102}),
                minus_one = number({3, 62, 100, 102}), positive_infinity = number({2, 255, 101}),
                negative_infinity = number({1, 0}), invalid = number({0, 193, 2}),
                too_long = number({22, 193, 2}), bad_digit = number({2, 193, 200}),
                zero_digit = number({2, 193, 1});

std::string two_call(const char *name, const void *err, const void *a, const void *b,
                     const void *r) {
    return text("D call %s with params [err:%p] [number1:%p] [number2:%p] [result:%p]", name, err,
                a, b, r);
}
std::string one_call(const char *name, const void *err, const void *a, const void *r) {
    return text("D call %s with params [err:%p] [number:%p] [result:%p]", name, err, a, r);
}
std::string returned(const char *name, int status) {
    return text("D function %s return with status %d", name, status);
}

struct Failure {
    int status = OCI_SUCCESS;
    int code = 0;
    std::string message = {};
    std::vector<std::string> log = {};  // between the traces
};
Failure argument(int code, int index) {
    return {OCI_ERROR,
            code,
            argument_error(code, index),
            {code == 21560
                 ? text("E 21560: argument %d is null, invalid, or out of range", index)
                 : text("E 22060: argument [%d] is an invalid or uninitialized number", index)}};
}
Failure divided(const std::string &dividend) {
    return {OCI_ERROR, 22056, "OCI-22056: value [" + dividend + "] is divided by zero\n", {}};
}
Failure engine(const std::string &message) { return {OCI_ERROR, 602, message, {"E " + message}}; }
const Failure success, invalid_handle = {OCI_INVALID_HANDLE, 0, "", {"E get a invalid handle"}};

// Runs one call and compares the status, the traces with `inner` between them, the error
// and the result: `value` on success, untouched on failure.
void check(const char *name, const std::function<sword(OCIError *)> &call, OCIError *err,
           const std::string &entry, const Failure &expected) {
    SCOPED_TRACE(name);
    take_log();
    EXPECT_EQ(call(err), expected.status);
    std::vector<std::string> log = {entry};
    log.insert(log.end(), expected.log.begin(), expected.log.end());
    log.push_back(returned(name, expected.status));
    EXPECT_EQ(take_log(), log);
}

void check_two(const char *name, TwoParam f, const OCINumber *a, const OCINumber *b,
               const Failure &expected, const std::vector<int> &value = {}, bool no_result = false,
               bool no_err = false) {
    ErrorHandle handle;
    OCIError *const err = no_err ? nullptr : handle.get();
    OCINumber stored = number({});
    OCINumber *const result = no_result ? nullptr : &stored;
    check(
        name, [&](OCIError *e) { return f(e, a, b, result); }, err,
        two_call(name, err, a, b, result), expected);
    EXPECT_EQ(handle.code(), expected.code) << name;
    EXPECT_EQ(handle.message(), expected.message) << name;
    EXPECT_TRUE(handle.other_fields_untouched());
    if (expected.status == 0) {
        EXPECT_EQ(value_bytes(stored), value) << name;
    } else {
        EXPECT_EQ(stored, number({})) << name;
    }
}

void check_one(const char *name, OneParam f, const OCINumber *a, const Failure &expected,
               const std::vector<int> &value = {}, bool no_result = false, bool no_err = false) {
    ErrorHandle handle;
    OCIError *const err = no_err ? nullptr : handle.get();
    OCINumber stored = number({});
    OCINumber *const result = no_result ? nullptr : &stored;
    check(
        name, [&](OCIError *e) { return f(e, a, result); }, err, one_call(name, err, a, result),
        expected);
    EXPECT_EQ(handle.code(), expected.code) << name;
    EXPECT_EQ(handle.message(), expected.message) << name;
    EXPECT_TRUE(handle.other_fields_untouched());
    if (expected.status == 0) {
        EXPECT_EQ(value_bytes(stored), value) << name;
    } else {
        EXPECT_EQ(stored, number({})) << name;
    }
}

// Every exported name reaches its own engine function and index: operands for which no
// two functions agree.
TEST(Dispatch, EveryFunctionOfTwo) {
    const struct {
        const char *name;
        TwoParam f;
        std::vector<int> value;  // of 2 and 10
    } rows[] = {
        {"OCINumberAdd", OCINumberAdd, {2, 193, 13}},
        {"OCINumberSub", OCINumberSub, {3, 62, 93, 102}},
        {"OCINumberMul", OCINumberMul, {2, 193, 21}},
        {"OCINumberDiv", OCINumberDiv, {2, 192, 21}},
        {"OCINumberMod", OCINumberMod, {2, 193, 3}},
        {"OCINumberPower", OCINumberPower, {3, 194, 11, 25}},
        // atan(0.2) = 0.19739555984988075837004976519479029344758510..., by bc.
        {"OCINumberArcTan2", OCINumberArcTan2, {21, 192, 20, 74, 96, 56, 99, 50, 89, 8,  59,
                                                38, 1,   50, 77, 52, 95, 80, 3,  94, 45, 77}},
    };
    for (const auto &row : rows) {
        check_two(row.name, row.f, &two, &ten, success, row.value);
        check_two(row.name, row.f, &two, &ten, invalid_handle, {}, false, true);
        check_two(row.name, row.f, nullptr, &invalid, argument(21560, 2), {}, true);
        check_two(row.name, row.f, &invalid, nullptr, argument(22060, 2));
        check_two(row.name, row.f, &too_long, &ten, argument(22060, 2));
        check_two(row.name, row.f, &two, nullptr, argument(21560, 3), {}, true);
        check_two(row.name, row.f, &two, &invalid, argument(22060, 3), {}, true);
        check_two(row.name, row.f, &two, &ten, argument(21560, 4), {}, true);
        const Failure unread = engine(text("%s call QZCICalcNumFromNumber error", row.name));
        check_two(row.name, row.f, &bad_digit, &ten, unread);
        check_two(row.name, row.f, &two, &bad_digit, unread);
        for (const OCINumber *operand : {&two, &ten}) {  // the result in an operand's place
            ErrorHandle err;
            OCINumber a = two, b = ten;
            OCINumber *const place = operand == &two ? &a : &b;
            EXPECT_EQ(row.f(err, &a, &b, place), 0);
            EXPECT_EQ(value_bytes(*place), row.value) << row.name;
        }
    }
}

TEST(Dispatch, SpecialOperandsOfTwo) {
    const OCINumber long_dividend = number({2, 155, 2});  // 1E-76
    const OCINumber too_long_text = number({2, 129, 2});  // 1E-128, no room in 100 bytes
    check_two("OCINumberDiv", OCINumberDiv, &minus_four, &zero, divided("-4"));
    check_two("OCINumberMod", OCINumberMod, &minus_four, &zero, divided("-4"));
    check_two("OCINumberDiv", OCINumberDiv, &zero, &zero, divided("0"));
    check_two("OCINumberDiv", OCINumberDiv, &long_dividend, &zero,
              divided("0." + std::string(75, '0') + "1"));
    // A text that does not fit leaves the size at the buffer's 100 and the buffer empty.
    check_two("OCINumberDiv", OCINumberDiv, &too_long_text, &zero, divided(""));
    check_two("OCINumberDiv", OCINumberDiv, &zero, &minus_four, success, {1, 128});
    check_two("OCINumberDiv", OCINumberDiv, &two, &zero, argument(21560, 4), {}, true);
    check_two("OCINumberDiv", OCINumberDiv, &two, &zero_digit,
              engine("OCINumberDiv call QZCICalcFunc error"));
    check_two("OCINumberArcTan2", OCINumberArcTan2, &two, &zero, argument(22060, 3));
    check_two("OCINumberArcTan2", OCINumberArcTan2, &zero, &two, success, {1, 128});
    check_two("OCINumberSub", OCINumberSub, &positive_infinity, &positive_infinity,
              engine("OCINumberSub call QZCICalcFunc error"));
    check_two("OCINumberAdd", OCINumberAdd, &positive_infinity, &two, success, {2, 255, 101});
    check_two("OCINumberMul", OCINumberMul, &negative_infinity, &two, success, {1, 0});
}

TEST(Dispatch, EveryFunctionOfOne) {
    const struct {
        const char *name;
        OneParam f;
        OCINumber operand;
        std::vector<int> value;
        bool compared = false;  // the operand is compared with 1 and -1
    } rows[] = {
        {"OCINumberSin", OCINumberSin, zero, {1, 128}},
        {"OCINumberCos", OCINumberCos, zero, {2, 193, 2}},
        {"OCINumberTan", OCINumberTan, zero, {1, 128}},
        {"OCINumberArcSin", OCINumberArcSin, zero, {1, 128}, true},
        {"OCINumberArcCos", OCINumberArcCos, one, {1, 128}, true},
        {"OCINumberArcTan", OCINumberArcTan, zero, {1, 128}},
        {"OCINumberHypSin", OCINumberHypSin, zero, {1, 128}},
        {"OCINumberHypCos", OCINumberHypCos, zero, {2, 193, 2}},
        {"OCINumberHypTan", OCINumberHypTan, negative_infinity, {3, 62, 100, 102}},
        {"OCINumberCeil", OCINumberCeil, number({4, 62, 100, 51, 102}), {3, 62, 100, 102}},
        {"OCINumberExp", OCINumberExp, zero, {2, 193, 2}},
        {"OCINumberFloor", OCINumberFloor, number({4, 62, 100, 51, 102}), {3, 62, 99, 102}},
        {"OCINumberLn", OCINumberLn, one, {1, 128}},
        {"OCINumberSqrt", OCINumberSqrt, number({2, 193, 5}), {2, 193, 3}},
    };
    for (const auto &row : rows) {
        ErrorHandle err;
        OCINumber n = row.operand;
        EXPECT_EQ(row.f(err, &n, &n), 0);
        EXPECT_EQ(value_bytes(n), row.value) << row.name;
        if (!row.compared) check_one(row.name, row.f, &row.operand, success, row.value);
        check_one(row.name, row.f, &row.operand, invalid_handle, {}, false, true);
        check_one(row.name, row.f, nullptr, argument(21560, 2), {}, true);
        check_one(row.name, row.f, &invalid, argument(22060, 2), {}, true);
        check_one(row.name, row.f, &row.operand, argument(21560, 3), {}, true);
        if (!row.compared) {
            check_one(row.name, row.f, &bad_digit,
                      engine(text("%s call QZCICalcNumFromNumber error", row.name)));
        }
    }
}

TEST(Dispatch, DomainsOfOne) {
    check_one("OCINumberSqrt", OCINumberSqrt, &minus_four, argument(22060, 2));
    check_one("OCINumberSqrt", OCINumberSqrt, &negative_infinity, argument(22060, 2));
    check_one("OCINumberSqrt", OCINumberSqrt, &positive_infinity, success, {2, 255, 101});
    check_one("OCINumberLn", OCINumberLn, &zero, argument(22060, 2));
    check_one("OCINumberLn", OCINumberLn, &minus_one,
              engine("OCINumberLn call QZCICalcFunc error"));
    check_one("OCINumberLn", OCINumberLn, &zero_digit,
              engine("OCINumberLn call QZCICalcFunc error"));
    check_one("OCINumberSin", OCINumberSin, &negative_infinity,
              engine("OCINumberSin call QZCICalcFunc error"));
}

// The arc functions compare by the exported function, whose traces stand between theirs.
TEST(Dispatch, ArcDomainIsComparedInTheLog) {
    const OCINumber above = number({6, 193, 2, 1, 1, 1, 11}),  // 1.0000001
        below = number({7, 62, 100, 101, 101, 101, 91, 102});
    const struct {
        const char *name;
        OneParam f;
        const OCINumber *operand;
        size_t comparisons;
        bool refused;
    } rows[] = {
        {"OCINumberArcSin", OCINumberArcSin, &one, 2, false},
        {"OCINumberArcSin", OCINumberArcSin, &minus_one, 2, false},
        {"OCINumberArcSin", OCINumberArcSin, &above, 1, true},
        {"OCINumberArcSin", OCINumberArcSin, &below, 2, true},
        {"OCINumberArcCos", OCINumberArcCos, &one, 2, false},
        {"OCINumberArcCos", OCINumberArcCos, &minus_one, 2, false},
        {"OCINumberArcCos", OCINumberArcCos, &positive_infinity, 1, true},
        {"OCINumberArcCos", OCINumberArcCos, &negative_infinity, 2, true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ErrorHandle err;
        OCINumber result = number({});
        take_log();
        EXPECT_EQ(row.f(err, row.operand, &result), row.refused ? OCI_ERROR : OCI_SUCCESS);
        const auto log = take_log();
        ASSERT_EQ(log.size(), 2 + 2 * row.comparisons + row.refused);
        EXPECT_EQ(log[0], one_call(row.name, err.get(), row.operand, &result));
        for (size_t i = 1; i <= 2 * row.comparisons; i += 2) {
            const std::string start =
                text("D call OCINumberCmp with params [err:%p] [number1:%p] [number2:",
                     static_cast<void *>(err.get()), static_cast<const void *>(row.operand));
            EXPECT_EQ(log[i].substr(0, start.size()), start);
            EXPECT_EQ(log[i + 1], returned("OCINumberCmp", 0));
        }
        if (row.refused) {
            EXPECT_EQ(log[log.size() - 2],
                      "E 22060: argument [2] is an invalid or uninitialized number");
            EXPECT_EQ(err.message(), argument_error(22060, 2));
            EXPECT_EQ(result, number({}));
        }
        EXPECT_EQ(log.back(), returned(row.name, row.refused ? OCI_ERROR : OCI_SUCCESS));
    }
}

TEST(Dispatch, UnknownIndexIsOnlyLogged) {
    check_call({"index 14",
                [](OCIError *err) {
                    return oci_number::OCINumberOneParamMathCall(err, nullptr, nullptr, 14);
                },
                OCI_ERROR,
                0,
                "",
                {"E OCINumberOneParamMathCall get a invalid index 14"}});
}

TEST(Dispatch, Printers) {
    OCINumber z = zero, negative = minus_four, broken;
    std::memset(&broken, 7, sizeof broken);
    broken.OCINumberPart[0] = 255;
    QZCICalcNumber record;
    ASSERT_EQ(QZCICalcNumFromNumber(&record, &minus_four), 0);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(print_number(&z), 0);
    EXPECT_EQ(print_number(&negative), 0);
    EXPECT_EQ(print_number(&broken), 0);
    EXPECT_EQ(print_calc_number(&record), 0);
    std::string sevens;
    for (int i = 0; i < 21; ++i) sevens += ", 7";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "Len=1: 1, 128\nLen=3: 3, 62, 97, 102\nLen=255: 255" + sevens + "\nbuffer is -4\n");
}

}  // namespace
