// What a function leaves in a result does not depend on what lay on the stack: no byte of it is a
// byte of the stack. Without a test framework, whose library the memory sanitizer does not see
// through; under it, no bit of a result may be unset, and none may decide anything.
#include <cstdio>
#include <cstring>

#include "oci.h"
#include "oci_number_log.h"

#if defined __has_feature
#if __has_feature(memory_sanitizer)
#include <sanitizer/msan_interface.h>
#define HAS_MEMORY_SANITIZER
#endif
#endif

namespace {

using N = const OCINumber *;
struct Function {
    const char *name;
    sword (*call)(OCIError *e, N a, N b, sword count, unsigned char *result);
};

OCINumber *number(unsigned char *p) { return reinterpret_cast<OCINumber *>(p); }
const OraText *characters(const char *s) { return reinterpret_cast<const OraText *>(s); }

// clang-format off
#define CALL(name, ...) \
    {#name, [](OCIError *e, N a, N b, sword c, unsigned char *r) -> sword { \
        (void)a, (void)b, (void)c; \
        return __VA_ARGS__; }}
#define ONE(name) CALL(name, OCINumber##name(e, a, number(r)))
#define TWO(name) CALL(name, OCINumber##name(e, a, b, number(r)))
#define COUNT(name) CALL(name, OCINumber##name(e, a, c, number(r)))
#define IN_PLACE(name) CALL(name, (*number(r) = *a, OCINumber##name(e, number(r))))
#define TEST(name, ...) CALL(name, OCINumber##name(e, __VA_ARGS__, reinterpret_cast<sword *>(r)))

const Function functions[] = {
    ONE(Assign), ONE(Abs), ONE(Neg), ONE(Sin), ONE(Cos), ONE(Tan), ONE(ArcSin), ONE(ArcCos),
    ONE(ArcTan), ONE(HypSin), ONE(HypCos), ONE(HypTan), ONE(Ceil), ONE(Floor), ONE(Exp), ONE(Ln),
    ONE(Sqrt), TWO(Add), TWO(Sub), TWO(Mul), TWO(Div), TWO(Mod), TWO(Power), TWO(ArcTan2), TWO(Log),
    COUNT(Shift), COUNT(Prec), COUNT(Round), COUNT(Trunc), COUNT(IntPower), IN_PLACE(Inc),
    IN_PLACE(Dec), TEST(IsZero, a), TEST(IsInt, a), TEST(Sign, a), TEST(Cmp, a, b),
    CALL(SetZero, (OCINumberSetZero(e, number(r)), 0)),
    CALL(SetPi, (OCINumberSetPi(e, number(r)), 0)),
    CALL(FromInt, OCINumberFromInt(e, &c, sizeof c, OCI_NUMBER_SIGNED, number(r))),
    CALL(FromFloat, OCINumberFromReal(e, &c, 4, number(r))),
    CALL(FromDouble, OCINumberFromReal(e, a->OCINumberPart + 2, 8, number(r))),
    CALL(FromLongDouble, OCINumberFromReal(e, a->OCINumberPart + 2, 16, number(r))),
    CALL(FromText, OCINumberFromText(e, characters(c % 2 ? "-12.5" : "1e"), c % 2 ? 5 : 2,
                                     characters("99.9"), 4, nullptr, 0, number(r))),
    CALL(ToInt, OCINumberToInt(e, a, 8, OCI_NUMBER_SIGNED, r)),
    CALL(ToFloat, OCINumberToReal(e, a, 4, r)),
    CALL(ToDouble, OCINumberToReal(e, a, 8, r)),
    CALL(ToLongDouble, OCINumberToRealArray(e, &a, 1, 16, r)),
    CALL(ToText, OCINumberToText(e, a, characters("FM9999990.99"), 12, nullptr, 0,
                                 reinterpret_cast<ub4 *>(r), r + 4)),
};
// clang-format on

[[gnu::noinline]] void fill_stack(int byte) {
    unsigned char stack[64000];
    std::memset(stack, byte, sizeof stack);
    asm volatile("" : : "r"(stack) : "memory");
}

unsigned next_random() {
    static unsigned long long state = 20260101;
    state = state * 6364136223846793005 + 1442695040888963407;
    return static_cast<unsigned>(state >> 33);
}

// Half of them well formed, of moderate size; the bytes behind the value are set.
OCINumber random_number(unsigned kind) {
    OCINumber n;
    for (ub1 &b : n.OCINumberPart) b = static_cast<ub1>(next_random());
    const unsigned length = n.OCINumberPart[0] = static_cast<ub1>(1 + next_random() % 21);
    if (kind % 2 == 0) return n;
    const unsigned negative = next_random() % 2;
    n.OCINumberPart[1] = static_cast<ub1>((negative ? 54 : 185) + next_random() % 16);
    for (unsigned i = 2; i < 22; ++i) {
        n.OCINumberPart[i] = static_cast<ub1>(1 + negative + next_random() % 100);
    }
    if (negative && length < 21) n.OCINumberPart[length] = 102;
    return n;
}

volatile unsigned seen;

int failures = 0;
void fail(const char *what, const Function &f) {
    std::printf("%s: %s\n", f.name, what);
    ++failures;
}

}  // namespace

int main() {
    OCIEnv *env = nullptr;
    void *err = nullptr;
    OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
    if (OCIHandleAlloc(env, &err, OCI_HTYPE_ERROR, 0, nullptr) != OCI_SUCCESS) return 1;
    qzoci_log_set_sink([](void *, int, const char *, long, const char *text,
                          size_t length) { seen = seen + (text[length / 2] == ' '); },
                       nullptr);
    for (unsigned i = 0; i < 1000 && failures < 10; ++i) {
        qzoci_log_set_level(i % 16 < 2 ? LOG_LEVEL_DEBUG : QZOCI_LOG_OFF);
        const OCINumber a = random_number(i), b = random_number(i);
        const auto count = static_cast<sword>(next_random() % 81) - 40;
        for (const Function &f : functions) {
            alignas(16) unsigned char results[2][64];
            sword status[2];
            for (int k = 0; k < 2; ++k) {
                std::memset(results[k], 30, sizeof results[k]);
                fill_stack(k == 0 ? 0x11 : 0xA7);
                status[k] = f.call(static_cast<OCIError *>(err), &a, &b, count, results[k]);
            }
#ifdef HAS_MEMORY_SANITIZER
            if (__msan_test_shadow(results, sizeof results) != -1) fail("unset bytes", f);
            __msan_unpoison(results, sizeof results);
#endif
            if (status[0] != status[1] || std::memcmp(results[0], results[1], 64) != 0) {
                fail("depends on the stack", f);
            }
        }
    }
    qzoci_log_set_sink(nullptr, nullptr);
    OCIHandleFree(env, OCI_HTYPE_ENV);
    return failures != 0;
}
