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

// The checks of (err, number, result), on the functions with that shape.
TEST(CallFrame, OneNumberAndResult) {
    using F = sword (*)(OCIError *, const OCINumber *, void *);
    struct Function {
        F call;
        const char *trace;
        const char *name;
    };
    const Function functions[] = {
        {[](auto e, auto n, void *r) { return OCINumberIsZero(e, n, static_cast<boolean *>(r)); },
         "call OCINumberIsZero with params [err:%p] [number:%p] [result:%p]", "OCNumberZero"},
        {[](auto e, auto n, void *r) { return OCINumberIsInt(e, n, static_cast<boolean *>(r)); },
         "call function OCINumberIsInt with param err %p,number:%p, result:%p", "OCINumberIsInt"},
        {[](auto e, auto n, void *r) { return OCINumberSign(e, n, static_cast<sword *>(r)); },
         "call OCINumberSign with params [err:%p] [number:%p] [result:%p]", "OCINumberSign"},
        {[](auto e, auto n, void *r) { return OCINumberAssign(e, n, static_cast<OCINumber *>(r)); },
         "call OCINumberAssign with params [err:%p] [from:%p] [to:%p]", "OCINumberAssign"},
    };
    struct Row {
        bool null_handle;
        const OCINumber *number;
        bool null_result;
        sword status;
        int code;
        int argument;
    };
    const Row rows[] = {
        {true, nullptr, true, -2, 0, 0},      {false, nullptr, true, -1, 21560, 2},
        {false, &empty, true, -1, 22060, 2},  {false, &too_long, true, -1, 22060, 2},
        {false, &one, true, -1, 21560, 3},    {true, &one, false, -2, 0, 0},
        {false, &empty, false, -1, 22060, 2}, {false, &one, false, 0, 0, 0},
    };
    for (const Function &f : functions) {
        for (const Row &row : rows) {
            SCOPED_TRACE(text("row %ld", &row - rows));
            const OCINumber untouched = number({});
            OCINumber result = untouched;
            void *rsl = row.null_result ? nullptr : &result;
            const std::string message = row.code ? argument_error(row.code, row.argument) : "";
            ErrorHandle err;
            OCIError *errhp = row.null_handle ? nullptr : err.get();
            take_log();
            EXPECT_EQ(f.call(errhp, row.number, rsl), row.status);
            EXPECT_EQ(err.code(), row.code);
            EXPECT_EQ(err.message(), message);
            EXPECT_TRUE(err.other_fields_untouched());
            if (row.status != OCI_SUCCESS) EXPECT_EQ(result, untouched);

            char trace[200];
            std::snprintf(trace, sizeof trace, f.trace, static_cast<void *>(errhp),
                          static_cast<const void *>(row.number), rsl);
            std::vector<std::string> log = {std::string("D ") + trace};
            // The log has the message without prefix and line end.
            if (row.null_handle) log.push_back("E get a invalid handle");
            if (row.code) log.push_back("E " + message.substr(4, message.size() - 5));
            log.push_back(returned(f.name, row.status));
            EXPECT_EQ(take_log(), log);
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
