// Columns beside the loop over the function of one number that they agree with, and beside the
// copy of their bytes. The counter "ns" is the time of a row.
#include <benchmark/benchmark.h>

#include <cstring>
#include <thread>
#include <vector>

#include "oci_number_column.h"
#include "operands.h"

namespace {

// Two million rows: more than the caches hold.
constexpr size_t row_count = size_t{1} << 21;

// A column of numbers of so many decimals.
const std::vector<OCINumber> &numbers(long decimals) {
    static std::vector<OCINumber> columns[41];
    auto &column = columns[decimals];
    if (column.empty()) {
        std::mt19937_64 random{42};
        column.resize(row_count);
        for (OCINumber &n : column) {
            // Two places behind the point, as of money; of more digits, half of them.
            const auto length = static_cast<size_t>(decimals);
            std::string text = random() % 2 ? "-" : "";
            for (size_t i = 0; i < length; ++i) {
                if (i + (length > 16 ? length / 2 : 2) == length) text += '.';
                text += static_cast<char>('1' + random() % 9);
            }
            n = number_from(text);
        }
    }
    return column;
}

oci_number_column records(const std::vector<OCINumber> &from) {
    oci_number_column column = {};
    column.form = OCI_NUMBER_RECORDS;
    column.data = const_cast<OCINumber *>(from.data());
    column.stride = sizeof(OCINumber);
    column.length = from.size();
    return column;
}

oci_number_column output(oci_number_form form, std::vector<ub1> &memory, size_t row_size) {
    memory.resize(row_count * row_size);
    oci_number_column column = {};
    column.form = form;
    column.data = memory.data();
    column.size = memory.size();
    column.stride = row_size;
    column.precision = 38;
    column.scale = 2;
    column.length = row_count;
    return column;
}

void count_rows(benchmark::State &state) {
    state.counters["ns"] = benchmark::Counter(
        static_cast<double>(row_count) * 1e-9,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void copy_bytes(benchmark::State &state) {
    const auto &from = numbers(12);
    std::vector<OCINumber> to(row_count);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), row_count * sizeof(OCINumber));
        benchmark::ClobberMemory();
    }
    count_rows(state);
}

template <oci_number_form form, size_t row_size>
void convert(benchmark::State &state) {
    const auto from = records(numbers(state.range(0)));
    std::vector<ub1> memory;
    const auto to = output(form, memory, row_size);
    for (auto _ : state) {
        oci_number_tally tally;
        oci_number_column_convert(&from, &to, OCI_NUMBER_NULL, &tally);
        if (tally.refused != 0) state.SkipWithError(oci_number_reason_text(tally.reason));
        benchmark::ClobberMemory();
    }
    count_rows(state);
}

// The function of one number over all rows.
template <class Call>
void loop(benchmark::State &state, size_t row_size, Call call) {
    const auto &from = numbers(state.range(0));
    std::vector<ub1> to(row_count * row_size);
    for (auto _ : state) {
        for (size_t i = 0; i < row_count; ++i) call(&from[i], to.data() + i * row_size);
        benchmark::ClobberMemory();
    }
    count_rows(state);
}
void loop_int64(benchmark::State &state) {
    loop(state, 8, [](const OCINumber *n, ub1 *to) {
        OCINumberToInt(bench_error(), n, 8, OCI_NUMBER_SIGNED, to);
    });
}
void loop_double(benchmark::State &state) {
    loop(state, 8, [](const OCINumber *n, ub1 *to) { OCINumberToReal(bench_error(), n, 8, to); });
}
void loop_text(benchmark::State &state) {
    loop(state, 64, [](const OCINumber *n, ub1 *to) {
        ub4 size = 64;
        OCINumberToText(bench_error(), n, reinterpret_cast<const OraText *>("TM9"), 3, nullptr, 0,
                        &size, to);
    });
}
void loop_product(benchmark::State &state) {
    loop(state, 22, [](const OCINumber *n, ub1 *to) {
        OCINumberMul(bench_error(), n, n, reinterpret_cast<OCINumber *>(to));
    });
}
void loop_sum(benchmark::State &state) {
    OCINumber sum;
    OCINumberSetZero(bench_error(), &sum);
    loop(state, 0, [&](const OCINumber *n, ub1 *) { OCINumberAdd(bench_error(), &sum, n, &sum); });
}

void to_text(benchmark::State &state) {
    const auto from = records(numbers(state.range(0)));
    std::vector<ub1> memory;
    std::vector<sb8> offsets(row_count + 1);
    auto to = output(OCI_NUMBER_TEXT_64, memory, 64);
    to.offsets = offsets.data();
    for (auto _ : state) {
        oci_number_column_convert(&from, &to, OCI_NUMBER_NULL, nullptr);
        benchmark::ClobberMemory();
    }
    count_rows(state);
}

void product(benchmark::State &state) {
    const auto from = records(numbers(state.range(0)));
    std::vector<ub1> memory;
    const auto to = output(OCI_NUMBER_RECORDS, memory, 22);
    for (auto _ : state) {
        oci_number_column_calculate(OCI_NUMBER_MUL, &from, &from, 0, &to, OCI_NUMBER_NULL, nullptr);
        benchmark::ClobberMemory();
    }
    count_rows(state);
}

void sum(benchmark::State &state) {
    const auto from = records(numbers(state.range(0)));
    for (auto _ : state) {
        oci_number_sum total;
        OCINumber result;
        oci_number_sum_start(&total);
        oci_number_sum_add(&total, &from, OCI_NUMBER_STOP, nullptr);
        oci_number_sum_value(&total, &result);
        benchmark::DoNotOptimize(result);
    }
    count_rows(state);
}

// Two threads over two halves.
void halves(benchmark::State &state) {
    const auto from = records(numbers(12));
    std::vector<ub1> memory;
    const auto to = output(OCI_NUMBER_DOUBLE, memory, 8);
    const auto threads = static_cast<size_t>(state.range(0));
    for (auto _ : state) {
        std::vector<std::thread> workers;
        for (size_t t = 0; t < threads; ++t) {
            workers.emplace_back([&, t] {
                const size_t length = row_count / threads;
                oci_number_column in, out;
                oci_number_column_slice(&from, t * length, length, &in);
                oci_number_column_slice(&to, t * length, length, &out);
                oci_number_column_convert(&in, &out, OCI_NUMBER_NULL, nullptr);
            });
        }
        for (auto &worker : workers) worker.join();
    }
    count_rows(state);
}

BENCHMARK(copy_bytes);
BENCHMARK(convert<OCI_NUMBER_INT64, 8>)->Name("to_int64")->Arg(12)->Arg(16);
BENCHMARK(loop_int64)->Arg(12)->Arg(16);
BENCHMARK(convert<OCI_NUMBER_DOUBLE, 8>)->Name("to_double")->Arg(12)->Arg(38);
BENCHMARK(loop_double)->Arg(12)->Arg(38);
BENCHMARK(convert<OCI_NUMBER_DECIMAL128, 16>)->Name("to_decimal128")->Arg(12);
BENCHMARK(convert<OCI_NUMBER_DECIMAL256, 32>)->Name("to_decimal256")->Arg(12);
BENCHMARK(sum)->Arg(12)->Arg(38);
BENCHMARK(loop_sum)->Arg(12)->Arg(38);
BENCHMARK(to_text)->Arg(12);
BENCHMARK(loop_text)->Arg(12);
BENCHMARK(product)->Arg(12)->Arg(38);
BENCHMARK(loop_product)->Arg(12)->Arg(38);
BENCHMARK(halves)->Name("to_double_threads")->Arg(1)->Arg(2)->UseRealTime();

}  // namespace
