// Calculations with columns, aggregates and native columns to numbers, beside the functions of one
// number and GMP.
#include <bit>
#include <cmath>
#include <tuple>

#include "oci_number_column/columns.h"
#include "support/functions.h"

namespace {

// ---- Calculation

struct Calculation {
    oci_number_operation operation;
    const char *name;  // of the function of one number
};
const Calculation calculations[] = {
    {OCI_NUMBER_ABS, "Abs"},     {OCI_NUMBER_NEG, "Neg"},   {OCI_NUMBER_ROUND, "Round"},
    {OCI_NUMBER_TRUNC, "Trunc"}, {OCI_NUMBER_CEIL, "Ceil"}, {OCI_NUMBER_FLOOR, "Floor"},
    {OCI_NUMBER_SQRT, "Sqrt"},   {OCI_NUMBER_ADD, "Add"},   {OCI_NUMBER_SUB, "Sub"},
    {OCI_NUMBER_MUL, "Mul"},     {OCI_NUMBER_DIV, "Div"},   {OCI_NUMBER_MOD, "Mod"},
};

TEST(ColumnCalculate, IsWhatEachNumberGives) {
    Random random = seeded();
    for (long round = random_cases(20); round > 0; --round) {
        for (const Calculation &c : calculations) {
            const size_t count = 1 + random() % 130;
            const RandomRows a(random, count, round % 2 == 0), b(random, count, round % 3 == 0);
            const bool constant = round % 4 == 0;
            const bool two = function(c.name).numbers == 2;
            const sword places = between(random, -20, 45);
            // Records of any length byte are the same in the first form only.
            const TestColumn from = column_of(OCI_NUMBER_RECORDS, a.rows, a.present, random() % 9);
            TestColumn second = column_of(OCI_NUMBER_RECORDS, b.rows, b.present);
            if (constant) second.column.stride = 0;
            TestColumn to(OCI_NUMBER_RECORDS, count, 22 * count, random() % 5);
            take_log();
            oci_number_tally tally;
            ASSERT_EQ(oci_number_column_calculate(c.operation, &from.column,
                                                  two ? &second.column : nullptr, places,
                                                  &to.column, OCI_NUMBER_NULL, &tally),
                      OCI_NUMBER_DONE);
            EXPECT_TRUE(take_log().empty());
            to.expect_other_bits_kept();
            const std::vector<Bytes> results = to.numbers();
            for (size_t i = 0; i < count; ++i) {
                const OCINumber &x = a.rows[i], &y = b.rows[constant ? 0 : i];
                SCOPED_TRACE(testing::Message()
                             << c.name << ' ' << testing::PrintToString(x) << " and "
                             << testing::PrintToString(y) << ", " << places);
                const Bytes expected = result_of(function(c.name), x, y, places);
                const bool present = a.present[i] && (!two || b.present[i]);
                ASSERT_EQ(to.is_present(i), present && !expected.empty());
                ASSERT_EQ(results[i], to.is_present(i) ? expected : Bytes{0});
            }
        }
    }
}

TEST(ColumnCalculate, ComparesAsBytes) {
    Random random = seeded();
    for (long round = random_cases(50); round > 0; --round) {
        const size_t count = 1 + random() % 130;
        const RandomRows a(random, count, true);
        RandomRows b(random, count, false);
        for (OCINumber &n : b.rows) {
            if (random() % 3 == 0) n = a.rows[random() % count];
        }
        const TestColumn first = column_of(OCI_NUMBER_RECORDS, a.rows, a.present);
        const TestColumn second = column_of(OCI_NUMBER_RECORDS, b.rows, b.present);
        TestColumn to(OCI_NUMBER_ORDER, count, count);
        ASSERT_EQ(oci_number_column_calculate(OCI_NUMBER_CMP, &first.column, &second.column, 0,
                                              &to.column, OCI_NUMBER_NULL, nullptr),
                  OCI_NUMBER_DONE);
        for (size_t i = 0; i < count; ++i) {
            ErrorHandle err;
            sword order = 0;
            const sword status = OCINumberCmp(err, &a.rows[i], &b.rows[i], &order);
            ASSERT_EQ(to.is_present(i), b.present[i] && status == OCI_SUCCESS);
            if (!to.is_present(i)) order = 0;
            ASSERT_EQ(static_cast<sb1>(*to.at(i)), (order > 0) - (order < 0)) << i;
        }
    }
}

// ---- Sort keys

TEST(ColumnKeys, OrderAsValues) {
    Random random = seeded();
    Rows rows = {number({1, 0}),         number({2, 255, 101}), number({1, 128}),
                 number({3, 194, 2, 1}), number({2, 194, 2}),   number({2, 193, 1})};
    std::vector<Decimal> values = {Decimal("-1e200"), Decimal("1e200"), Decimal("0"),
                                   Decimal("100"),    Decimal("100"),   Decimal("0")};
    while (rows.size() < 200) {
        values.push_back(random_value(random));
        rows.push_back(number(values.back().bytes()));
    }
    const TestColumn from = column_of(OCI_NUMBER_BYTES_64, rows, Present(rows.size(), true));
    TestColumn to(OCI_NUMBER_KEYS, rows.size(), 22 * rows.size());
    ASSERT_EQ(oci_number_column_convert(&from.column, &to.column, OCI_NUMBER_STOP, nullptr),
              OCI_NUMBER_DONE);
    for (size_t i = 0; i < rows.size(); ++i) {
        for (size_t k = 0; k < rows.size(); ++k) {
            const int order = std::memcmp(to.at(22 * i), to.at(22 * k), 22);
            const long unit = std::min(values[i].exponent(), values[k].exponent());
            const auto scaled = [&](const Decimal &d) {
                mpz_class power;
                mpz_ui_pow_ui(power.get_mpz_t(), 10,
                              static_cast<unsigned long>(d.exponent() - unit));
                return mpz_class(d.sign() * mpz_class(d.digits()) * power);
            };
            ASSERT_EQ((order > 0) - (order < 0),
                      sgn(mpz_class(scaled(values[i]) - scaled(values[k]))))
                << testing::PrintToString(rows[i]) << "and " << testing::PrintToString(rows[k]);
        }
    }
}

// ---- Aggregates

TEST(ColumnSum, IsExact) {
    Random random = seeded();
    for (long round = random_cases(100); round > 0; --round) {
        Rows rows;
        mpz_class total;  // in units of 10^-200
        for (size_t count = random() % 300; rows.size() < count;) {
            const Decimal value = random() % 2 ? random_value(random)
                                               : random_value(random, between(random, 1, 40), 3);
            // Now and then what cancels all before it, so that the last digits show.
            mpz_class power;
            mpz_ui_pow_ui(power.get_mpz_t(), 10,
                          static_cast<unsigned long>(value.exponent() + 200));
            const mpz_class units = value.sign() * mpz_class(value.digits()) * power;
            rows.push_back(number(value.bytes()));
            total += units;
            if (random() % 3 == 0) {
                rows.push_back(number(value.negated().bytes()));
                total -= units;
            }
        }
        const Present present(rows.size(), true);
        const auto form = number_forms[random() % 4];
        const TestColumn from = column_of(form, rows, present);
        const size_t cut = form == OCI_NUMBER_PREFIXED ? 0 : random() % (rows.size() + 1);
        oci_number_sum sum, other;
        oci_number_sum_start(&sum);
        oci_number_sum_start(&other);
        for (const auto &[start, length, into] :
             {std::tuple{size_t{0}, cut, &sum}, std::tuple{cut, rows.size() - cut, &other}}) {
            oci_number_column part;
            oci_number_tally tally;
            ASSERT_EQ(oci_number_column_slice(&from.column, start, length, &part), OCI_NUMBER_DONE);
            ASSERT_EQ(oci_number_sum_add(into, &part, OCI_NUMBER_STOP, &tally), OCI_NUMBER_DONE);
            EXPECT_EQ(tally.values, length);
        }
        ASSERT_EQ(oci_number_sum_merge(&sum, &other), OCI_NUMBER_DONE);
        OCINumber result;
        ASSERT_EQ(oci_number_sum_value(&sum, &result), OCI_NUMBER_DONE);
        ASSERT_EQ(value_bytes(result), Decimal(total, -200).bytes());
    }
}

TEST(ColumnAggregates, OfEveryKindOfRow) {
    const OCINumber big = number(bytes_of("9.99e125")), infinity = number({2, 255, 101}),
                    minus = number({1, 0}), bad = number({2, 193, 150}), tiny = number({2, 128, 2});
    const struct {
        const char *name;
        Rows rows;
        Bytes sum, least, greatest;
        size_t refused;
    } cases[] = {
        {"nothing", {}, {1, 128}, {}, {}, 0},
        {"overflow", {big, big}, {2, 255, 101}, value_bytes(big), value_bytes(big), 0},
        {"infinity", {big, infinity, big}, {2, 255, 101}, value_bytes(big), {2, 255, 101}, 0},
        {"infinities", {minus, infinity, infinity}, {1, 0}, {1, 0}, {2, 255, 101}, 2},
        {"no number", {bad, big, bad}, value_bytes(big), value_bytes(big), value_bytes(big), 2},
        {"below all", {tiny}, {1, 128}, value_bytes(tiny), value_bytes(tiny), 0},
        {"not in normal form",
         {number({3, 193, 1, 2})},
         {2, 192, 2},
         {3, 193, 1, 2},
         {3, 193, 1, 2},
         0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const TestColumn from = column_of(OCI_NUMBER_RECORDS, c.rows, Present(c.rows.size(), true));
        oci_number_sum sum;
        oci_number_tally tally;
        OCINumber result, least = number({}), greatest = least;
        oci_number_sum_start(&sum);
        EXPECT_EQ(oci_number_sum_add(&sum, &from.column, OCI_NUMBER_NULL, &tally), OCI_NUMBER_DONE);
        EXPECT_EQ(tally.refused, c.refused);
        EXPECT_EQ(oci_number_sum_value(&sum, &result), OCI_NUMBER_DONE);
        EXPECT_EQ(value_bytes(result), c.sum);
        EXPECT_EQ(
            oci_number_column_extremes(&from.column, &least, &greatest, OCI_NUMBER_NULL, &tally),
            OCI_NUMBER_DONE);
        if (tally.values == 0) {
            EXPECT_EQ(least, number({}));
            continue;
        }
        EXPECT_EQ(value_bytes(least), c.least);
        EXPECT_EQ(value_bytes(greatest), c.greatest);
    }
}

TEST(ColumnAggregates, ExtremesAreThoseOfComparison) {
    Random random = seeded();
    for (long round = random_cases(100); round > 0; --round) {
        const size_t count = 1 + random() % 200;
        RandomRows rows(random, 0, true);
        while (rows.rows.size() < count) {
            rows.rows.push_back(number(random_value(random).bytes()));
            rows.present.push_back(random() % 8 != 0);
        }
        const TestColumn from = column_of(number_forms[round % 4], rows.rows, rows.present);
        const OCINumber *least = nullptr, *greatest = nullptr;
        const auto order = [](const OCINumber &a, const OCINumber &b) {
            ErrorHandle err;
            sword result = 0;
            OCINumberCmp(err, &a, &b, &result);
            return result;
        };
        for (size_t i = 0; i < count; ++i) {
            if (!rows.present[i]) continue;
            const OCINumber &n = rows.rows[i];
            if (least == nullptr || order(n, *least) < 0) least = &n;
            if (greatest == nullptr || order(n, *greatest) > 0) greatest = &n;
        }
        OCINumber low = number({}), high = low;
        ASSERT_EQ(oci_number_column_extremes(&from.column, &low, &high, OCI_NUMBER_STOP, nullptr),
                  OCI_NUMBER_DONE);
        if (least == nullptr) continue;
        EXPECT_EQ(value_bytes(low), value_bytes(*least));
        EXPECT_EQ(value_bytes(high), value_bytes(*greatest));
    }
}

// ---- From native columns

// The numbers that a native column becomes; empty bytes where a row is refused.
std::vector<Bytes> numbers_from(const TestColumn &from, oci_number_form form) {
    const size_t count = from.column.length;
    TestColumn to(form, count, 22 * count);
    take_log();
    EXPECT_EQ(oci_number_column_convert(&from.column, &to.column, OCI_NUMBER_NULL, nullptr),
              OCI_NUMBER_DONE);
    EXPECT_TRUE(take_log().empty());
    std::vector<Bytes> numbers = to.numbers();
    for (size_t i = 0; i < count; ++i) {
        if (!to.is_present(i)) numbers[i].clear();
    }
    return numbers;
}

template <class T, class Convert>
void check_native(oci_number_form form, const std::vector<T> &values, Convert convert) {
    std::vector<std::string> rows;
    for (const T &value : values)
        rows.emplace_back(reinterpret_cast<const char *>(&value), sizeof value);
    const TestColumn from(form, rows, Present(rows.size(), true), 3);
    for (const auto to : number_forms) {
        const std::vector<Bytes> numbers = numbers_from(from, to);
        for (size_t i = 0; i < values.size(); ++i) {
            ErrorHandle err;
            OCINumber n;
            const Bytes expected =
                convert(err, &values[i], 8, &n) == OCI_SUCCESS ? value_bytes(n) : Bytes{};
            ASSERT_EQ(numbers[i], expected) << values[i];
        }
        take_log();
    }
}

TEST(ColumnFrom, IntegersAndDoubles) {
    Random random = seeded();
    constexpr sb8 least = std::numeric_limits<sb8>::min();
    std::vector<sb8> integers = {0, 1, -1, 99, 100, -100, 10000, least, least + 1, ~least};
    std::vector<double> reals = {0.0,
                                 -0.0,
                                 0.1,
                                 -0.5,
                                 999999999999999.5,
                                 9.999999999999995e22,
                                 99999999999999999.0,
                                 5e-324,
                                 1e126,
                                 -9.9999999999999999e125,
                                 1e-128,
                                 9.99999999999999e-129,
                                 9.9999999999999995e-129,
                                 HUGE_VAL,
                                 -HUGE_VAL,
                                 std::nan("")};
    for (long i = random_cases(5000); i > 0; --i) {
        integers.push_back(static_cast<sb8>(random()) >> random() % 64);
        reals.push_back(std::bit_cast<double>(random()));
        reals.push_back(static_cast<double>(integers.back()) *
                        std::pow(10, between(random, -20, 20)));
    }
    check_native(OCI_NUMBER_INT64, integers, [](auto err, auto value, uword size, auto n) {
        return OCINumberFromInt(err, value, size, OCI_NUMBER_SIGNED, n);
    });
    check_native(OCI_NUMBER_DOUBLE, reals, [](auto err, auto value, uword size, auto n) {
        return OCINumberFromReal(err, value, size, n);
    });
}

TEST(ColumnFrom, Decimals) {
    Random random = seeded();
    for (long round = random_cases(3000); round > 0; --round) {
        const bool wide = random() % 2;
        const sb4 most = wide ? 76 : 38;
        const int digits = between(random, 1, most + 1);
        mpz_class units(digits > most && random() % 2
                            ? std::string(static_cast<size_t>(most), '9')
                            : random_digits(random, static_cast<size_t>(std::min(digits, most))));
        if (random() % 2) units = -units;
        if (random() % 50 == 0) units = 0;
        TestColumn from(wide ? OCI_NUMBER_DECIMAL256 : OCI_NUMBER_DECIMAL128, 1, wide ? 32 : 16);
        from.column.precision = between(random, 1, most);
        from.column.scale = between(random, -128, 128);
        mpz_class rest = units;
        if (sgn(rest) < 0) rest += mpz_class(1) << (wide ? 256 : 128);
        for (size_t i = 0; i < from.column.size; ++i, rest >>= 8) {
            static_cast<ub1 *>(from.column.data)[i] =
                static_cast<ub1>(mpz_class(rest & 255).get_ui());
        }
        const Decimal value(units, -from.column.scale);
        Bytes expected = value.bytes();
        const bool fits =
            sgn(units) == 0 || value.digits().size() <= static_cast<size_t>(from.column.precision);
        if (!fits || is_infinite(expected)) expected.clear();
        ASSERT_EQ(numbers_from(from, OCI_NUMBER_PREFIXED)[0], expected)
            << units.get_str() << " scale " << from.column.scale << " precision "
            << from.column.precision;
    }
}

TEST(ColumnFrom, Texts) {
    const struct {
        std::string text;
        Bytes bytes;
    } rows[] = {{"0", {1, 128}},
                {"  -12.50", {4, 62, 89, 51, 102}},
                {".5", {2, 192, 51}},
                {"1e5", {}},
                {"", {}},
                {"-", {}},
                {"100", {2, 194, 2}},
                {std::string(127, '9'), {}},
                {"1 ", {}}};
    std::vector<std::string> texts;
    for (const auto &row : rows) texts.push_back(row.text);
    for (const auto form : {OCI_NUMBER_TEXT_32, OCI_NUMBER_TEXT_64}) {
        const auto numbers =
            numbers_from(TestColumn(form, texts, Present(texts.size(), true)), OCI_NUMBER_BYTES_32);
        for (size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(numbers[i], rows[i].bytes) << texts[i];
    }
}

}  // namespace
