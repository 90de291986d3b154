// Any bytes in a record: no function reads or writes beyond the 22 bytes of its
// operand and result, and a result that it gives is a number with its bytes in
// range.
#include "oci_utils/oci_utils.h"
#include "support/functions.h"
#include "support/guard_page.h"

namespace {

// The codec reads a record for all conversions.
const Function::Call codec = [](auto, auto n, auto, auto, auto r) {
    OraText text[300];
    ub2 size = sizeof text;
    const sword status = getStrFromNumber(n, text, &size);
    return status != 0 ? status : getNumberFromStr(r, text, size);
};

// Any bytes behind a length byte; or a number but for what follows its value.
OCINumber random_record(std::mt19937_64 &random, int length, bool is_number) {
    OCINumber n;
    for (ub1 &b : n.OCINumberPart) b = static_cast<ub1>(random());
    if (is_number && length >= 2 && length <= 21) {
        const bool negative = n.OCINumberPart[1] % 128 == 0 || random() % 2;
        n.OCINumberPart[1] = static_cast<ub1>(negative ? random() % 127 : 129 + random() % 127);
        for (int i = 2; i <= length; ++i) {
            n.OCINumberPart[i] = static_cast<ub1>(1 + negative + random() % 100);
        }
        if (negative && length < 21) n.OCINumberPart[length] = 102;
    }
    n.OCINumberPart[0] = static_cast<ub1>(length);
    return n;
}

TEST(Records, AnyBytesAtTheEdgeOfMemory) {
    auto random = seeded();
    ErrorHandle err;
    const OCINumber filled = hex("02C102");
    for (const auto side :
         {GuardedBytes::Against::page_behind, GuardedBytes::Against::page_before}) {
        const GuardedBytes operand_memory(&filled, sizeof filled, side);
        const GuardedBytes result_memory(&filled, sizeof filled, side);
        auto *const operand = operand_memory.as<OCINumber>();
        auto *const result = result_memory.as<OCINumber>();
        for (long i = random_cases(40) * 256; i > 0; --i) {
            const OCINumber n = random_record(random, static_cast<int>(i % 256), i / 256 % 2);
            const bool well_formed = is_well_formed(n);
            const sword count = static_cast<sword>(random()) >> random() % 32;
            // With a number in `result`, and with `operand`, as the other operand.
            const auto check = [&](const std::string &name, const Function::Call &call,
                                   OCINumber *a, OCINumber *b, OCINumber *r) {
                *operand = n;
                *result = filled;
                const sword status = call(err, a, b, count, r);
                take_log();
                if (r != operand) ASSERT_EQ(*operand, n) << name;
                if (status != OCI_SUCCESS || !well_formed) return;
                ASSERT_TRUE(is_well_formed(*(r == operand ? operand : result)))
                    << name << " by " << count << " of " << ::testing::PrintToString(n) << "gives "
                    << ::testing::PrintToString(*result);
            };
            for (const Function &f : functions) {
                alignas(8) OCINumber integer;
                OCINumber *const r = f.gives_number ? result : &integer;
                check(f.name, f.call, operand, result, f.result == 0 ? operand : r);
                if (f.numbers < 2) continue;
                check(f.name, f.call, result, operand, r);
                check(f.name, f.call, operand, operand, r);
            }
            check("codec", codec, operand, nullptr, result);
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
