// The exported calculations (22 bytes in, 22 bytes out, checks and filtered traces
// included) beside the bare operations of Boost's cpp_dec_float<40>, of MPFR and Arb at
// 140 bits, which carry as many digits, and of GCC's decimal128, which has 34. Operands of
// 40, 34 and 12 digits, prepared in arrays; all peers get the same ones.
#include <benchmark/benchmark.h>
// Arb's header needs MPFR's before it.
#include <mpfr.h>
//
#include <arb.h>

#include <boost/multiprecision/cpp_dec_float.hpp>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "oci.h"
#include "oci_utils/oci_utils.h"

namespace {

constexpr long peer_bits = 140;
constexpr size_t operand_count = 256;

using Boost = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<40>,
                                            boost::multiprecision::et_off>;

// GCC's decimal floating-point type of 34 digits; C++ has no name for it.
typedef float Decimal128 __attribute__((mode(TD)));

Decimal128 decimal128_of(const std::string &text) {
    const auto ten = static_cast<Decimal128>(10);
    auto value = static_cast<Decimal128>(0), unit = static_cast<Decimal128>(1);
    bool fraction = false;
    for (const char c : text) {
        if (c == '.') fraction = true;
        if (c < '0' || c > '9') continue;
        value = value * ten + static_cast<Decimal128>(c - '0');
        if (fraction) unit = unit * ten;
    }
    value = value / unit;
    return text[0] == '-' ? -value : value;
}

struct Operands {
    std::vector<OCINumber> numbers;
    std::vector<Boost> boosts;
    std::vector<__mpfr_struct> mpfrs;
    std::vector<arb_struct> arbs;
    std::vector<Decimal128> decimals;
};

// Decimals between low and high with `digits` digits, the first of them not 0.
Operands make_operands(double low, double high, int digits, unsigned seed) {
    Operands o;
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> range(low, high);
    while (o.numbers.size() < operand_count) {
        char head[32];
        std::snprintf(head, sizeof head, "%.6f", range(random));
        std::string text = head;
        int count = 0;
        for (char c : text) count += (c >= '1' || (c == '0' && count > 0)) && c <= '9';
        for (; count < digits; ++count) text += static_cast<char>('1' + random() % 9);
        OCINumber n;
        if (getNumberFromStr(&n, reinterpret_cast<ub1 *>(text.data()),
                             static_cast<ub4>(text.size())) != 0) {
            std::abort();
        }
        o.numbers.push_back(n);
        o.boosts.emplace_back(text);
        __mpfr_struct m;
        mpfr_init2(&m, peer_bits);
        mpfr_set_str(&m, text.c_str(), 10, MPFR_RNDN);
        o.mpfrs.push_back(m);
        arb_struct a;
        arb_init(&a);
        arb_set_str(&a, text.c_str(), peer_bits);
        mag_zero(arb_radref(&a));
        o.arbs.push_back(a);
        o.decimals.push_back(decimal128_of(text));
    }
    return o;
}

struct Pair {
    Operands a, b;
};

// Runs step(i) for every operand in turn.
template <class Step>
void run(benchmark::State &state, Step step) {
    size_t i = 0;
    for (auto _ : state) {
        i = (i + 1) % operand_count;
        step(i);
    }
}

OCIError *error_handle() {
    static OCIError *const err = [] {
        OCIEnv *env;
        OCIError *e;
        if (OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) != 0 ||
            OCIHandleAlloc(env, reinterpret_cast<void **>(&e), OCI_HTYPE_ERROR, 0, nullptr) != 0) {
            std::abort();
        }
        return e;
    }();
    return err;
}

template <class Oci, class BoostCall, class MpfrCall, class ArbCall>
void add(const char *name, double low, double high, double low2, double high2, Oci oci,
         BoostCall boost_call, MpfrCall mpfr_call, ArbCall arb_call) {
    for (const int digits : {40, 34, 12}) {
        auto *const p =
            new Pair{make_operands(low, high, digits, 1), make_operands(low2, high2, digits, 2)};
        const std::string head = std::string(name) + "/" + std::to_string(digits) + "/";
        benchmark::RegisterBenchmark((head + "oci").c_str(), [=](benchmark::State &state) {
            OCIError *const err = error_handle();
            OCINumber r;
            sword failed = 0;
            run(state, [&](size_t i) {
                failed |= oci(err, &p->a.numbers[i], &p->b.numbers[i], &r);
                benchmark::DoNotOptimize(r);
            });
            if (failed != 0) state.SkipWithError("a call failed");
        });
        benchmark::RegisterBenchmark((head + "boost").c_str(), [=](benchmark::State &state) {
            Boost r;
            run(state, [&](size_t i) {
                boost_call(r, p->a.boosts[i], p->b.boosts[i]);
                benchmark::DoNotOptimize(r);
            });
        });
        benchmark::RegisterBenchmark((head + "mpfr").c_str(), [=](benchmark::State &state) {
            mpfr_t r;
            mpfr_init2(r, peer_bits);
            run(state, [&](size_t i) {
                mpfr_call(r, &p->a.mpfrs[i], &p->b.mpfrs[i]);
                benchmark::DoNotOptimize(r);
            });
            mpfr_clear(r);
        });
        benchmark::RegisterBenchmark((head + "arb").c_str(), [=](benchmark::State &state) {
            arb_t r;
            arb_init(r);
            run(state, [&](size_t i) {
                arb_call(r, &p->a.arbs[i], &p->b.arbs[i]);
                benchmark::DoNotOptimize(r);
            });
            arb_clear(r);
        });
    }
}

