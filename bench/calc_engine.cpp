// The engine's elementary functions beside MPFR and Arb at 140 bits, which carry as many
// digits as an OCINumber: operands of 40 and of 12 digits, prepared outside of the loops.
#include <benchmark/benchmark.h>
// Arb's header needs MPFR's before it.
#include <mpfr.h>
//
#include <arb.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "oci_calc_number/oci_calc_number.h"

namespace {

constexpr long peer_bits = 140;
constexpr size_t operand_count = 256;

using EngineUnary = sword (*)(const QZCICalcNumber *, QZCICalcNumber *);
using EngineBinary = sword (*)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);
using MpfrUnary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
using MpfrBinary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
using ArbUnary = void (*)(arb_t, const arb_t, slong);
using ArbBinary = void (*)(arb_t, const arb_t, const arb_t, slong);

struct Function {
    const char *name;
    EngineUnary engine;
    EngineBinary engine_binary;
    MpfrUnary mpfr;
    MpfrBinary mpfr_binary;
    ArbUnary arb;
    ArbBinary arb_binary;
    double low, high;  // of the operands
};

const Function functions[] = {
    {"exp", QZCICalcNumExp, nullptr, mpfr_exp, nullptr, arb_exp, nullptr, -100, 100},
    {"ln", QZCICalcNumLn, nullptr, mpfr_log, nullptr, arb_log, nullptr, 0.01, 1000},
    {"sin", QZCICalcNumSinWithRound, nullptr, mpfr_sin, nullptr, arb_sin, nullptr, -100, 100},
    {"cos", QZCICalcNumCosWithRound, nullptr, mpfr_cos, nullptr, arb_cos, nullptr, -100, 100},
    {"tan", QZCICalcNumTanWithRound, nullptr, mpfr_tan, nullptr, arb_tan, nullptr, -100, 100},
    {"asin", QZCICalcNumAsin, nullptr, mpfr_asin, nullptr, arb_asin, nullptr, -1, 1},
    {"acos", QZCICalcNumAcos, nullptr, mpfr_acos, nullptr, arb_acos, nullptr, -1, 1},
    {"atan", QZCICalcNumAtan, nullptr, mpfr_atan, nullptr, arb_atan, nullptr, -10, 10},
    {"sinh", QZCICalcNumSinh, nullptr, mpfr_sinh, nullptr, arb_sinh, nullptr, -20, 20},
    {"cosh", QZCICalcNumCosh, nullptr, mpfr_cosh, nullptr, arb_cosh, nullptr, -20, 20},
    {"tanh", QZCICalcNumTanh, nullptr, mpfr_tanh, nullptr, arb_tanh, nullptr, -20, 20},
    {"pow", nullptr, QZCICalcNumPower, nullptr, mpfr_pow, nullptr, arb_pow, 0.01, 20},
    {"atan2", nullptr, QZCICalcNumAtan2, nullptr, mpfr_atan2, nullptr, arb_atan2, -10, 10},
};

struct Operands {
    std::vector<QZCICalcNumber> records;
    std::vector<__mpfr_struct> mpfrs;
    std::vector<arb_struct> arbs;
};

// Fixed-point decimals with two digits or more before the point: a limb or two for 12
// digits, five or six for 40.
const Operands &operands(const Function &f, int digits) {
    static std::vector<std::pair<std::string, Operands>> cache;
    const std::string key = f.name + std::to_string(digits);
    for (const auto &entry : cache)
        if (entry.first == key) return entry.second;
    Operands o;
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> range(f.low, f.high);
    for (size_t i = 0; i < operand_count; ++i) {
        char head[32];
        std::snprintf(head, sizeof head, "%.8f", range(random));
        std::string text = head;
        const size_t point = text.find('.'), sign = text[0] == '-' ? 1 : 0;
        const size_t whole = text[sign] == '0' ? 0 : point - sign;
        size_t decimals = static_cast<size_t>(digits) - whole;
        if (digits == 40 && whole % 2 != 0) --decimals;
        decimals -= decimals % 2;
        while (text.size() - point - 1 < decimals) text += static_cast<char>('1' + random() % 9);
        QZCICalcNumber n{};
        std::string units = text.substr(sign, point - sign),
                    fraction = text.substr(point + 1, decimals);
        while (fraction.size() % 8 != 0) fraction += '0';
        const std::string all = std::string(8 - units.size(), '0') + units + fraction;
        size_t count = all.size() / 8;
        for (size_t k = 0; k < count; ++k)
            n.data_part[k] = static_cast<ub4>(std::stoul(all.substr(8 * (count - 1 - k), 8)));
        n.end_pos = static_cast<sb1>(1 - static_cast<int>(count));
        while (n.data_part[count - 1] == 0) --count;
        n.start_pos = static_cast<sb1>(n.end_pos + static_cast<int>(count) - 1);
        n.num_signed = sign ? -1 : 1;
        o.records.push_back(n);
        text = text.substr(0, point + 1 + decimals);
        __mpfr_struct m;
        mpfr_init2(&m, peer_bits);
        mpfr_set_str(&m, text.c_str(), 10, MPFR_RNDN);
        o.mpfrs.push_back(m);
        arb_struct a;
        arb_init(&a);
        arb_set_str(&a, text.c_str(), peer_bits);
        mag_zero(arb_radref(&a));
        o.arbs.push_back(a);
    }
    cache.emplace_back(key, std::move(o));
    return cache.back().second;
}

void engine(benchmark::State &state, const Function &f, int digits) {
    const Operands &o = operands(f, digits);
    size_t i = 0;
    QZCICalcNumber result;
    for (auto _ : state) {
        i = (i + 1) % operand_count;
        if (f.engine != nullptr)
            f.engine(&o.records[i], &result);
        else
            f.engine_binary(&o.records[i], &o.records[(i + 7) % operand_count], &result);
        benchmark::DoNotOptimize(result);
    }
}

void mpfr(benchmark::State &state, const Function &f, int digits) {
    const Operands &o = operands(f, digits);
    size_t i = 0;
    mpfr_t result;
    mpfr_init2(result, peer_bits);
    for (auto _ : state) {
        i = (i + 1) % operand_count;
        if (f.mpfr != nullptr)
            f.mpfr(result, &o.mpfrs[i], MPFR_RNDN);
        else
            f.mpfr_binary(result, &o.mpfrs[i], &o.mpfrs[(i + 7) % operand_count], MPFR_RNDN);
        benchmark::DoNotOptimize(result);
    }
    mpfr_clear(result);
}

void arb(benchmark::State &state, const Function &f, int digits) {
    const Operands &o = operands(f, digits);
    size_t i = 0;
    arb_t result;
    arb_init(result);
    for (auto _ : state) {
        i = (i + 1) % operand_count;
        if (f.arb != nullptr)
            f.arb(result, &o.arbs[i], peer_bits);
        else
            f.arb_binary(result, &o.arbs[i], &o.arbs[(i + 7) % operand_count], peer_bits);
        benchmark::DoNotOptimize(result);
    }
    arb_clear(result);
}

}  // namespace

int main(int argc, char **argv) {
    for (const Function &f : functions)
        for (const int digits : {40, 12}) {
            const std::string name = std::string(f.name) + "/" + std::to_string(digits) + "/";
            const auto add = [&](const char *peer, auto *run) {
                benchmark::RegisterBenchmark(
                    (name + peer).c_str(),
                    [&f, digits, run](benchmark::State &s) { run(s, f, digits); });
            };
            add("engine", engine);
            add("mpfr", mpfr);
            add("arb", arb);
        }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
