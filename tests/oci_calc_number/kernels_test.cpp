// The kernels against MPFR: every error stays below the bound that the rounding test is
// told, in the fast and in the wide pass. The operands of the wide pass are those that no
// random search finds hard enough to get there.
#include "oci_calc_number/elementary/kernels.h"

#include "oci_calc_number/binary/rounding.h"
#include "oracle.h"
#include "support/mpfr_value.h"
#include "support/values.h"

namespace {

using calc::Limbs;
using calc::Real;
using calc::Wide;

constexpr mpfr_prec_t prec = 2400;

struct Value : Mpfr {
    Value() : Mpfr(prec) {}
    explicit Value(const std::string &text) : Mpfr(prec, text) {}
    template <int N>
    explicit Value(const Real<N> &r) : Value() {
        mpfr_set_zero(v, 1);
        for (int i = 0; i < N; ++i) {
            mpfr_add_ui(v, v, r.m[i], MPFR_RNDN);
            mpfr_div_2ui(v, v, 64, MPFR_RNDN);
        }
        mpfr_mul_2si(v, v, r.exp, MPFR_RNDN);
        if (r.negative) mpfr_neg(v, v, MPFR_RNDN);
    }
};

// -log2 of the relative error, or of the absolute one.
long bits(const Value &got, const Value &want, bool relative = true) {
    Value d;
    mpfr_sub(d.v, got.v, want.v, MPFR_RNDN);
    if (mpfr_zero_p(d.v)) return prec;
    return (relative ? mpfr_get_exp(want.v) - 1 : 0) - mpfr_get_exp(d.v);
}

struct Operand {
    explicit Operand(const std::string &s) : text(s), exact(s) {
        EXPECT_TRUE(calc::read(decimal, oracle::record(bytes_of(s)))) << s;
    }
    template <int N>
    Real<N> real() const {
        Real<N> r;
        calc::to_real(r, decimal);
        return r;
    }
    std::string text;
    Value exact;
    calc::Operand decimal;
};

class Kernels : public testing::Test {
protected:
    std::string random_text(int low_exp, int high_exp) {
        const int count = between(random, 1, 39), top = between(random, low_exp, high_exp);
        return Decimal(random_digits(random, static_cast<size_t>(count)), top - count + 1).plain();
    }
    Random random = seeded();
};

constexpr int rounds = 300;

// Runs a check at each width.
template <int... N>
void each(const auto &check) {
    (check(Real<N>()), ...);
}

// And compares what a kernel stores with a value of MPFR's.
#define EXPECT_BITS(bound, got, want, ...) \
    EXPECT_GE(bits(Value(got), want __VA_OPT__(, ) __VA_ARGS__), calc::bound)

TEST_F(Kernels, ArithmeticAndConversion) {
    constexpr ub8 divisor = 12345678901234567;
    for (int i = 0; i < rounds; ++i) {
        const Operand a(random_text(-30, 30)), b(random_text(-30, 30));
        each<3, 4, 8, calc::wide_limbs>([&]<int N>(Real<N> r) {
            SCOPED_TRACE(a.text + " " + b.text);
            const Real<N> x = a.real<N>(), y = b.real<N>();
            const Value vx(x), vy(y);
            Value want;
            EXPECT_BITS(operand_bits<N>, x, a.exact);
            calc::mul(r, x, y), mpfr_mul(want.v, vx.v, vy.v, MPFR_RNDN);
            EXPECT_BITS(real_bits<N>, r, want);
            calc::div(r, x, y), mpfr_div(want.v, vx.v, vy.v, MPFR_RNDN);
            EXPECT_BITS(real_bits<N>, r, want);
            calc::add(r, x, y), mpfr_add(want.v, vx.v, vy.v, MPFR_RNDN);
            EXPECT_BITS(real_bits<N>, r, want);
            calc::div_1(r, x, divisor), mpfr_div_ui(want.v, vx.v, divisor, MPFR_RNDN);
            EXPECT_BITS(real_bits<N>, r, want);
            calc::sqrt(r, x), mpfr_sqrt(want.v, vx.v, MPFR_RNDN);
            EXPECT_BITS(sqrt_bits<N>, r, want);
        });
    }
}

// Quotients whose digits meet the rare corrections of the division.
TEST_F(Kernels, DivisionCorrections) {
    for (int i = 0; i < 20000; ++i) {
        Real<4> a, b, q;
        for (Real<4> *x : {&a, &b}) {
            for (ub8 &limb : x->m) {
                const ub8 pick[] = {0, 1, ~ub8{0}, ub8{1} << 63, random()};
                limb = pick[random() % 5];
            }
            x->m[3] |= ub8{1} << 63;
            x->exp = 0;
            x->negative = false;
        }
        calc::div(q, a, b);
        Value want;
        mpfr_div(want.v, Value(a).v, Value(b).v, MPFR_RNDN);
        ASSERT_GE(bits(Value(q), want), calc::real_bits<4>) << i;
    }
}

TEST_F(Kernels, Exponential) {
    for (int i = 0; i < rounds; ++i) {
        const Operand x((i % 2 ? "-" : "") + (i % 3 ? random_text(-40, 1) : random_text(2, 2)));
        SCOPED_TRACE(x.text);
        Value want;
        mpfr_exp(want.v, x.exact.v, MPFR_RNDN);
        if (x.real<4>().exp > 9) continue;
        each<3, 4, calc::wide_limbs>([&]<int N>(Real<N> r) {
            calc::exp(r, x.real<N>());
            EXPECT_BITS(exp_bits<N>, r, want);
        });
    }
}

TEST_F(Kernels, Logarithm) {
    for (int i = 0; i < rounds; ++i) {
        std::string text = random_text(-128, 125);
        const int digits = static_cast<int>(random() % 38) + 1;
        if (i % 3 == 1)
            text = "1" + std::string(static_cast<size_t>(digits - 1), '0') +
                   std::to_string(1 + random() % 9) + "e-" + std::to_string(digits);
        if (i % 3 == 2)
            text = std::string(static_cast<size_t>(digits), '9') +
                   std::to_string(1 + random() % 9) + "e-" + std::to_string(digits + 1);
        const Operand x(text);
        SCOPED_TRACE(text);
        Value want;
        mpfr_log(want.v, x.exact.v, MPFR_RNDN);
        each<3, 4, 8, calc::wide_limbs>([&]<int N>(Real<N> r) {
            calc::ln(r, x.decimal);
            EXPECT_BITS(ln_bits<N>, r, want);
        });
    }
}

TEST_F(Kernels, SineAndCosine) {
    Value half_pi;
    mpfr_const_pi(half_pi.v, MPFR_RNDN);
    mpfr_div_2ui(half_pi.v, half_pi.v, 1, MPFR_RNDN);
    for (int i = 0; i < rounds; ++i) {
        const Operand x(
            i % 4 ? random_text(-23, 125)
                  : oracle::half_pi_multiple(std::to_string(random() % 1000 + 1)).plain());
        SCOPED_TRACE(x.text);
        Value s, c, r;
        mpfr_div(r.v, x.exact.v, half_pi.v, MPFR_RNDN);
        mpfr_frac(r.v, r.v, MPFR_RNDN);
        mpfr_mul(r.v, r.v, half_pi.v, MPFR_RNDN);
        mpfr_sin_cos(s.v, c.v, r.v, MPFR_RNDN);
        each<3, 4, calc::wide_limbs>([&]<int N>(Real<N> sine) {
            Real<N> cosine;
            calc::Angle<N> angle;
            calc::reduce(angle, x.decimal);
            calc::sin_cos(&sine, &cosine, angle);
            EXPECT_BITS(sin_cos_bits<N>, sine, s, false);
            EXPECT_BITS(sin_cos_bits<N>, cosine, c, false);
        });
    }
}

TEST_F(Kernels, ArcTangent) {
    for (int i = 0; i < rounds; ++i) {
        const Operand y(random_text(-8, 8)), x(i % 2 ? random_text(-8, 8) : random_text(-128, 40));
        SCOPED_TRACE(y.text + " " + x.text);
        Value want;
        mpfr_atan2(want.v, y.exact.v, x.exact.v, MPFR_RNDN);
        each<3, 4, calc::wide_limbs>([&]<int N>(Real<N> r) {
            calc::atan_quotient(r, y.real<N>(), x.real<N>());
            EXPECT_BITS(atan_bits<N>, r, want);
        });
    }
}

// A value composed of kernels, at each of its widths: its error is within the bits that it
// claims, and these are no more than the kernels' own bounds leave.
template <int... N>
void expect_claim(const Value &want, const auto &most, const auto &evaluate) {
    each<N...>([&](auto r) {
        const int claimed = evaluate(r);
        EXPECT_LE(claimed, most(r));
        if (claimed > 0) EXPECT_GE(bits(Value(r), want), claimed) << sizeof r.m / 8;
    });
}

TEST_F(Kernels, Compositions) {
    constexpr int wide = calc::wide_limbs;
    // A division of two logarithms adds their errors; a power multiplies its logarithm's by
    // less than 2^9; arcs and hyperbolic functions add a root's or an inverse's.
    const auto quotient_bits = []<int N>(const Real<N> &) { return calc::ln_bits<N> - 1; };
    const auto power_bits = []<int N>(const Real<N> &) { return calc::ln_bits<N> - 9; };
    const auto arc_bits = []<int N>(const Real<N> &) { return calc::atan_bits<N> - 1; };
    const auto hyperbolic_bits = []<int N>(const Real<N> &) { return calc::exp_bits<N> - 2; };
    const auto trig_bits = []<int N>(const Real<N> &) { return calc::sin_cos_bits<N>; };
    Value want, t;
    for (int i = 0; i < rounds; ++i) {
        const std::string nines(1 + random() % 37, '9');
        const Operand any(random_text(-20, 100)), small(random_text(-23, -1)),
            next("0." + nines + "7e0");
        const Operand &unit = i % 2 ? small : next, &angle = i % 3 ? small : any;
        SCOPED_TRACE(any.text + " " + small.text + " " + next.text);

        mpfr_log(want.v, any.exact.v, MPFR_RNDN);
        mpfr_log(t.v, next.exact.v, MPFR_RNDN);
        mpfr_div(want.v, want.v, t.v, MPFR_RNDN);
        expect_claim<3, 4, wide>(want, quotient_bits, [&](auto &r) {
            return calc::logarithm_quotient(r, any.decimal, next.decimal);
        });
        const Operand base(random_text(1, 3)), power(std::to_string(50 + random() % 14) + "e0");
        mpfr_pow(want.v, base.exact.v, power.exact.v, MPFR_RNDN);
        if (mpfr_get_exp(want.v) < 700)
            expect_claim<4, wide>(want, power_bits, [&](auto &r) {
                return calc::power_value(r, base.decimal, power.decimal);
            });
        mpfr_atan2(want.v, angle.exact.v, next.exact.v, MPFR_RNDN);
        expect_claim<3, 4, wide>(want, arc_bits, [&](auto &r) {
            return calc::angle_value(r, angle.decimal, next.decimal);
        });
        for (const auto f : {calc::Arc::sine, calc::Arc::cosine}) {
            (f == calc::Arc::sine ? mpfr_asin : mpfr_acos)(want.v, unit.exact.v, MPFR_RNDN);
            expect_claim<3, 4, wide>(want, arc_bits,
                                     [&](auto &r) { return calc::arc_value(r, f, unit.decimal); });
        }
        using calc::Hyperbolic;
        for (const auto f : {Hyperbolic::sine, Hyperbolic::cosine, Hyperbolic::tangent}) {
            constexpr decltype(&mpfr_sinh) functions[] = {mpfr_sinh, mpfr_cosh, mpfr_tanh};
            functions[static_cast<int>(f)](want.v, unit.exact.v, MPFR_RNDN);
            expect_claim<3, 4, wide>(want, hyperbolic_bits, [&](auto &r) {
                return calc::hyperbolic_value(r, f, unit.decimal);
            });
        }
        using calc::Trig;
        for (const auto f : {Trig::sine, Trig::cosine, Trig::tangent}) {
            constexpr decltype(&mpfr_sin) functions[] = {mpfr_sin, mpfr_cos, mpfr_tan};
            functions[static_cast<int>(f)](want.v, angle.exact.v, MPFR_RNDN);
            expect_claim<3, 4, wide>(
                want, trig_bits, [&](auto &r) { return calc::trig_value(r, f, angle.decimal); });
        }
    }
}

TEST_F(Kernels, ExactPowers) {
    struct Row {
        const char *x, *y, *power;
        bool exact;
    };
    for (const auto &[x, y, power, exact] : {
             Row{"5.5", "2", "30.25", true},
             {"5.5", "2", "30.26", false},
             {"30.25", "0.5", "5.5", true},
             {"915.0625", "0.25", "5.5", true},
             {"915.0625", "0.75", "166.375", true},
             {"915.0625", "0.75", "166.376", false},
             {"243", "0.2", "3", true},
             {"243", "0.4", "9", true},
             {"244", "0.4", "9", false},
             {"9", "-0.5", "3", false},
             {"16", "-0.25", "0.5", true},
             {"0.0625", "1.25", "0.03125", true},
             {"2", "10", "1024", true},
             {"2", "10", "1025", false},
             {"20", "3", "8000", true},
             {"3", "81", "443426488243037769948249630619149892803", true},
             {"3", "82", "443426488243037769948249630619149892803", false},
             {"3", "4097", "3", false},
             {"7", "1", "7", true},
         }) {
        const Operand a(x), b(y), c(power);
        EXPECT_EQ(calc::is_power(a.decimal, b.decimal, c.decimal), exact) << x << " " << y;
    }
}

// Powers of 10^8 and their neighbours, where the scaling's own truncation moves the value
// across the group's border.
TEST_F(Kernels, RoundingNextToPowersOfTheGroupBase) {
    for (int k = -15; k <= 15; ++k) {
        const std::string want = "1e" + std::to_string(8 * k);
        const Operand x(want);
        each<3, 4, calc::wide_limbs>([&]<int N>(Real<N> r) {
            for (int step = -8; step <= 8; ++step) {
                calc::to_real(r, x.decimal);
                Limbs<N> ulp = {static_cast<ub8>(step < 0 ? -step : step)};
                if (step < 0 && calc::sub<N>(r.m, r.m, ulp) == 0 && r.m[N - 1] >> 63 == 0) {
                    r.m[N - 1] |= ub8{1} << 63;  // below a power of 2
                    --r.exp;
                } else if (step > 0) {
                    calc::add<N>(r.m, r.m, ulp);
                }
                QZCICalcNumber result;
                ASSERT_TRUE(calc::round_to_record(result, r, 64 * N - 16));
                ASSERT_EQ(oracle::bytes(result), bytes_of(want)) << N << " " << step;
            }
        });
    }
}

}  // namespace