// The peer's functions under one shape: (result, operand 1, operand 2).
#define BOOST_TWO(expression) [](Boost &r, const Boost &a, const Boost &b) { r = (expression); }
#define BOOST_ONE(expression) [](Boost &r, const Boost &a, const Boost &) { r = (expression); }
#define MPFR_TWO(f) [](mpfr_ptr r, mpfr_srcptr a, mpfr_srcptr b) { f(r, a, b, MPFR_RNDN); }
#define MPFR_ONE(f) [](mpfr_ptr r, mpfr_srcptr a, mpfr_srcptr) { f(r, a, MPFR_RNDN); }
#define ARB_TWO(f) [](arb_t r, const arb_t a, const arb_t b) { f(r, a, b, peer_bits); }
#define ARB_ONE(f) [](arb_t r, const arb_t a, const arb_t) { f(r, a, peer_bits); }

template <class BoostCall, class MpfrCall, class ArbCall>
void add_one(const char *name, double low, double high,
             sword (*oci)(OCIError *, const OCINumber *, OCINumber *), BoostCall boost_call,
             MpfrCall mpfr_call, ArbCall arb_call) {
    add(
        name, low, high, 1, 2,
        [oci](OCIError *err, const OCINumber *a, const OCINumber *, OCINumber *r) {
            return oci(err, a, r);
        },
        boost_call, mpfr_call, arb_call);
}

// Arb has no remainder; its floor of the quotient stands in.
void arb_remainder(arb_t r, const arb_t a, const arb_t b, slong bits) {
    arb_div(r, a, b, bits);
    arb_floor(r, r, bits);
    arb_mul(r, r, b, bits);
    arb_sub(r, a, r, bits);
}

void arb_log_base(arb_t r, const arb_t a, const arb_t b, slong bits) {
    arb_t base;
    arb_init(base);
    arb_log(base, a, bits);
    arb_log(r, b, bits);
    arb_div(r, r, base, bits);
    arb_clear(base);
}

int mpfr_log_base(mpfr_ptr r, mpfr_srcptr a, mpfr_srcptr b, mpfr_rnd_t rnd) {
    mpfr_t base;
    mpfr_init2(base, peer_bits);
    mpfr_log(base, a, rnd);
    mpfr_log(r, b, rnd);
    const int t = mpfr_div(r, r, base, rnd);
    mpfr_clear(base);
    return t;
}

// The operations that the type itself has.
template <class Call>
void add_decimal128(const char *name, double low, double high, Call call) {
    for (const int digits : {34, 12}) {
        auto *const p =
            new Pair{make_operands(low, high, digits, 1), make_operands(low, high, digits, 2)};
        const std::string label = std::string(name) + "/" + std::to_string(digits) + "/decimal128";
        benchmark::RegisterBenchmark(label.c_str(), [=](benchmark::State &state) {
            run(state, [&](size_t i) {
                Decimal128 r = call(p->a.decimals[i], p->b.decimals[i]);
                benchmark::DoNotOptimize(r);
            });
        });
    }
}

