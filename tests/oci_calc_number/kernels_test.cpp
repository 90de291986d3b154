// The kernels against MPFR: every error stays below the bound that the rounding test is
// told, in the fast and in the wide pass. The operands of the wide pass are those that no
// random search finds hard enough to get there. Operands are random, next to the ends of the
// tables' intervals, and changed digit by digit from the worst found so far; what the worst of
// each kernel take of its bound is printed at the end.
#include "oci_calc_number/elementary/kernels.h"

#include <cstdio>
#include <map>
#include <set>

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

// The relative error, or the absolute one, as a share of 2^-bits.
double share_of_bound(const Value &got, const Value &want, int bits, bool relative = true) {
    Value d;
    mpfr_sub(d.v, got.v, want.v, MPFR_RNDN);
    if (relative) mpfr_div(d.v, d.v, want.v, MPFR_RNDN);
    mpfr_mul_2si(d.v, d.v, bits, MPFR_RNDA);
    return std::abs(mpfr_get_d(d.v, MPFR_RNDA));
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

using Operands = std::vector<std::string>;

class Kernels : public testing::Test {
protected:
    std::string random_text(int low_exp, int high_exp) {
        const int count = between(random, 1, 39), top = between(random, low_exp, high_exp);
        return Decimal(random_digits(random, static_cast<size_t>(count)), top - count + 1).plain();
    }

    // A number next to i / 2^bits of a unit, where an index of a table changes.
    std::string next_to_step(int bits, const Value &unit) {
        Value v;
        mpfr_mul_ui(v.v, unit.v, 1 + random() % (ub8{1} << bits), MPFR_RNDN);
        mpfr_div_2ui(v.v, v.v, static_cast<unsigned long>(bits), MPFR_RNDN);
        mpfr_exp_t exponent;
        const std::string digits = v.digits(38, exponent, random() % 2 ? MPFR_RNDU : MPFR_RNDD);
        return Decimal(digits, static_cast<int>(exponent) - 37).plain();
    }

    // Records what an error takes of its bound.
    void expect_within(const char *name, int limbs, int bound, const Value &got, const Value &want,
                       bool relative = true) {
        const double share = share_of_bound(got, want, bound, relative);
        EXPECT_LT(share, 1) << name << " " << limbs;
        Worst &w = worst[{name, limbs}];
        ++w.cases;
        if (share < w.share) return;
        w.share = share;
        w.operands = current;
        climbed.insert({name, limbs});
    }

    // Checks operands that `make` makes, then those found the worst with a digit changed, which
    // take their place when they are worse.
    void search(const auto &make, const auto &check) {
        const auto try_operands = [&](const Operands &operands) {
            current = operands;
            std::string shown;
            for (const std::string &operand : operands) shown += operand + " ";
            SCOPED_TRACE(shown);
            check(operands);
        };
        climbed.clear();
        const long rounds = random_cases(300);
        for (long i = 0; i < rounds; ++i) try_operands(make(i));
        const auto found = climbed;
        for (long i = 0; i < rounds / 10; ++i) {
            for (const auto &kernel : found) {
                Operands operands = worst[kernel].operands;
                change_digit(operands[random() % operands.size()]);
                try_operands(operands);
            }
        }
    }

    static void TearDownTestSuite() {
        std::printf("%-20s %5s %8s  %s\n", "kernel", "limbs", "cases", "share of the bound used");
        for (const auto &[kernel, w] : worst) {
            std::printf("%-20s %5d %8ld  %.3g\n", kernel.first.c_str(), kernel.second, w.cases,
                        w.share);
        }
    }

    Random random = seeded();

private:
    using Kernel = std::pair<std::string, int>;
    struct Worst {
        long cases = 0;
        double share = 0;
        Operands operands;
    };

    // Between the first digit and the last: the operand's size, domain and length stay.
    void change_digit(std::string &text) {
        const size_t first = text.find_first_of("123456789"), last = text.find_last_of("123456789");
        const size_t at = first + 1 + random() % (last - first + 1);
        if (at <= last && text[at] != '.') text[at] = static_cast<char>('1' + random() % 9);
    }

    static inline std::map<Kernel, Worst> worst;
    std::set<Kernel> climbed;
    Operands current;
};

// Runs a check at each width.
template <int... N>
void each(const auto &check) {
    (check(Real<N>()), ...);
}

// Compares what a kernel of N limbs stores with a value of MPFR's.
#define EXPECT_BITS(bound, got, want, ...) \
    expect_within(#bound, N, calc::bound<N>, Value(got), want __VA_OPT__(, ) __VA_ARGS__)

TEST_F(Kernels, ArithmeticAndConversion) {
    constexpr ub8 divisor = 12345678901234567;
    const auto make = [&](long) { return Operands{random_text(-30, 30), random_text(-30, 30)}; };
    search(make, [&](const Operands &operands) {
        const Operand a(operands[0]), b(operands[1]);
        each<3, 4, 8, calc::wide_limbs>([&]<int N>(Real<N> r) {
            const Real<N> x = a.real<N>(), y = b.real<N>();
            const Value vx(x), vy(y);
            Value want;
            EXPECT_BITS(operand_bits, x, a.exact);
            calc::mul(r, x, y), mpfr_mul(want.v, vx.v, vy.v, MPFR_RNDN);
            EXPECT_BITS(real_bits, r, want);
            calc::div(r, x, y), mpfr_div(want.v, vx.v, vy.v, MPFR_RNDN);
            EXPECT_BITS(real_bits, r, want);
            calc::add(r, x, y), mpfr_add(want.v, vx.v, vy.v, MPFR_RNDN);
            EXPECT_BITS(real_bits, r, want);
            calc::div_1(r, x, divisor), mpfr_div_ui(want.v, vx.v, divisor, MPFR_RNDN);
            EXPECT_BITS(real_bits, r, want);
            calc::sqrt(r, x), mpfr_sqrt(want.v, vx.v, MPFR_RNDN);
            EXPECT_BITS(sqrt_bits, r, want);
        });
    });
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
        ASSERT_LT(share_of_bound(Value(q), want, calc::real_bits<4>), 1) << i;
    }
}

TEST_F(Kernels, Exponential) {
    const Value one("1");
    const auto make = [&](long i) {
        const std::string x = i % 4 == 0   ? next_to_step(16, one)
                              : i % 4 == 1 ? random_text(2, 2)
                                           : random_text(-40, 1);
        return Operands{(i % 2 ? "-" : "") + x};
    };
    search(make, [&](const Operands &operands) {
        const Operand x(operands[0]);
        if (x.real<4>().exp > 9) return;
        Value want;
        mpfr_exp(want.v, x.exact.v, MPFR_RNDN);
        each<3, 4, calc::wide_limbs>([&]<int N>(Real<N> r) {
            calc::exp(r, x.real<N>());
            EXPECT_BITS(exp_bits, r, want);
        });
    });
}

TEST_F(Kernels, Logarithm) {
    const Value two("2");
    const auto make = [&](long i) {
        const auto digits = static_cast<size_t>(random() % 38 + 1);
        const std::string last = std::to_string(1 + random() % 9);
        switch (i % 4) {
            case 0: return Operands{random_text(-128, 125)};
            case 1: return Operands{"1." + std::string(digits - 1, '0') + last};
            case 2: return Operands{"0." + std::string(digits, '9') + last};
            default: return Operands{next_to_step(i % 8 == 3 ? 9 : 30, two)};
        }
    };
    search(make, [&](const Operands &operands) {
        const Operand x(operands[0]);
        if (mpfr_cmp_ui(x.exact.v, 1) == 0) return;
        Value want;
        mpfr_log(want.v, x.exact.v, MPFR_RNDN);
        each<3, 4, 8, calc::wide_limbs>([&]<int N>(Real<N> r) {
            calc::ln(r, x.decimal);
            EXPECT_BITS(ln_bits, r, want);
        });
    });
}

TEST_F(Kernels, SineAndCosine) {
    Value half_pi;
    mpfr_const_pi(half_pi.v, MPFR_RNDN);
    mpfr_div_2ui(half_pi.v, half_pi.v, 1, MPFR_RNDN);
    const auto make = [&](long i) {
        switch (i % 4) {
            case 0:
                return Operands{
                    oracle::half_pi_multiple(std::to_string(random() % 1000 + 1)).plain()};
            case 1: return Operands{next_to_step(9, half_pi)};
            default: return Operands{random_text(-23, 125)};
        }
    };
    search(make, [&](const Operands &operands) {
        const Operand x(operands[0]);
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
            EXPECT_BITS(sin_cos_bits, sine, s, false);
            EXPECT_BITS(sin_cos_bits, cosine, c, false);
        });
    });
}

