// What every call has in common: traces, argument checks, errors.
#include "oci_number/oci_number.h"

#include "support/numbers.h"

using namespace oci_number;

namespace {

const OCINumber one = number({2, 193, 2});
const OCINumber empty = number({0, 193, 2});
const OCINumber too_long = number({22, 193, 2});

std::string returned(const char *name, int status) {
    return text("D function %s return with status %d", name, status);
}

// Functions of one number: (err, number, result), with a count before the
// result, or in place. `result` is the number of the result argument; `nested`
// tells whether the result zero is set by a traced call.
TEST(CallFrame, OneNumber) {
    const struct {
        sword (*call)(OCIError *, OCINumber *, OCINumber *);
        const char *trace, *name;
        int result;
        bool nested;
    } functions[] = {
        {[](auto e, auto n, auto r) { return OCINumberIsZero(e, n, reinterpret_cast<int *>(r)); },
         "call OCINumberIsZero with params [err:%p] [number:%p] [result:%p]", "OCNumberZero", 3,
         false},
        {[](auto e, auto n, auto r) { return OCINumberIsInt(e, n, reinterpret_cast<int *>(r)); },
         "call function OCINumberIsInt with param err %p,number:%p, result:%p", "OCINumberIsInt", 3,
         false},
        {[](auto e, auto n, auto r) { return OCINumberSign(e, n, reinterpret_cast<int *>(r)); },
         "call OCINumberSign with params [err:%p] [number:%p] [result:%p]", "OCINumberSign", 3,
         false},
        {[](auto e, auto n, auto r) { return OCINumberAssign(e, n, r); },
         "call OCINumberAssign with params [err:%p] [from:%p] [to:%p]", "OCINumberAssign", 3,
         false},
        {[](auto e, auto n, auto r) { return OCINumberAbs(e, n, r); },
         "call OCINumberAbs with params [err:%p] [number:%p] [result:%p]", "OCINumberAbs", 3,
         false},
        {[](auto e, auto n, auto r) { return OCINumberNeg(e, n, r); },
         "call OCINumberNeg with params [err:%p] [number:%p] [result:%p]", "OCINumberNeg", 3,
         false},
        {[](auto e, auto n, auto r) { return OCINumberShift(e, n, -200, r); },
         "call OCINumberShift with params [err:%p] [number:%p] [nDig:-200] [result:%p]",
         "OCINumberShift", 4, true},
        {[](auto e, auto n, auto r) { return OCINumberPrec(e, n, -200, r); },
         "call OCINumberPrec with params [err:%p] [number:%p] [dcplace:-200] [result:%p]",
         "OCINumberPrec", 4, true},
        {[](auto e, auto n, auto r) { return OCINumberRound(e, n, -200, r); },
         "call OCINumberRound with params [err:%p] [number:%p] [dcplace:-200] [result:%p]",
         "OCINumberRound", 4, true},
        {[](auto e, auto n, auto r) { return OCINumberTrunc(e, n, -200, r); },
         "call OCINumberTrunc with params [err:%p] [number:%p] [dcplace:-200] [result:%p]",
         "OCINumberTrunc", 4, true},
        {[](auto e, auto n, auto) { return OCINumberInc(e, n); },
         "call OCINumberInc with params [err:%p] [number:%p]", "OCINumberInc", 0, false},
        {[](auto e, auto n, auto) { return OCINumberDec(e, n); },
         "call OCINumberDec with params [err:%p] [number:%p]", "OCINumberDec", 0, true},
    };
    OCINumber operands[] = {one, empty, too_long};
    const struct {
        bool null_handle;
        OCINumber *number;
        bool null_result;
        sword status;
        int code, argument;  // argument 0: that of the result
    } rows[] = {
        {true, nullptr, true, -2, 0, 0},
        {true, &operands[0], false, -2, 0, 0},
        {false, nullptr, true, -1, 21560, 2},
        {false, &operands[1], true, -1, 22060, 2},
        {false, &operands[2], false, -1, 22060, 2},
        {false, &operands[0], true, -1, 21560, 0},
        {false, &operands[0], false, 0, 0, 0},
    };
    const OCINumber untouched = number({});
    for (const auto &f : functions) {
        for (const auto &row : rows) {
            if (row.code != 0 && row.argument == 0 && f.result == 0) continue;
            SCOPED_TRACE(text("%s, row %ld", f.name, &row - rows));
            operands[0] = one;
            OCINumber result = untouched;
            ErrorHandle err;
            OCIError *errhp = row.null_handle ? nullptr : err.get();
            OCINumber *rsl = row.null_result ? nullptr : &result;
            const std::string message =
                row.code ? argument_error(row.code, row.argument ? row.argument : f.result) : "";
            char trace[200];
            std::snprintf(trace, sizeof trace, f.trace, static_cast<void *>(errhp),
                          static_cast<void *>(row.number), static_cast<void *>(rsl));
            std::vector<std::string> log = {std::string("D ") + trace};
            // The log has the message without prefix and line end.
            if (row.null_handle) log.push_back("E get a invalid handle");
            if (row.code) log.push_back("E " + message.substr(4, message.size() - 5));
            if (row.status == 0 && f.nested) {
                log.push_back(text("D call OCINumberSetZero with params [err:%p] [number:%p]",
                                   static_cast<void *>(errhp),
                                   static_cast<void *>(f.result ? rsl : row.number)));
            }
            log.push_back(returned(f.name, row.status));
            take_log();
            EXPECT_EQ(f.call(errhp, row.number, rsl), row.status);
            EXPECT_EQ(take_log(), log);
            EXPECT_EQ(err.message(), message);
            EXPECT_TRUE(err.other_fields_untouched());
            if (row.status != OCI_SUCCESS) {
                EXPECT_EQ(result, untouched);
                EXPECT_EQ(operands[0], one);
            }
        }
    }
}

TEST(CallFrame, TwoNumbersAndResult) {
    struct Row {
        const OCINumber *number1, *number2;
        bool null_result;
        int code, argument;
    };
    const Row rows[] = {
        {nullptr, &empty, true, 21560, 2}, {&empty, nullptr, true, 22060, 2},
        {&one, nullptr, true, 21560, 3},   {&one, &empty, true, 22060, 3},
        {&one, &too_long, true, 22060, 3}, {&one, &one, true, 21560, 4},
    };
    for (const Row &row : rows) {
        sword result = 7;
        sword *rsl = row.null_result ? nullptr : &result;
        const std::string message = argument_error(row.code, row.argument);
        check_call({"OCINumberCmp",
                    [&](OCIError *err) {
                        const sword status = OCINumberCmp(err, row.number1, row.number2, rsl);
                        const auto log = take_log();
                        EXPECT_EQ(
                            log[0],
                            text("D call OCINumberCmp with params [err:%p] "
                                 "[number1:%p] [number2:%p] [result:%p]",
                                 static_cast<void *>(err), static_cast<const void *>(row.number1),
                                 static_cast<const void *>(row.number2), static_cast<void *>(rsl)));
                        EXPECT_EQ(log[1], "E " + message.substr(4, message.size() - 5));
                        EXPECT_EQ(log[2], returned("OCINumberCmp", -1));
                        EXPECT_EQ(log.size(), 3u);
                        return status;
                    },
                    -1,
                    row.code,
                    message,
                    {}});
    }
    sword result = 7;
    EXPECT_EQ(OCINumberCmp(nullptr, &one, &one, &result), OCI_INVALID_HANDLE);
    EXPECT_EQ(result, 7);
}

TEST(CallFrame, SuccessKeepsTheFormerError) {
    ErrorHandle err;
    boolean result;
    OCINumberIsZero(err, nullptr, &result);
    ASSERT_EQ(OCINumberIsZero(err, &one, &result), OCI_SUCCESS);
    EXPECT_EQ(err.message(), argument_error(21560, 2));
}

// Error 22062 quotes any number of unterminated bytes, cut at 3072 characters.
TEST(CallFrame, InvalidInputString) {
    ErrorHandle err;
    take_log();
    EXPECT_EQ(OCINumberError22062(err, "1x2y", 3), OCI_ERROR);
    EXPECT_EQ(err.message(), "OCI-22062: invalid input string [1x2]\n");
    EXPECT_EQ(take_log(),
              std::vector<std::string>{"E call OCINumberFromText with invalid str [1x2]"});
    err.reset();
    const std::string endless(5000, '9');
    OCINumberError22062(err, endless.c_str(), 4294967295u);
    EXPECT_EQ(err.message(), "OCI-22062: invalid input string [" + endless.substr(0, 3072 - 33));
    EXPECT_TRUE(err.other_fields_untouched());
}

}  // namespace
