// Any bytes in a record: no function reads or writes beyond the 22 bytes of its
// operand and result, and a result that it gives is a number with its bytes in
// range.
#include "oci_utils/oci_utils.h"
#include "support/guard_page.h"
#include "support/numbers.h"

namespace {

using Function = sword (*)(OCIError *, OCINumber *, sword, OCINumber *);

const struct {
    const char *name;
    Function call;
} functions[] = {
    {"IsZero", [](auto e, auto n, auto c, auto) { return OCINumberIsZero(e, n, &c); }},
    {"IsInt", [](auto e, auto n, auto c, auto) { return OCINumberIsInt(e, n, &c); }},
    {"Sign", [](auto e, auto n, auto c, auto) { return OCINumberSign(e, n, &c); }},
    {"Cmp", [](auto e, auto n, auto c, auto r) { return OCINumberCmp(e, n, r, &c); }},
    {"Assign", [](auto e, auto n, auto, auto r) { return OCINumberAssign(e, n, r); }},
    {"SetPi", [](auto e, auto, auto, auto r) { return OCINumberSetPi(e, r), 0; }},
    {"Abs", [](auto e, auto n, auto, auto r) { return OCINumberAbs(e, n, r); }},
    {"Neg", [](auto e, auto n, auto, auto r) { return OCINumberNeg(e, n, r); }},
    {"Shift", [](auto e, auto n, auto c, auto r) { return OCINumberShift(e, n, c, r); }},
    {"Inc", [](auto e, auto n, auto, auto r) { return *r = *n, OCINumberInc(e, r); }},
    {"Dec", [](auto e, auto n, auto, auto r) { return *r = *n, OCINumberDec(e, r); }},
    {"Prec", [](auto e, auto n, auto c, auto r) { return OCINumberPrec(e, n, c, r); }},
    {"Round", [](auto e, auto n, auto c, auto r) { return OCINumberRound(e, n, c, r); }},
    {"Trunc", [](auto e, auto n, auto c, auto r) { return OCINumberTrunc(e, n, c, r); }},
    {"ToInt",
     [](auto e, auto n, auto, auto) {
         sb8 value;
         return OCINumberToInt(e, n, 8, OCI_NUMBER_SIGNED, &value);
     }},
    {"FromInt",
     [](auto e, auto n, auto, auto r) {
         return OCINumberFromInt(e, n->OCINumberPart + 14, 8, OCI_NUMBER_SIGNED, r);
     }},
    {"ToReal",
     [](auto e, auto n, auto, auto) {
         long double value;
         return OCINumberToReal(e, n, sizeof value, &value);
     }},
    {"FromReal",
     [](auto e, auto n, auto, auto r) { return OCINumberFromReal(e, n->OCINumberPart, 16, r); }},
    {"ToText",
     [](auto e, auto n, auto, auto) {
         OraText text[128];
         ub4 size = sizeof text;
         return OCINumberToText(e, n, reinterpret_cast<const OraText *>("TM"), 2, nullptr, 0, &size,
                                text);
     }},
    {"FromText",
     [](auto e, auto n, auto, auto r) {
         return OCINumberFromText(e, n->OCINumberPart, 22, reinterpret_cast<const OraText *>("9"),
                                  1, nullptr, 0, r);
     }},
#define UNARY(name)                                                                  \
    {                                                                                \
#name, [](auto e, auto n, auto, auto r) { return OCINumber##name(e, n, r); } \
    }
    UNARY(Sin),
    UNARY(Cos),
    UNARY(Tan),
    UNARY(ArcSin),
    UNARY(ArcCos),
    UNARY(ArcTan),
    UNARY(HypSin),
    UNARY(HypCos),
    UNARY(HypTan),
    UNARY(Ceil),
    UNARY(Exp),
    UNARY(Floor),
    UNARY(Ln),
    UNARY(Sqrt),
// With a valid second operand, and with any bytes there.
#define BINARY(name)                                                                              \
    {#name " 1", [](auto e, auto n, auto, auto r) { return OCINumber##name(e, n, r, r); }},       \
        {#name " 2", [](auto e, auto n, auto, auto r) { return OCINumber##name(e, r, n, r); }}, { \
#name " 3", [](auto e, auto n, auto, auto r) { return OCINumber##name(e, n, n, r); }      \
    }
    BINARY(Add),
    BINARY(Sub),
    BINARY(Mul),
    BINARY(Div),
    BINARY(Mod),
    BINARY(Power),
    BINARY(ArcTan2),
    BINARY(Log),
    {"IntPower", [](auto e, auto n, auto c, auto r) { return OCINumberIntPower(e, n, c, r); }},
    {"codec",
     [](auto, auto n, auto, auto r) {
         OraText text[300];
         ub2 size = sizeof text;
         const sword status = getStrFromNumber(n, text, &size);
         return status != 0 ? status : getNumberFromStr(r, text, size);
     }},
};

// A number as the format has it, normal form aside.
bool is_well_formed(const OCINumber &n) {
    const ub1 *b = n.OCINumberPart;
    if (b[0] == 1) return b[1] == 0 || b[1] == 128;
    if (b[0] == 2 && b[1] == 255 && b[2] == 101) return true;
    if (b[0] < 2 || b[0] > 21 || b[1] == 127 || b[1] == 128) return false;
    const bool negative = b[1] < 128;
    const int last = b[0] - (negative && b[b[0]] == 102 ? 1 : 0);
    if (negative && last == b[0] && last != 21) return false;
    for (int i = 2; i <= last; ++i) {
        if (negative ? b[i] < 2 || b[i] > 101 : b[i] < 1 || b[i] > 100) return false;
    }
    return last >= 2;
}

TEST(Records, AnyBytesAtTheEdgeOfMemory) {
    auto random = seeded();
    ErrorHandle err;
    for (const auto side :
         {GuardedBytes::Against::page_behind, GuardedBytes::Against::page_before}) {
        const OCINumber filled = number({2, 193, 2});
        const GuardedBytes operand_memory(&filled, sizeof filled, side);
        const GuardedBytes result_memory(&filled, sizeof filled, side);
        auto *const operand = operand_memory.as<OCINumber>();
        auto *const result = result_memory.as<OCINumber>();
        for (long round = random_cases(40); round > 0; --round) {
            for (int length = 0; length < 256; ++length) {
                OCINumber n;
                for (ub1 &b : n.OCINumberPart) b = static_cast<ub1>(random());
                // Every other one is a number but for what follows its value.
                if (round % 2 != 0 && length >= 2 && length <= 21) {
                    const bool negative = n.OCINumberPart[1] % 128 == 0 || random() % 2;
                    n.OCINumberPart[1] =
                        static_cast<ub1>(negative ? random() % 127 : 129 + random() % 127);
                    for (int i = 2; i <= length; ++i) {
                        n.OCINumberPart[i] = static_cast<ub1>(1 + negative + random() % 100);
                    }
                    if (negative && length < 21) n.OCINumberPart[length] = 102;
                }
                n.OCINumberPart[0] = static_cast<ub1>(length);
                const bool well_formed = is_well_formed(n);
                const sword count = static_cast<sword>(random()) >> random() % 32;
                for (const auto &f : functions) {
                    *operand = n;
                    *result = filled;
                    const sword status = f.call(err, operand, count, result);
                    ASSERT_EQ(*operand, n) << f.name;
                    if (status == OCI_SUCCESS && well_formed) {
                        ASSERT_TRUE(is_well_formed(*result))
                            << f.name << " by " << count << " of " << ::testing::PrintToString(n)
                            << "gives " << ::testing::PrintToString(*result);
                    }
                    take_log();
                }
            }
        }
    }
}

}  // namespace