TEST_F(Kernels, ArcTangent) {
    const Value one("1");
    const auto make = [&](long i) {
        switch (i % 3) {
            case 0: return Operands{random_text(-8, 8), random_text(-8, 8)};
            case 1: return Operands{random_text(-8, 8), random_text(-128, 40)};
            default: return Operands{next_to_step(i % 2 ? 8 : 24, one), "1"};
        }
    };
    search(make, [&](const Operands &operands) {
        const Operand y(operands[0]), x(operands[1]);
        Value want;
        mpfr_atan2(want.v, y.exact.v, x.exact.v, MPFR_RNDN);
        each<3, 4, calc::wide_limbs>([&]<int N>(Real<N> r) {
            calc::atan_quotient(r, y.real<N>(), x.real<N>());
            EXPECT_BITS(atan_bits, r, want);
        });
    });
}

TEST_F(Kernels, Compositions) {
    constexpr int wide = calc::wide_limbs;
    // Its error is within the bits that a composition claims, and these are no more than the
    // kernels' own bounds leave.
    const auto expect_claim = [&](const char *name, auto r, const Value &want, int most,
                                  const auto &evaluate) {
        const int claimed = evaluate(r);
        EXPECT_LE(claimed, most) << name;
        if (claimed > 0) expect_within(name, sizeof r.m / 8, claimed, Value(r), want);
    };
    const auto make = [&](long i) {
        const std::string nines(1 + random() % 37, '9'), zeros(random() % 30, '0');
        const std::string any = random_text(-20, 100), small = random_text(-23, -1),
                          below = "0." + nines + "7", above = "1." + zeros + "7";
        const std::string minus = random() % 2 ? "-" : "";
        // y ln x between 1/100 and 512 in size, when x is next to 1, an integer's, or any.
        const int place = static_cast<int>(zeros.size());
        const Operands powers[] = {{above, minus + random_text(place - 1, place + 3)},
                                   {random_text(1, 3), std::to_string(50 + random() % 14)},
                                   {random_text(-128, 125), minus + random_text(-4, 0)}};
        return Operands{i % 4 ? any : above,
                        below,
                        minus + (i % 2 ? small : below),
                        minus + (i % 3 ? small : any),
                        powers[i % 3][0],
                        powers[i % 3][1],
                        minus + (i % 3 == 0   ? small
                                 : i % 3 == 1 ? random_text(-1, 1)
                                              : random_text(2, 2)),
                        (random() % 2 ? "-" : "") + (i % 2 ? any : below)};
    };
    search(make, [&](const Operands &operands) {
        const Operand any(operands[0]), next(operands[1]), unit(operands[2]), angle(operands[3]),
            base(operands[4]), power(operands[5]), grown(operands[6]), side(operands[7]);
        if (mpfr_cmp_ui(any.exact.v, 1) == 0) return;
        Value want, t;
        // A division of two logarithms adds their errors; a power multiplies its logarithm's by
        // less than 2^9; arcs and hyperbolic functions add a root's or an inverse's.
        mpfr_log(want.v, any.exact.v, MPFR_RNDN);
        mpfr_log(t.v, next.exact.v, MPFR_RNDN);
        mpfr_div(want.v, want.v, t.v, MPFR_RNDN);
        each<3, 4, wide>([&]<int N>(Real<N> r) {
            expect_claim("ln x / ln y", r, want, calc::ln_bits<N> - 1, [&](auto &v) {
                return calc::logarithm_quotient(v, any.decimal, next.decimal);
            });
        });
        mpfr_pow(want.v, base.exact.v, power.exact.v, MPFR_RNDN);
        if (mpfr_cmp_ui(base.exact.v, 1) != 0 && mpfr_regular_p(want.v) &&
            std::abs(mpfr_get_exp(want.v)) < 700) {
            each<4, wide>([&]<int N>(Real<N> r) {
                expect_claim("power", r, want, calc::ln_bits<N> - 9, [&](auto &v) {
                    return calc::power_value(v, base.decimal, power.decimal);
                });
            });
        }
        mpfr_atan2(want.v, angle.exact.v, side.exact.v, MPFR_RNDN);
        each<3, 4, wide>([&]<int N>(Real<N> r) {
            expect_claim("angle", r, want, calc::atan_bits<N> - 1, [&](auto &v) {
                return calc::angle_value(v, angle.decimal, side.decimal);
            });
        });
        for (const auto f : {calc::Arc::sine, calc::Arc::cosine}) {
            const bool is_sine = f == calc::Arc::sine;
            (is_sine ? mpfr_asin : mpfr_acos)(want.v, unit.exact.v, MPFR_RNDN);
            each<3, 4, wide>([&]<int N>(Real<N> r) {
                expect_claim(is_sine ? "arc sine" : "arc cosine", r, want, calc::atan_bits<N> - 1,
                             [&](auto &v) { return calc::arc_value(v, f, unit.decimal); });
            });
        }
        Real<wide> radians = unit.real<wide>(), sine, cosine;
        radians.negative = false;
        calc::sin_cos_radians(sine, cosine, radians);
        mpfr_sin_cos(want.v, t.v, Value(radians).v, MPFR_RNDN);
        expect_within("sin of radians", wide, calc::sin_cos_bits<wide>, Value(sine), want);
        expect_within("cos of radians", wide, calc::sin_cos_bits<wide>, Value(cosine), t);
        using calc::Hyperbolic;
        for (const auto f : {Hyperbolic::sine, Hyperbolic::cosine, Hyperbolic::tangent}) {
            constexpr decltype(&mpfr_sinh) functions[] = {mpfr_sinh, mpfr_cosh, mpfr_tanh};
            constexpr const char *names[] = {"sinh", "cosh", "tanh"};
            if (mpfr_cmpabs_ui(grown.exact.v, f == Hyperbolic::tangent ? 64 : 512) >= 0) continue;
            functions[static_cast<int>(f)](want.v, grown.exact.v, MPFR_RNDN);
            each<3, 4, wide>([&]<int N>(Real<N> r) {
                expect_claim(names[static_cast<int>(f)], r, want, calc::exp_bits<N> - 2,
                             [&](auto &v) { return calc::hyperbolic_value(v, f, grown.decimal); });
            });
        }
        using calc::Trig;
        for (const auto f : {Trig::sine, Trig::cosine, Trig::tangent}) {
            constexpr decltype(&mpfr_sin) functions[] = {mpfr_sin, mpfr_cos, mpfr_tan};
            constexpr const char *names[] = {"sine", "cosine", "tangent"};
            functions[static_cast<int>(f)](want.v, angle.exact.v, MPFR_RNDN);
            each<3, 4, wide>([&]<int N>(Real<N> r) {
                expect_claim(names[static_cast<int>(f)], r, want, calc::sin_cos_bits<N>,
                             [&](auto &v) { return calc::trig_value(v, f, angle.decimal); });
            });
        }
    });
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
