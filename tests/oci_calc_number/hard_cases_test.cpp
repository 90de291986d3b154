// Results that are decided far behind the last digit, exact results and ties, the ends of
// the range, and the special operands.
#include <gtest/gtest.h>

#include <ucontext.h>

#include <algorithm>
#include <span>
#include <sstream>
#include <vector>

#include "oracle.h"

namespace {

// Operands of a function: "a" or "a,b", "=result" after them where it is not MPFR's to say.
struct Cases {
    const char *function, *calls;
};

struct Call {
    std::string function, a, b, result;
};

std::vector<Call> split(std::span<const Cases> cases) {
    std::vector<Call> calls;
    for (const Cases &c : cases) {
        std::istringstream words(c.calls);
        for (std::string word; words >> word;) {
            Call call{c.function, word.substr(0, word.find('=')), "", ""};
            if (call.a != word) call.result = word.substr(call.a.size() + 1);
            if (const size_t comma = call.a.find(','); comma != std::string::npos) {
                call.b = call.a.substr(comma + 1);
                call.a.resize(comma);
            }
            calls.push_back(call);
        }
    }
    return calls;
}

// Decided by the second or third term of a series at a simple point; expectations by MPFR.
constexpr Cases series_cases[] = {
    {"exp",
     "1e-19 5e-39 -5e-39 -5e-41 15e-39 49999999999999999999999999999999999999e-76 5e-20 "
     "-1e-20 -1e-40 1e-13 1e-128 -1e-128"},
    {"ln",
     "100000000000000000001e-20 99999999999999999999e-20 "
     "100000000000000000000000000000000000001e-38 "
     "1000000000000000000000000000000000000003e-39 "
     "9999999999999999999999999999999999999999e-40 "
     "9999999999999999999999999999999999999997e-40"},
    {"sin", "1e-20 1e-21 3e-21 1e-14 1e-24 9e-25 1e-128 99999999e-32 6e-14"},
    {"cos", "1e-20 3e-20 1e-19 1e-10 1e-24 9999999999999999999e-39 10000000000000000001e-39"},
    {"tan", "1e-20 1e-21 3e-14 1e-30"},
    {"asin",
     "1e-20 6e-14 1e-40 9999999999999999999999999999999999999999e-40 "
     "99999999999999999999e-20"},
    {"acos",
     "9999999999999999999999999999999999999999e-40 1e-40 -1e-40 "
     "-9999999999999999999999999999999999999999e-40 1e-128"},
    {"atan", "1e-20 3e-14 1e-25 1e20 1e39 1e40 -1e125 1e-127 1e0 -1e0"},
    {"sinh", "1e-20 6e-14 1e-30"},
    {"cosh", "1e-19 1e-20 14142135623730950488e-38"},
    {"tanh", "1e-20 3e-14 1e-30 463e-1 467e-1 64e0 6399e-2 -1e100"},
    {"pow",
     "100000000000000000000000000000000000001e-38,5e0 "
     "100000000000000000000000000000000000001e-38,5e-1 "
     "100000000000000000000000000000000000001e-38,-5e-1 "
     "100000000000000000000000000000000000001e-38,15e-1 "
     "100000000000000000000000000000000000003e-38,5e-1 "
     "9999999999999999999999999999999999999999e-40,5e-1 "
     "9999999999999999999999999999999999999999e-40,15e-1 99999999999999999999e-20,2e0 "
     "100000000000000000001e-20,2e0 100000000000000000001e-20,3e0 1e125,1e-60 2e0,1e-128 "
     "100000000000000000000000000000000000001e-38,1e40 "
     "100000000000000000000000000000000000001e-38,-1e41"},
};

// Exact results, exact ties, and their neighbours: powers, and quotients y/x that are exact
// ties, which the cubic term of the arc tangent keeps the angle below.
constexpr Cases exact_cases[] = {
    {"pow",
     "2e0,10e0 4e0,5e-1 32e0,2e-1 1e2,-15e-1 11e-1,20e0 11e-1,40e0 2e0,-57e0 -2e0,-57e0 "
     "2e0,-56e0 2e0,-58e0 4e0,-285e-1 16e0,-1425e-2 5e0,57e0 2e0,132e0 2e0,133e0 5e-1,57e0 "
     "625e-4,1425e-2 2e-4,5e-1 1e-128,5e-1 1e-127,5e-1 100000000000000000005e-20,2e0 "
     "100000000000000000005e-19,2e0 15e0,35e0 15e0,34e0 105e0,20e0 "
     "20000000000000000001e0,2e0 244140625e0,5e-1 "
     "4000000000000000000000000000000000000001e0,5e-1 "
     "3999999999999999999999999999999999999999e0,5e-1 1e1,125e0 1e1,126e0 1e1,-128e0 "
     "1e1,-129e0 1e-4,32e0 1e4,315e-1 1024e0,3e-1 99999999999999999999e0,1e0 7e0,1e0 "
     "7e0,-1e0"},
    {"atan2",
     "1e-100,16777216e1 -1e-60,1152921504606846976e-10 1e-120,144115188075855872e80 "
     "1e-128,288230376151711744e0 1e-110,144115188075855872e0 1e-45,144115188075855872e0 "
     "1e-34,144115188075855872e0 1e-10,144115188075855872e0 1e-128,144115188075855872e-40 "
     "1e-127,144115188075855872e-40 1e-120,144115188075855872e-31 "
     "1e-121,144115188075855872e-33 1e0,144115188075855872e50 1e1,144115188075855872e51 "
     "3e-100,7e0 3e-100,-7e0 -3e-100,-7e0 1e-60,1e0 1e-60,1e10 1e100,1e-100 1e-128,9e0 "
     "1e-128,1e125 -1e125,-1e125"},
};

// Where results leave the range, and large angles.
constexpr Cases range_cases[] = {
    {"exp",
     "290125717717244543147793961834568602e-33 290125717717244e-12 290126e-3 -294730888e-6 "
     "-294730889e-6 -1e125 1e125 511e0 -512e0 2901257177172445431477939618345686082e-34"},
    {"sinh", "290818864e-6 290818865e-6 -1e3"},
    {"cosh", "-290818865e-6 1e60"},
    {"ln", "1e125 1e-128 2e0 99999999e118"},
    {"sin", "1e125 -9999999999999999999999999999999999999999e86 22e0 355e0"},
    {"cos", "1e125 11e0"},
    {"tan", "1e125 11e0 355e0"},
    {"pow",
     "1e63,2e0 1e63,1999999999999999999999999999999999e-33 1e-64,2e0 "
     "1e-64,2000000000000000000000000000000000001e-36 "
     "9999999999999999999999999999999999999999e86,1000000000000000000000000000000000001e-36 "
     "-3e0,265e0 -3e0,-269e0 1e125,1e125 1e-125,1e125"},
};

TEST(HardCases, AgreeWithMpfr) {
    for (const auto &cases :
         {std::span<const Cases>(series_cases), std::span<const Cases>(exact_cases),
          std::span<const Cases>(range_cases)})
        for (const Call &c : split(cases))
            EXPECT_EQ(oracle::actual(c.function, c.a, c.b), oracle::expected(c.function, c.a, c.b))
                << c.function << " " << c.a << " " << c.b;
}

constexpr Cases special_cases[] = {
    {"exp", "0=1e0 inf=inf -inf=0"},
    {"ln", "1e0=0 0=error -1e0=error inf=inf -inf=error"},
    {"sin", "0=0 inf=error"},
    {"cos", "0=1e0 -inf=error"},
    {"tan", "0=0 inf=error"},
    {"asin",
     "0=0 10000001e-7=error inf=error 1e0=157079632679489661923132169163975144210e-38 "
     "-1e0=-157079632679489661923132169163975144210e-38"},
    {"acos",
     "1e0=0 -2e0=error -inf=error 0=157079632679489661923132169163975144210e-38 "
     "-1e0=314159265358979323846264338327950288420e-38"},
    {"atan",
     "0=0 inf=157079632679489661923132169163975144210e-38 "
     "-inf=-157079632679489661923132169163975144210e-38"},
    {"sinh", "0=0 inf=inf -inf=-inf"},
    {"cosh", "0=1e0 -inf=inf"},
    {"tanh", "0=0 inf=1e0 -inf=-1e0"},
    {"atan2",
     "0,5e0=0 0,0=0 0,inf=0 0,-5e0=314159265358979323846264338327950288420e-38 "
     "1e-128,-inf=314159265358979323846264338327950288420e-38 "
     "-7e0,-inf=-314159265358979323846264338327950288420e-38 "
     "3e0,0=157079632679489661923132169163975144210e-38 "
     "-3e0,0=-157079632679489661923132169163975144210e-38 "
     "-inf,9e9=-157079632679489661923132169163975144210e-38 "
     "inf,inf=7853981633974483096156608458198757210493e-40 "
     "-inf,-inf=-235619449019234492884698253745962716315e-38 -5e0,inf=0"},
    {"pow",
     "0,0=1e0 inf,0=1e0 -inf,0=1e0 0,3e0=0 0,inf=0 0,-1e0=error 0,-5e-1=error 0,-inf=error "
     "-2e0,5e-1=error -inf,5e-1=error -2e0,3e0=-8e0 -2e0,1e8=inf -2e0,100000001e0=-inf "
     "-1e0,9999999999999999999999999999999999999999e0=-1e0 -1e0,1e125=1e0 1e0,inf=1e0 "
     "1e0,-inf=1e0 -1e0,inf=1e0 -1e0,-inf=1e0 2e0,inf=inf -2e0,inf=inf 2e0,-inf=0 "
     "5e-1,inf=0 5e-1,-inf=inf 15e-1,inf=inf 100000001e-8,-inf=0 inf,2e0=inf inf,-2e0=0 "
     "inf,inf=inf inf,-inf=0 -inf,3e0=-inf -inf,2e0=inf -inf,-3e0=0 -inf,inf=inf "
     "-inf,-inf=0"},
};

TEST(HardCases, Specials) {
    for (const Call &c : split(special_cases))
        EXPECT_EQ(oracle::actual(c.function, c.a, c.b), oracle::round20(c.result))
            << c.function << " " << c.a << " " << c.b;
}

TEST(HardCases, IntegerPowers) {
    constexpr sword least = -2147483647 - 1;
    constexpr struct {
        const char *base;
        sword exp;
        const char *result;
    } cases[] = {
        {"2e0", 10, "1024e0"},        {"2e0", -2, "25e-2"},   {"0", 0, "1e0"},
        {"0", -1, "error"},           {"-inf", 0, "1e0"},     {"-inf", -1, "0"},
        {"-inf", 2147483647, "-inf"}, {"-1e0", least, "1e0"}, {"-1e0", 2147483647, "-1e0"},
        {"2e0", least, "0"},          {"5e-1", least, "inf"}, {"-5e-1", -2147483647, "-inf"},
        {"1e63", 2, "inf"},           {"1e-64", 2, "1e-128"},
    };
    for (const auto &c : cases) {
        QZCICalcNumber n = oracle::record(c.base);
        const std::string got =
            QZCICalcNumIntPower(&n, c.exp, &n) == OCI_SUCCESS ? oracle::text(n) : "error";
        EXPECT_EQ(got, c.result) << c.base << "^" << c.exp;
    }
    QZCICalcNumber n = oracle::record("100000000000000001e-17");
    EXPECT_EQ(QZCICalcNumIntPower(&n, least, &n), OCI_SUCCESS);
    EXPECT_EQ(oracle::text(n), oracle::expected("pow", "100000000000000001e-17", "-2147483648e0"));
}

// Records that no number converts to are refused, not read beyond.
TEST(HardCases, OverlongRecords) {
    QZCICalcNumber n = oracle::record("1e0");
    for (ub4 &limb : n.data_part) limb = 12345678;
    n.start_pos = 0;
    n.end_pos = -39;
    QZCICalcNumber result;
    for (auto *f :
         {QZCICalcNumExp, QZCICalcNumLn, QZCICalcNumSinWithRound, QZCICalcNumAtan, QZCICalcNumSinh})
        EXPECT_EQ(f(&n, &result), OCI_ERROR);
    EXPECT_EQ(QZCICalcNumPower(&n, &n, &result), OCI_ERROR);
}

// The stack that calls take, the wide pass included, seen in a painted stack of their own.
TEST(HardCases, StackUse) {
    static std::vector<unsigned char> stack;
    static ucontext_t home, inside;
    static const Call *current;
    static QZCICalcNumber a, b;
    size_t deepest = 0;
    const std::vector<Call> calls = split(series_cases);
    for (const Call &c : calls) {
        current = &c;
        a = oracle::record(c.a);
        b = oracle::record(c.b.empty() ? c.a : c.b);
        stack.assign(1 << 17, 0xA5);
        getcontext(&inside);
        inside.uc_stack.ss_sp = stack.data();
        inside.uc_stack.ss_size = stack.size();
        inside.uc_link = &home;
        makecontext(
            &inside, [] { oracle::call(current->function.c_str(), a, b, a); }, 0);
        swapcontext(&home, &inside);
        const auto used = static_cast<size_t>(
            stack.end() -
            std::find_if(stack.begin(), stack.end(), [](unsigned char x) { return x != 0xA5; }));
        deepest = std::max(deepest, used);
    }
    RecordProperty("deepest", static_cast<int>(deepest));
    EXPECT_LT(deepest, 16u * 1024) << "the wrapper's frames count as well";
}

}  // namespace
