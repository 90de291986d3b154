// Every function against MPFR on random operands of several distributions.
//
// OCI_NUMBER_ORACLE_COUNT: operands for each function; OCI_NUMBER_ORACLE_SEED: the seed.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "oracle.h"

namespace {

using Random = std::mt19937_64;

long between(Random &random, long low, long high) {
    return std::uniform_int_distribution<long>(low, high)(random);
}

std::string digits(Random &random, long count) {
    std::string s;
    for (long i = 0; i < count; ++i) s += static_cast<char>('0' + between(random, i == 0, 9));
    return s;
}

// count digits, the first at 10^top.
std::string value(Random &random, long count, long top) {
    return oracle::truncate20(digits(random, count) + "e" + std::to_string(top - count + 1));
}

std::string operand(Random &random, bool may_be_negative) {
    const std::string sign = may_be_negative && between(random, 0, 1) == 0 ? "-" : "";
    switch (between(random, 0, 11)) {
        case 0:  // any exponent
            return sign + value(random, 40, between(random, -128, 125));
        case 1: {  // near 1
            const long zeros = between(random, 1, 38), count = between(random, 1, 3);
            const bool above = between(random, 0, 1) == 0;
            const std::string rest = digits(random, std::min(count, 39 - zeros));
            return sign +
                   oracle::truncate20((above ? "1." : "0.") +
                                      std::string(static_cast<size_t>(zeros), above ? '0' : '9') +
                                      rest + "e0");
        }
        case 2:  // small integers and halves
            return sign + std::to_string(between(random, 0, 2000)) +
                   (between(random, 0, 1) ? "e0" : "0e-2");
        case 3:  // 12 digits
            return sign + value(random, 12, between(random, -4, 3));
        case 4:  // full length, moderate
            return sign + value(random, 40, between(random, -3, 2));
        case 5: {  // near a multiple of pi/2, small or large
            const std::string n = digits(random, between(random, 1, 30));
            return sign + oracle::truncate20(oracle::half_pi_multiple(n, 40));
        }
        case 6:  // tiny and short
            return sign + value(random, between(random, 1, 3), between(random, -60, -10));
        case 7:  // below 1, full length
            return sign + value(random, 40, between(random, -25, -1));
        case 8:  // short
            return sign + value(random, between(random, 1, 4), between(random, -6, 6));
        case 9: {  // where e^x leaves the range, and where tanh saturates
            const char *const ends[] = {"290.12571", "-294.73088", "290.81886", "46.7419",
                                        "23.02585"};
            const std::string end = ends[between(random, 0, 4)];
            return oracle::truncate20(end + digits(random, between(random, 1, 34)) + "e0");
        }
        case 10: {  // next to 1, full length
            const std::string nines(static_cast<size_t>(between(random, 1, 20)), '9');
            return sign + oracle::truncate20("0." + nines + digits(random, 40) + "e0");
        }
        default:  // powers of 10 and 2
            return sign + (between(random, 0, 1)
                               ? "1e" + std::to_string(between(random, -128, 125))
                               : std::to_string(1UL << between(random, 0, 60)) + "e0");
    }
}

std::string unit_interval(Random &random) {
    std::string x;
    do {
        x = operand(random, true);
    } while (x != "0" && oracle::expected("asin", x, "") == "error");
    return x;
}

struct Pair {
    std::string a, b;
};

Pair power_operands(Random &random) {
    const std::string base = operand(random, false);
    switch (between(random, 0, 4)) {
        case 0:  // integers
            return {operand(random, true), std::to_string(between(random, -60, 60)) + "e0"};
        case 1:  // roots
            return {base, std::to_string(between(random, -999, 999)) + "e-" +
                              std::to_string(between(random, 1, 3))};
        case 2: {  // perfect powers, ties among them
            const long z = between(random, 2, 99), q = 1L << between(random, 0, 2),
                       n = q * between(random, 1, 5);
            std::string x = "1e0";
            for (long i = 0; i < n; ++i)
                x = oracle::expected("pow", std::to_string(z) + "e0", std::to_string(i + 1) + "e0");
            return {x, std::to_string(between(random, -40, 40) * 25) + (q == 1 ? "e0" : "e-2")};
        }
        case 3: {  // result near the ends of the range: exponent = +-126 / log10(base)
            if (base == "0" || base == "1e0") return {base, "5e-1"};
            const double e =
                (between(random, 0, 1) ? 126 : -128) / std::log10(std::abs(std::stod(base)));
            if (!std::isfinite(e) || std::abs(e) > 1e40) return {base, "2e0"};
            char buffer[64];
            snprintf(buffer, sizeof buffer, "%.17e", e);
            return {base, oracle::truncate20(buffer)};
        }
        default: return {base, operand(random, true)};
    }
}

class RandomOracle : public testing::TestWithParam<const char *> {};

TEST_P(RandomOracle, EveryResultIsCorrectlyRounded) {
    const std::string f = GetParam();
    const char *const count_text = std::getenv("OCI_NUMBER_ORACLE_COUNT");
    const char *const seed_text = std::getenv("OCI_NUMBER_ORACLE_SEED");
    const long count = count_text ? std::atol(count_text) : 2000;
    const unsigned long seed = seed_text ? std::strtoul(seed_text, nullptr, 10) : 1;
    SCOPED_TRACE("OCI_NUMBER_ORACLE_SEED=" + std::to_string(seed));
    Random random(seed);
    int failures = 0;
    for (long i = 0; i < count && failures < 10; ++i) {
        Pair p;
        if (f == "pow") {
            p = power_operands(random);
        } else if (f == "log") {
            do {
                p = {operand(random, false), operand(random, false)};
            } while (oracle::round20(p.a) == "0" || oracle::round20(p.a) == "1e0" ||
                     oracle::round20(p.b) == "0");
        } else if (f == "atan2") {
            p = {operand(random, true), operand(random, true)};
        } else {
            p.a = f == "asin" || f == "acos" ? unit_interval(random) : operand(random, f != "ln");
        }
        const std::string want = oracle::expected(f, p.a, p.b), got = oracle::actual(f, p.a, p.b);
        if (want != got) ++failures;
        EXPECT_EQ(got, want) << f << "(" << p.a << (p.b.empty() ? "" : ", ") << p.b << ")";
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, RandomOracle,
                         testing::Values("exp", "ln", "sin", "cos", "tan", "asin", "acos", "atan",
                                         "sinh", "cosh", "tanh", "pow", "atan2", "log"),
                         [](const auto &param_info) { return std::string(param_info.param); });

}  // namespace
