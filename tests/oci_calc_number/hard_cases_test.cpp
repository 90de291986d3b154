// Results that are decided far behind the last digit, exact results and ties, the ends of
// the range, and the special operands.
#include <gtest/gtest.h>

#include <ucontext.h>

#include <algorithm>

#include "oracle.h"
#include "support/data.h"

namespace {

struct Row {
    std::string function, a, b, result;
};

std::vector<Row> rows() {
    std::vector<Row> rows;
    for (const auto &[line, c] : data_rows("hard_cases.txt"))
        rows.push_back({c[0], c[1], c[2] == "-" ? "" : c[2], c.size() > 3 ? c[3] : ""});
    EXPECT_GT(rows.size(), 250u);
    return rows;
}

std::string integer_power(const std::string &base, const std::string &exp) {
    QZCICalcNumber n = oracle::record(base);
    const bool ok = QZCICalcNumIntPower(&n, std::stoi(exp), &n) == OCI_SUCCESS;
    return ok ? oracle::text(n) : "error";
}

TEST(HardCases, Results) {
    for (const auto &[f, a, b, result] : rows()) {
        const bool whole = f == "intpower";
        EXPECT_EQ(whole ? integer_power(a, b) : oracle::actual(f, a, b),
                  result.empty() ? oracle::expected(whole ? "pow" : f, a, b + (whole ? "e0" : ""))
                                 : oracle::round20(result))
            << f << " " << a << " " << b;
    }
}

// The stack that calls take, the wide pass included, seen in a painted stack of their own.
TEST(HardCases, StackUse) {
    static std::vector<unsigned char> stack;
    static ucontext_t home, inside;
    static const Row *current;
    static QZCICalcNumber a, b;
    size_t deepest = 0;
    for (const Row &c : rows()) {
        if (c.function == "intpower") continue;
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
