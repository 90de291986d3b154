// The codec, the integer conversions and the byte operations. Traces are
// filtered, as they are by default.
#include <benchmark/benchmark.h>

#include <boost/multiprecision/cpp_dec_float.hpp>
#include <charconv>
#include <cstdio>

#include "operands.h"

namespace {

using Boost40 = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<40>>;
__extension__ typedef __int128 int128;
__extension__ typedef unsigned __int128 uint128;

// Runs `step(i)` over the operands, one a round.
template <class Step>
void run(benchmark::State &state, Step step) {
    size_t i = 0;
    for (auto _ : state) {
        step(i);
        i = (i + 1) % operand_count;
    }
}

// ---- Codec

void render_number(benchmark::State &state) {
    const auto numbers = random_numbers(static_cast<size_t>(state.range(0)));
    OraText buffer[128];
    run(state, [&](size_t i) {
        ub2 size = sizeof buffer;
        benchmark::DoNotOptimize(getStrFromNumber(&numbers[i], buffer, &size));
        benchmark::ClobberMemory();
    });
}

void render_int128_to_chars(benchmark::State &state) {
    std::array<int128, operand_count> values;
    std::mt19937_64 random{42};
    int128 limit = 1;
    for (long i = state.range(0); i > 0; --i) limit *= 10;
    for (int128 &v : values) {
        v = static_cast<int128>((static_cast<uint128>(random()) << 64 | random()) >> 1) % limit;
    }
    char buffer[128];
    run(state, [&](size_t i) {
        benchmark::DoNotOptimize(std::to_chars(buffer, buffer + sizeof buffer, values[i]));
        benchmark::ClobberMemory();
    });
}

void read_number(benchmark::State &state) {
    auto texts = random_texts(static_cast<size_t>(state.range(0)));
    OCINumber n;
    run(state, [&](size_t i) {
        benchmark::DoNotOptimize(getNumberFromStr(&n, reinterpret_cast<ub1 *>(texts[i].data()),
                                                  static_cast<ub4>(texts[i].size())));
        benchmark::ClobberMemory();
    });
}

void read_boost(benchmark::State &state) {
    const auto texts = random_texts(static_cast<size_t>(state.range(0)));
    run(state, [&](size_t i) {
        Boost40 value(texts[i]);
        benchmark::DoNotOptimize(value);
    });
}

BENCHMARK(render_number)->Arg(12)->Arg(38);
BENCHMARK(render_int128_to_chars)->Arg(12)->Arg(38);
BENCHMARK(read_number)->Arg(12)->Arg(38);
BENCHMARK(read_boost)->Arg(12)->Arg(38);

// ---- Integers

std::array<sb8, operand_count> random_integers() {
    std::array<sb8, operand_count> values;
    std::mt19937_64 random{42};
    for (sb8 &v : values) v = static_cast<sb8>(random()) >> random() % 60;
    return values;
}

void from_int(benchmark::State &state) {
    const auto values = random_integers();
    OCINumber n;
    run(state, [&](size_t i) {
        OCINumberFromInt(bench_error(), &values[i], 8, OCI_NUMBER_SIGNED, &n);
        benchmark::ClobberMemory();
    });
}

void to_int(benchmark::State &state) {
    std::array<OCINumber, operand_count> numbers;
    const auto values = random_integers();
    for (size_t i = 0; i < operand_count; ++i) {
        OCINumberFromInt(bench_error(), &values[i], 8, OCI_NUMBER_SIGNED, &numbers[i]);
    }
    sb8 value;
    run(state, [&](size_t i) {
        OCINumberToInt(bench_error(), &numbers[i], 8, OCI_NUMBER_SIGNED, &value);
        benchmark::ClobberMemory();
    });
}

void integer_snprintf(benchmark::State &state) {
    const auto values = random_integers();
    char buffer[22];
    run(state, [&](size_t i) {
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof buffer, "%li", values[i]));
        benchmark::ClobberMemory();
    });
}

BENCHMARK(from_int);
BENCHMARK(to_int);
BENCHMARK(integer_snprintf);

// ---- Byte operations, against OCINumberAssign

template <class Call>
void on_numbers(benchmark::State &state, Signs signs, Call call) {
    const auto numbers = random_numbers(20, signs);
    OCINumber result;
    run(state, [&](size_t i) {
        call(bench_error(), &numbers[i], static_cast<sword>(i % 8), &result);
        benchmark::ClobberMemory();
    });
}

void cmp(benchmark::State &state) {
    const auto numbers = random_numbers(20);
    sword order;
    run(state, [&](size_t i) {
        OCINumberCmp(bench_error(), &numbers[i], &numbers[operand_count - 1 - i], &order);
        benchmark::ClobberMemory();
    });
}
BENCHMARK(cmp);

#define BYTE_OPERATION(name, signs, ...)                                                  \
    void name(benchmark::State &state) {                                                  \
        on_numbers(state, Signs::signs,                                                   \
                   []([[maybe_unused]] OCIError *err, const OCINumber *n,                 \
                      [[maybe_unused]] sword count, OCINumber *result) { __VA_ARGS__; }); \
    }                                                                                     \
    BENCHMARK(name)

BYTE_OPERATION(assign, both, OCINumberAssign(err, n, result));
BYTE_OPERATION(abs_value, both, OCINumberAbs(err, n, result));
BYTE_OPERATION(neg, both, OCINumberNeg(err, n, result));
BYTE_OPERATION(shift, both, OCINumberShift(err, n, count, result));
BYTE_OPERATION(round_places, both, OCINumberRound(err, n, count, result));
BYTE_OPERATION(trunc_places, both, OCINumberTrunc(err, n, count, result));
BYTE_OPERATION(prec, both, OCINumberPrec(err, n, count + 5, result));
// In place: the copy that restores the operand is part of the time.
BYTE_OPERATION(inc, positive, *result = *n; OCINumberInc(err, result));
BYTE_OPERATION(dec, positive, *result = *n; OCINumberDec(err, result));

}  // namespace
