// Text and real conversions. Traces are filtered, as they are by default.
#include <benchmark/benchmark.h>

#include <boost/multiprecision/cpp_dec_float.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "operands.h"

namespace {

using Boost40 = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<40>>;

// Runs `step(i)` over the operands, one a round.
template <class Step>
void run(benchmark::State &state, Step step) {
    size_t i = 0;
    for (auto _ : state) {
        step(i);
        benchmark::ClobberMemory();
        i = (i + 1) % operand_count;
    }
}

// Twelve decimals with at most eleven before the point: they fit the model.
constexpr size_t decimals = 12;
constexpr const char *model = "99999999999990.99999";  // 20 positions

std::array<Boost40, operand_count> boost_numbers() {
    std::array<Boost40, operand_count> numbers;
    const auto texts = random_texts(decimals);
    for (size_t i = 0; i < operand_count; ++i) numbers[i] = Boost40(texts[i]);
    return numbers;
}

void to_text(benchmark::State &state, const char *fmt) {
    const auto numbers = random_numbers(decimals);
    const auto *const fmt_text = reinterpret_cast<const OraText *>(fmt);
    const auto fmt_length = static_cast<ub4>(std::strlen(fmt));
    OCIError *const err = bench_error();
    OraText text[64];
    run(state, [&](size_t i) {
        ub4 size = sizeof text;
        if (OCINumberToText(err, &numbers[i], fmt_text, fmt_length, nullptr, 0, &size, text)) {
            state.SkipWithError("refused");
        }
    });
}

void to_text_tm9(benchmark::State &state) { to_text(state, "TM9"); }
void to_text_model(benchmark::State &state) { to_text(state, model); }

void to_text_boost(benchmark::State &state) {
    const auto numbers = boost_numbers();
    run(state, [&](size_t i) { benchmark::DoNotOptimize(numbers[i].str()); });
}
void to_text_boost_fixed(benchmark::State &state) {
    const auto numbers = boost_numbers();
    run(state,
        [&](size_t i) { benchmark::DoNotOptimize(numbers[i].str(5, std::ios_base::fixed)); });
}

void from_text(benchmark::State &state) {
    const auto texts = random_texts(decimals);
    const std::string fmt = "999999999999.999999999999";
    OCIError *const err = bench_error();
    OCINumber n;
    run(state, [&](size_t i) {
        if (OCINumberFromText(err, reinterpret_cast<const OraText *>(texts[i].data()),
                              static_cast<ub4>(texts[i].size()),
                              reinterpret_cast<const OraText *>(fmt.data()),
                              static_cast<ub4>(fmt.size()), nullptr, 0, &n)) {
            state.SkipWithError("refused");
        }
    });
}

void from_text_boost(benchmark::State &state) {
    const auto texts = random_texts(decimals);
    run(state, [&](size_t i) {
        Boost40 value(texts[i]);
        benchmark::DoNotOptimize(value);
    });
}

BENCHMARK(to_text_tm9);
BENCHMARK(to_text_boost);
BENCHMARK(to_text_model);
BENCHMARK(to_text_boost_fixed);
BENCHMARK(from_text);
BENCHMARK(from_text_boost);

// ---- Reals: texts of 15 decimals, and the doubles that they stand for

void to_real(benchmark::State &state) {
    const auto numbers = random_numbers(static_cast<size_t>(state.range(0)));
    OCIError *const err = bench_error();
    double value;
    run(state, [&](size_t i) {
        if (OCINumberToReal(err, &numbers[i], sizeof value, &value)) {
            state.SkipWithError("refused");
        }
    });
}

void to_real_strtod(benchmark::State &state) {
    const auto texts = random_texts(static_cast<size_t>(state.range(0)));
    run(state, [&](size_t i) { benchmark::DoNotOptimize(std::strtod(texts[i].c_str(), nullptr)); });
}

// With a decimal exponent from -range to range.
std::array<double, operand_count> random_doubles(long range) {
    std::array<double, operand_count> values;
    std::mt19937_64 random{42};
    const auto texts = random_texts(15);
    for (size_t i = 0; i < operand_count; ++i) {
        const long exponent = static_cast<long>(random() % static_cast<ub8>(2 * range + 1)) - range;
        values[i] = std::strtod((texts[i] + "e" + std::to_string(exponent)).c_str(), nullptr);
    }
    return values;
}

void from_real(benchmark::State &state) {
    const auto values = random_doubles(state.range(0));
    OCIError *const err = bench_error();
    OCINumber n;
    run(state, [&](size_t i) {
        if (OCINumberFromReal(err, &values[i], sizeof values[i], &n)) {
            state.SkipWithError("refused");
        }
    });
}

void from_real_snprintf(benchmark::State &state) {
    const auto values = random_doubles(state.range(0));
    char text[32];
    run(state, [&](size_t i) { std::snprintf(text, sizeof text, "%.15g", values[i]); });
}

BENCHMARK(to_real)->Arg(6)->Arg(15)->Arg(38);
BENCHMARK(to_real_strtod)->Arg(6)->Arg(15)->Arg(38);
BENCHMARK(from_real)->Arg(0)->Arg(20)->Arg(100);
BENCHMARK(from_real_snprintf)->Arg(0)->Arg(20)->Arg(100);

}  // namespace
