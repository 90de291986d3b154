// oci_number.hpp as programs use it. What its own code computes (text, integers, order) is held
// against the functions of oci.h and against values by hand.
#include "oci_number.hpp"

#include <gtest/gtest.h>

#include <iomanip>
#include <random>
#include <sstream>
#include <thread>
#include <unordered_set>

#include "support/values.h"

using namespace oci::literals;

namespace {

using oci::number;

// A model for any text: positions that are left out in front set no bound to the fraction.
const std::string any_places = std::string(130, '9') + ".9";

number stored(std::initializer_list<ub1> bytes) {
    OCINumber n{};
    std::copy(bytes.begin(), bytes.end(), n.OCINumberPart);
    return number(n);
}

std::string used_bytes(const number &n) {
    const ub1 *bytes = n.bytes().OCINumberPart;
    return std::string(bytes, bytes + 1 + bytes[0]);
}

template <class Call>
oci::error failure_of(Call call) {
    try {
        call();
    } catch (const oci::error &e) {
        return e;
    }
    ADD_FAILURE() << "no exception";
    return {0, ""};
}

TEST(NumberHpp, ReadsTextAsTheLibraryDoes) {
    Random random = seeded();
    for (long i = random_cases(2000); i > 0; --i) {
        // The same digits with their first at 10^(point - 1), plain and with an exponent.
        const std::string digits = random_digits(random, 1 + random() % 60);
        const int point = between(random, -130, 127);
        std::string plain = digits;
        if (point <= 0) {
            plain = "." + std::string(static_cast<size_t>(-point), '0') + digits;
        } else if (static_cast<size_t>(point) < digits.size()) {
            plain.insert(static_cast<size_t>(point), ".");
        } else {
            plain.resize(static_cast<size_t>(point), '0');
        }
        const std::string sign = random() % 2 == 0 ? "-" : "";
        const int split = between(random, 0, static_cast<int>(digits.size()));
        std::string exponential = sign + digits + "E" + std::to_string(point - split);
        exponential.insert(sign.size() + static_cast<size_t>(split), ".");
        SCOPED_TRACE(exponential);
        std::error_code library, ours;
        const number expected = oci::parse(sign + plain, any_places, library);
        EXPECT_EQ(used_bytes(number(exponential, ours)), used_bytes(expected));
        EXPECT_EQ(ours, library);
        EXPECT_EQ(used_bytes(number(sign + plain, ours)), used_bytes(expected));
    }
}

TEST(NumberHpp, TellsNumbersFromOtherText) {
    const struct {
        const char *text;
        const char *same;
    } read[] = {{"+5", "5"},     {"0e999999999999999999", "0"},
                {"-0", "0"},     {"5.", "5"},
                {"1e-129", "0"}, {"0.001e128", "1e125"},
                {"1E+2", "100"}, {"1e-999999999999999999", "0"}};
    for (const auto &row : read) EXPECT_EQ(number(row.text), number(row.same)) << row.text;
    for (const char *text : {"", "-", ".", "1e", "1e+", "e5", "0x1", " 1", "1 ", "1e126", "--1",
                             "1.2.3", "~1", "nan", "1,5", "1e5.0"}) {
        EXPECT_EQ(failure_of([&] { number{std::string_view(text)}; }).code(),
                  oci::errc::invalid_text)
            << text;
    }
}

TEST(NumberHpp, LiteralsAreConstants) {
    constexpr number n = 1'234.50_num;
    static_assert(n.bytes().OCINumberPart[0] == 4 && n.bytes().OCINumberPart[1] == 194);
    static_assert((.5_num).bytes().OCINumberPart[2] == 51);
    EXPECT_EQ(used_bytes(n), std::string("\4\302\15\43\63"));
    EXPECT_EQ(1.5E-100_num, oci::parse("." + std::string(99, '0') + "15", any_places));
}

TEST(NumberHpp, TakesAndGivesIntegers) {
    Random random = seeded();
    for (int i = 0; i < 1000; ++i) {
        const auto bits = static_cast<sb8>(random() >> (random() % 64));
        const sb8 value = i == 0 ? INT64_MIN : i == 1 ? INT64_MAX : i == 2 ? 0 : bits;
        OCINumber expected;
        ASSERT_EQ(OCINumberFromInt(oci::detail::handle(), &value, 8, OCI_NUMBER_SIGNED, &expected),
                  OCI_SUCCESS);
        EXPECT_EQ(used_bytes(value), used_bytes(number(expected) + 0)) << value;
        EXPECT_EQ(static_cast<sb8>(number(value)), value);
        EXPECT_EQ(number(static_cast<ub8>(value)).to<ub8>(), static_cast<ub8>(value));
    }
    // Only the part in front of the point counts, however many digits there are behind it.
    EXPECT_EQ((-0.5_num).to<unsigned>(), 0u);
    EXPECT_EQ((1e-100_num).to<int>(), 0);
    EXPECT_EQ((255.9_num).to<ub1>(), 255);
    for (const number &n : {256_num, -1_num, 1e60_num, number("~")}) {
        EXPECT_EQ(failure_of([&] { n.to<ub1>(); }).code(), oci::errc::overflow) << n;
    }
    EXPECT_EQ(number(0.1), 0.1_num);
    EXPECT_EQ(static_cast<double>(0.1_num), 0.1);
    EXPECT_EQ((-1e-100_num).to<double>(), 0);
    const OCINumber one = number(1).bytes(), none{}, *column[] = {&one, &none, &one};
    float reals[] = {7, 7, 7};
    std::error_code ec;
    oci::to_reals(column, 3, reals, ec);
    EXPECT_EQ(ec, oci::errc::failed);
    EXPECT_TRUE(reals[0] == 1 && reals[1] == 7 && reals[2] == 7) << reals[0] << reals[1];
    static_assert(!std::is_convertible_v<double, number> && !std::is_convertible_v<number, int> &&
                  !std::is_constructible_v<number, bool> && !std::is_constructible_v<number, char>);
}

// Forms of a value in one row; rows ascend.
TEST(NumberHpp, OrdersByValue) {
    const std::vector<std::vector<number>> rows = {
        {number("-~")},
        {std::numeric_limits<number>::lowest()},
        {-100, stored({4, 61, 100, 101, 102}), stored({5, 60, 101, 100, 101, 102})},
        {-1.5_num},
        {-1, stored({4, 62, 100, 101, 102})},
        {-1e-128_num},
        {0},
        {std::numeric_limits<number>::min()},
        {1, stored({3, 193, 2, 1}), stored({3, 194, 1, 2})},
        {1.01_num},
        {100, stored({3, 194, 2, 1})},
        {std::numeric_limits<number>::max()},
        {number("~")}};
    for (size_t i = 0; i < rows.size(); ++i) {
        for (const number &a : rows[i]) {
            EXPECT_EQ(std::hash<number>()(a), std::hash<number>()(rows[i][0])) << a;
            EXPECT_EQ(to_string(a), to_string(rows[i][0]));
            for (size_t k = 0; k < rows.size(); ++k) {
                for (const number &b : rows[k]) {
                    SCOPED_TRACE(to_string(a) + " " + to_string(b));
                    EXPECT_EQ(a == b, i == k);
                    EXPECT_EQ(a != b, i != k);
                    EXPECT_EQ(a < b, i < k);
                    EXPECT_EQ(a > b, i > k);
                    EXPECT_EQ(a <= b, i <= k);
                    EXPECT_EQ(a >= b, i >= k);
                }
            }
        }
    }
    EXPECT_EQ(std::numeric_limits<number>::max() * 10, number("~"));
    EXPECT_EQ(std::numeric_limits<number>::min() / 10, 0);
    EXPECT_EQ(1 + std::numeric_limits<number>::epsilon() * 0.4_num, 1);
    EXPECT_GT(1 + std::numeric_limits<number>::epsilon(), 1);
    // Any bytes may be compared.
    EXPECT_EQ(stored({0, 7}), stored({0, 7}));
    EXPECT_FALSE(stored({255, 255}) < stored({255, 255}));
}

TEST(NumberHpp, Calculates) {
    const struct {
        number result;
        const char *expected;
    } rows[] = {{-(2 + 3 * 4_num) / 8, "-1.75"},
                {-7 % 3_num, "-1"},
                {7 - 0.5_num, "6.5"},
                {sub(mul(div(6_num, 4), 2), add(1_num, mod(5_num, 3))), "0"},
                {abs(-3_num) + neg(1_num), "2"},
                {sqrt(2.25_num), "1.5"},
                {exp(number()) + log(number(1)), "1"},
                {log_base(2_num, 8) + log10(1000_num), "6"},
                {pow(2_num, -2), "0.25"},
                {sin(number()) + cos(number()) + tan(number()), "1"},
                {asin(number()) + acos(number(1)) + atan(number()) + atan2(0_num, 1), "0"},
                {sinh(number()) + cosh(number()) + tanh(number()), "1"},
                {floor(-1.5_num) + ceil(1.2_num), "0"},
                {round(2.5_num) + round(1234_num, -2) + round(0.125_num, 2), "1203.13"},
                {trunc(-2.99_num) + trunc(0.129_num, 2), "-1.88"},
                {prec(12345_num, 2) + shift(5_num, -1), "12000.5"},
                {round(oci::pi(), 5), "3.14159"},
                {sign(-3_num) + sign(0_num) * 10 + sign(0.1_num) * 100, "99"}};
    for (const auto &row : rows) EXPECT_EQ(to_string(row.result), row.expected);
    // Steps from zero and below, too, and operands that are the result.
    number n = -1;
    EXPECT_EQ(++n, 0);
    EXPECT_EQ(n++, 0);
    EXPECT_EQ(n--, 1);
    EXPECT_EQ(--n, -1);
    n = 3;
    n += n;
    n *= n;
    n /= 5;
    n -= 0.2_num;
    n %= 4;
    EXPECT_EQ(n, 3);
    EXPECT_TRUE(is_integer(100_num) && !is_integer(0.5_num) && !is_integer(number("-~")));
}

TEST(NumberHpp, ReportsFailuresAsTheCallerChooses) {
    number n = 5;
    const oci::error zero = failure_of([&] { n /= 0; });
    EXPECT_EQ(zero.number(), 22056);
    EXPECT_STREQ(zero.what(), "OCI-22056: value [5] is divided by zero");
    EXPECT_EQ(n, 5);
    // A failure without message of its own does not show the one before it.
    const oci::error nan = failure_of([] { number{std::numeric_limits<double>::quiet_NaN()}; });
    EXPECT_EQ(nan.code(), oci::errc::failed);
    EXPECT_STREQ(nan.what(), "the value cannot be converted");
    EXPECT_STREQ(failure_of([] { number("1x"); }).what(), "OCI-22062: invalid input string [1x]");

    std::error_code ec;
    EXPECT_EQ(sqrt(-1_num, ec), 0);
    EXPECT_EQ(ec, oci::errc::invalid_number);
    EXPECT_EQ(ec.message(), "invalid number, or outside the domain");
    EXPECT_EQ(sqrt(4_num, ec), 2);
    EXPECT_FALSE(ec);
    number("-", ec);
    EXPECT_EQ(ec, oci::errc::invalid_text);
    EXPECT_EQ(to_string(stored({0}), ec), "");
    EXPECT_TRUE(ec);
    to_string(number(1000), "99", ec);
    EXPECT_EQ(ec, oci::errc::format_overflow);
}

TEST(NumberHpp, WritesAndReadsStreamsAndText) {
    const struct {
        const char *number;
        int places;
        const char *text, *fixed;
    } rows[] = {
        {"123.45", 1, "123.45", "123.5"}, {"-.25", 4, "-0.25", "-0.2500"}, {"0", 2, "0", "0.00"},
        {"-0.004", 2, "-0.004", "0.00"},  {"1e3", 0, "1000", "1000"},      {"-~", 2, "-~", "-~"}};
    for (const auto &row : rows) {
        EXPECT_EQ(to_string(number(row.number)), row.text);
        EXPECT_EQ(to_fixed(number(row.number), row.places), row.fixed);
    }
    for (const std::string &text :
         {"-0." + std::string(127, '0') + "1", "0." + std::string(126, '0') + std::string(39, '7'),
          "-" + std::string(40, '9') + std::string(86, '0')}) {
        EXPECT_EQ(to_string(number(text)), text);
        std::string room(text.size(), '?');
        EXPECT_EQ(to_chars(&room[0], &room[0] + room.size() - 1, number(text)).ec,
                  std::errc::value_too_large);
        EXPECT_EQ(room, std::string(text.size(), '?'));
        EXPECT_EQ(to_chars(&room[0], &room[0] + room.size(), number(text)).ptr,
                  &room[0] + room.size());
        EXPECT_EQ(room, text);
    }
    EXPECT_EQ(to_string(-12.5_num, "FM990.00"), "-12.50");

    std::ostringstream out;
    out << std::setw(8) << std::setfill('*') << 1.5_num << std::showpos << 2_num << std::fixed
        << std::setprecision(2) << 2.005_num;
    EXPECT_EQ(out.str(), "*****1.5+2+2.01");
    std::istringstream in(" 1.5-2e1;.5 x");
    number a, b, c, d = 7;
    char semicolon;
    in >> a >> b >> semicolon >> c >> d;
    EXPECT_TRUE(in.fail() && a == 1.5_num && b == -20 && semicolon == ';' && c == 0.5_num);
    EXPECT_EQ(d, 7);
}

// Also computes when the thread's handle was freed already: this is destroyed after it.
struct LateUser {
    number value = 1;
    ~LateUser() { value = value + 1; }
};

TEST(NumberHpp, GivesEachThreadItsHandle) {
    std::vector<std::thread> threads;
    for (int t = 1; t <= 4; ++t) {
        threads.emplace_back([t] {
            static thread_local LateUser late;
            for (int i = 0; i < 200; ++i) {
                const std::string what = failure_of([&] { late.value = number(t) / 0; }).what();
                EXPECT_EQ(what, "OCI-22056: value [" + std::to_string(t) + "] is divided by zero");
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
}

#ifdef __cpp_lib_format
TEST(NumberHpp, Formats) {
    EXPECT_EQ(
        std::format("{} {:>8.2} {:*<6} {:+} {:_^6}", 0.25_num, 2.005_num, 1_num, 3_num, 5_num),
        "0.25     2.01 1***** +3 __5___");
}
#endif

}  // namespace