void add_all() {
    add_decimal128("Add", -1e5, 1e5, [](Decimal128 a, Decimal128 b) { return a + b; });
    add_decimal128("Sub", -1e5, 1e5, [](Decimal128 a, Decimal128 b) { return a - b; });
    add_decimal128("Mul", -1e5, 1e5, [](Decimal128 a, Decimal128 b) { return a * b; });
    add_decimal128("Div", -1e5, 1e5, [](Decimal128 a, Decimal128 b) { return a / b; });
    add("Add", -1e5, 1e5, -1e5, 1e5, OCINumberAdd, BOOST_TWO(a + b), MPFR_TWO(mpfr_add),
        ARB_TWO(arb_add));
    add("Sub", -1e5, 1e5, -1e5, 1e5, OCINumberSub, BOOST_TWO(a - b), MPFR_TWO(mpfr_sub),
        ARB_TWO(arb_sub));
    add("Mul", -1e5, 1e5, -1e5, 1e5, OCINumberMul, BOOST_TWO(a * b), MPFR_TWO(mpfr_mul),
        ARB_TWO(arb_mul));
    add("Div", -1e5, 1e5, -1e5, 1e5, OCINumberDiv, BOOST_TWO(a / b), MPFR_TWO(mpfr_div),
        ARB_TWO(arb_div));
    add("Mod", 0, 1e6, 1, 1e3, OCINumberMod, BOOST_TWO(fmod(a, b)), MPFR_TWO(mpfr_fmod),
        ARB_TWO(arb_remainder));
    add("Power", 0.01, 20, 0.01, 20, OCINumberPower, BOOST_TWO(pow(a, b)), MPFR_TWO(mpfr_pow),
        ARB_TWO(arb_pow));
    add("ArcTan2", -10, 10, -10, 10, OCINumberArcTan2, BOOST_TWO(atan2(a, b)), MPFR_TWO(mpfr_atan2),
        ARB_TWO(arb_atan2));
    add("Log", 1.1, 20, 0.01, 1e3, OCINumberLog, BOOST_TWO(log(b) / log(a)),
        MPFR_TWO(mpfr_log_base), ARB_TWO(arb_log_base));
    add(
        "IntPower", 0.5, 2, 1, 2,
        [](OCIError *err, const OCINumber *a, const OCINumber *, OCINumber *r) {
            return OCINumberIntPower(err, a, 37, r);
        },
        BOOST_ONE(pow(a, 37)),
        [](mpfr_ptr r, mpfr_srcptr a, mpfr_srcptr) { mpfr_pow_ui(r, a, 37, MPFR_RNDN); },
        [](arb_t r, const arb_t a, const arb_t) { arb_pow_ui(r, a, 37, peer_bits); });

    add_one("Sqrt", 0, 1e5, OCINumberSqrt, BOOST_ONE(sqrt(a)), MPFR_ONE(mpfr_sqrt),
            ARB_ONE(arb_sqrt));
    add_one("Ceil", -1e5, 1e5, OCINumberCeil, BOOST_ONE(ceil(a)), MPFR_ONE(mpfr_rint_ceil),
            ARB_ONE(arb_ceil));
    add_one("Floor", -1e5, 1e5, OCINumberFloor, BOOST_ONE(floor(a)), MPFR_ONE(mpfr_rint_floor),
            ARB_ONE(arb_floor));
    add_one("Exp", -100, 100, OCINumberExp, BOOST_ONE(exp(a)), MPFR_ONE(mpfr_exp),
            ARB_ONE(arb_exp));
    add_one("Ln", 0.01, 1e3, OCINumberLn, BOOST_ONE(log(a)), MPFR_ONE(mpfr_log), ARB_ONE(arb_log));
    add_one("Sin", -100, 100, OCINumberSin, BOOST_ONE(sin(a)), MPFR_ONE(mpfr_sin),
            ARB_ONE(arb_sin));
    add_one("Cos", -100, 100, OCINumberCos, BOOST_ONE(cos(a)), MPFR_ONE(mpfr_cos),
            ARB_ONE(arb_cos));
    add_one("Tan", -100, 100, OCINumberTan, BOOST_ONE(tan(a)), MPFR_ONE(mpfr_tan),
            ARB_ONE(arb_tan));
    add_one("ArcSin", -0.99, 0.99, OCINumberArcSin, BOOST_ONE(asin(a)), MPFR_ONE(mpfr_asin),
            ARB_ONE(arb_asin));
    add_one("ArcCos", -0.99, 0.99, OCINumberArcCos, BOOST_ONE(acos(a)), MPFR_ONE(mpfr_acos),
            ARB_ONE(arb_acos));
    add_one("ArcTan", -10, 10, OCINumberArcTan, BOOST_ONE(atan(a)), MPFR_ONE(mpfr_atan),
            ARB_ONE(arb_atan));
    add_one("HypSin", -20, 20, OCINumberHypSin, BOOST_ONE(sinh(a)), MPFR_ONE(mpfr_sinh),
            ARB_ONE(arb_sinh));
    add_one("HypCos", -20, 20, OCINumberHypCos, BOOST_ONE(cosh(a)), MPFR_ONE(mpfr_cosh),
            ARB_ONE(arb_cosh));
    add_one("HypTan", -20, 20, OCINumberHypTan, BOOST_ONE(tanh(a)), MPFR_ONE(mpfr_tanh),
            ARB_ONE(arb_tanh));
}

}  // namespace

int main(int argc, char **argv) {
    add_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
