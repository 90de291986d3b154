// What every call has in common: traces, argument checks, errors.
#include "oci_number/call_frame.h"
#include "oci_number/calc_bridge.h"

#include "support/functions.h"

using namespace oci_number;

namespace {

const char *const null_argument = "21560: argument %d is null, invalid, or out of range\n",
                  *const invalid_number =
                      "22060: argument [%d] is an invalid or uninitialized number\n";

// Every function, with each argument bad in turn and all behind it bad too.
TEST(CallFrame, EveryFunction) {
    const OCINumber half = hex("02C033"), untouched = number({});
    OCINumber good = half, empty = hex("00C102"), long_one = hex("16C102"),
              bad_digit = hex("02C1C8");
    struct Row {
        bool null_handle;
        OCINumber *a, *b;
        bool null_result;
        int code, argument;  // argument 0: that of the result
    };
    const Row rows[] = {
        {true, nullptr, nullptr, true, 0, 0},         {true, &good, &good, false, 0, 0},
        {false, nullptr, &empty, true, 21560, 2},     {false, &empty, nullptr, true, 22060, 2},
        {false, &long_one, nullptr, false, 22060, 2}, {false, &good, nullptr, true, 21560, 3},
        {false, &good, &empty, true, 22060, 3},       {false, &good, &long_one, false, 22060, 3},
        {false, &good, &good, true, 21560, 0},        {false, &bad_digit, &good, false, 602, 0},
        {false, &good, &bad_digit, false, 602, 0},    {false, &good, &good, false, 0, 0},
    };
    for (const Function &f : functions) {
        const bool engine = &f >= &function("Add");
        const bool is_arc = f.name == "ArcSin" || f.name == "ArcCos";
        for (const Row &row : rows) {
            const bool about_b = row.argument == 3 || row.b == &bad_digit;
            if (about_b && f.numbers < 2) continue;
            if (row.code == 21560 && row.argument == 0 && f.result == 0) continue;
            if (row.code == 602 && (!engine || is_arc)) continue;
            const std::string name = "OCINumber" + f.name;
            SCOPED_TRACE(text("%s, row %ld", name.c_str(), &row - rows));
            good = half;
            alignas(8) OCINumber result = untouched;
            ErrorHandle err;
            OCIError *const e = row.null_handle ? nullptr : err.get();
            OCINumber *const r = row.null_result ? nullptr : &result;
            std::string trace = "D call " + (f.name == "Log" ? "OCINumberLon" : name) +
                                " with params [err:%e] " + f.parameters;
            if (f.name == "IsInt") {
                trace = "D call function OCINumberIsInt with param err %e,number:%a, result:%r";
            }
            for (const auto &[mark, value] : {std::pair{"%e", text("%p", e)},
                                              {"%a", text("%p", row.a)},
                                              {"%b", text("%p", row.b)},
                                              {"%c", std::string("-200")},
                                              {"%r", text("%p", r)}}) {
                if (const size_t at = trace.find(mark); at != trace.npos) {
                    trace.replace(at, 2, value);
                }
            }
            const sword status = row.null_handle ? -2 : row.code != 0 ? -1 : 0;
            const int argument = row.argument != 0 ? row.argument : f.result;
            std::string inner, message;
            if (row.null_handle) inner = "E get a invalid handle\n";
            if (row.code == 21560) message = text(null_argument, argument);
            if (row.code == 22060) message = text(invalid_number, argument);
            if (row.code == 602) {
                message = f.name == "Log" ? "OCINumberLn failed to convert number to calcnumber"
                                          : name + " call QZCICalcNumFromNumber error";
                inner = "E " + message + "\n";
            } else if (row.code != 0) {
                inner = "E " + message;
                message.insert(0, "OCI-");
            }
            if (status == 0 && (f.name == "Dec" || (f.has_count() && !engine))) {
                inner = "D call OCINumberSetZero with params [err:P] [number:P]\n";
            }
            if (status == 0 && is_arc) {
                inner =
                    "D call OCINumberCmp with params [err:P] [number1:P] [number2:P] [result:P]\n"
                    "D function OCINumberCmp return with status 0\n";
                inner += inner;
            }
            take_log();
            EXPECT_EQ(f.call(e, row.a, row.b, -200, r), status);
            auto log = take_log();
            ASSERT_GE(log.size(), 2u);
            EXPECT_EQ(log.front(), trace);
            const std::string traced_name = f.name == "IsZero" ? "OCNumberZero"
                                            : f.name == "Log"  ? "OCNumberLog"
                                                               : name;
            EXPECT_EQ(log.back(),
                      text("D function %s return with status %d", traced_name.c_str(), status));
            std::string said;
            for (size_t i = 1; i + 1 < log.size(); ++i) said += log[i] + "\n";
            EXPECT_EQ(masked(said), inner);
            EXPECT_EQ(err.code(), row.code);
            EXPECT_EQ(err.message(), message);
            EXPECT_TRUE(err.other_fields_untouched());
            EXPECT_EQ(result == untouched, status != 0 || f.result == 0);
            EXPECT_EQ(good == half, status != 0 || f.result != 0);
        }
    }
}

TEST(CallFrame, UnknownIndexIsOnlyLogged) {
    ErrorHandle err;
    take_log();
    EXPECT_EQ(OCINumberOneParamMathCall(err, nullptr, nullptr, 14), OCI_ERROR);
    EXPECT_EQ(take_masked_log(), "E OCINumberOneParamMathCall get a invalid index 14\n");
    EXPECT_EQ(err.code(), 0);
}

}  // namespace
