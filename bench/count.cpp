// One function on the benchmark's operands, for counting what a call takes:
//
//   bench_count NAME           calls the exported function 1024 times
//   bench_count --stack NAME   prints the largest stack use of a call in bytes
//   bench_count --heap NAME    prints the allocations of 1024 calls
//   bench_count --list         prints the names
//
// bench/report.py runs it under callgrind.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "operands.h"

namespace {

using Call = sword (*)(OCIError *, const OCINumber *, const OCINumber *, OCINumber *);

#define UNARY(name)                                                                  \
    {                                                                                \
#name, [](auto e, auto a, auto, auto r) { return OCINumber##name(e, a, r); } \
    }
#define BINARY(name)                                                                      \
    {                                                                                     \
#name, [](auto e, auto a, auto b, auto r) { return OCINumber##name(e, a, b, r); } \
    }

const struct {
    const char *name;
    Call call;
} functions[] = {
    BINARY(Add),
    BINARY(Sub),
    BINARY(Mul),
    BINARY(Div),
    BINARY(Mod),
    UNARY(Sqrt),
    UNARY(Ceil),
    UNARY(Floor),
    UNARY(Exp),
    UNARY(Ln),
    BINARY(Log),
    BINARY(Power),
    UNARY(Sin),
    UNARY(Cos),
    UNARY(Tan),
    UNARY(ArcSin),
    UNARY(ArcCos),
    UNARY(ArcTan),
    BINARY(ArcTan2),
    UNARY(HypSin),
    UNARY(HypCos),
    UNARY(HypTan),
    {"IntPower", [](auto e, auto a, auto, auto r) { return OCINumberIntPower(e, a, 7, r); }},
};

// 40-digit operands in (0, 1), which every function accepts.
std::array<OCINumber, operand_count> fractions() {
    std::array<OCINumber, operand_count> numbers;
    std::mt19937_64 random{42};
    for (OCINumber &n : numbers) {
        std::string text = "0.";
        for (int i = 0; i < 40; ++i) text += static_cast<char>('1' + random() % 9);
        n = number_from(text);
    }
    return numbers;
}

long allocations = 0;

size_t stack_use(Call call, const std::array<OCINumber, operand_count> &numbers) {
    // The call runs on a thread whose stack is filled beforehand.
    static unsigned char stack[256 * 1024];
    std::memset(stack, 0xA5, sizeof stack);
    struct Work {
        Call call;
        const std::array<OCINumber, operand_count> *numbers;
        const unsigned char *base;
    } work{call, &numbers, nullptr};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, sizeof stack);
    pthread_t thread;
    pthread_create(
        &thread, &attributes,
        [](void *p) -> void * {
            auto *w = static_cast<Work *>(p);
            OCINumber result;
            w->base = static_cast<unsigned char *>(__builtin_frame_address(0));
            for (size_t i = 0; i + 1 < operand_count; ++i) {
                w->call(bench_error(), &(*w->numbers)[i], &(*w->numbers)[i + 1], &result);
            }
            return nullptr;
        },
        &work);
    pthread_join(thread, nullptr);
    const unsigned char *used = stack;
    while (*used == 0xA5) ++used;
    return static_cast<size_t>(work.base - used);
}

}  // namespace

// Counts what the library takes from the heap.
extern "C" void *__libc_malloc(size_t);
extern "C" void *malloc(size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

int main(int argc, char **argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    const std::string name = argc > 1 ? argv[argc - 1] : "";
    const auto numbers = fractions();
    for (const auto &f : functions) {
        if (mode == "--list") std::puts(f.name);
        if (name != f.name) continue;
        if (mode == "--stack") {
            std::printf("%zu\n", stack_use(f.call, numbers));
            return 0;
        }
        OCINumber result;
        const long before = allocations;
        for (size_t i = 0; i < operand_count; ++i) {
            f.call(bench_error(), &numbers[i], &numbers[(i + 1) % operand_count], &result);
        }
        if (mode == "--heap") std::printf("%ld\n", allocations - before);
        return 0;
    }
    return mode == "--list" ? 0 : 2;
}
