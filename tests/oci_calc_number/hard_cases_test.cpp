// Results that are decided far behind the last digit, exact results and ties, the ends of
// the range, and the special operands.
#include <ucontext.h>

#include <algorithm>

#include "oracle.h"
#include "support/functions.h"

namespace {

struct Row {
    explicit Row(const std::vector<std::string> &c)
        : function(&::function(c[0])), count(function->has_count() ? std::stoi(c[2]) : 0) {
        a = from_text(c[1]);
        b = from_text(c[2] == "-" ? "0" : c[2]);
        if (c.size() == 4) {
            result = c[3] == "error" ? Bytes{} : bytes_of(c[3]);
        } else {
            const Decimal x(c[1]), y(c[2] == "-" ? "0" : c[2]);
            result = oracle::expected(function->has_count() ? "Power" : c[0], x, y);
        }
    }
    const Function *function;
    sword count;
    OCINumber a, b;
    Bytes result;
};

TEST(HardCases, Results) {
    for (const auto &[line, columns] : data_rows("hard_cases.txt")) {
        const Row row(columns);
        EXPECT_EQ(result_of(*row.function, row.a, row.b, row.count), row.result) << line;
    }
}

// The stack that calls take, the wide pass included, seen in a painted stack of their own.
TEST(HardCases, StackUse) {
    static std::vector<unsigned char> stack(1 << 17);
    static ucontext_t home, inside;
    static const Row *current;
    size_t deepest = 0;
    for (const auto &[line, columns] : data_rows("hard_cases.txt")) {
        const Row row(columns);
        current = &row;
        std::ranges::fill(stack, 0xA5);
        getcontext(&inside);
        inside.uc_stack.ss_sp = stack.data();
        inside.uc_stack.ss_size = stack.size();
        inside.uc_link = &home;
        makecontext(
            &inside, [] { result_of(*current->function, current->a, current->b, current->count); },
            0);
        swapcontext(&home, &inside);
        const auto unpainted = std::ranges::find_if(stack, [](int x) { return x != 0xA5; });
        deepest = std::max(deepest, static_cast<size_t>(stack.end() - unpainted));
    }
    RecordProperty("deepest", static_cast<int>(deepest));
    EXPECT_LT(deepest, 24u * 1024) << "what the test takes counts as well";
}

}  // namespace
