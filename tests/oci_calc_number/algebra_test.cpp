// The algebraic functions against exact arithmetic, on random numbers of several
// distributions and on constructed ties.
#include <algorithm>

#include "oci_calc_number/oci_calc_number.h"
#include "support/values.h"

namespace {

using Random = std::mt19937_64;
using Bytes = std::vector<int>;

const Bytes zero = {1, 128}, infinity = {2, 255, 101}, negative_infinity = {1, 0};

int between(Random &random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

Decimal integer(long value) { return Decimal(std::to_string(value), 0); }

// a * 10^places as an integer, for an exact common unit.
void scale(mpz_ptr r, const Decimal &a, long places) {
    mpz_ui_pow_ui(r, 10, static_cast<unsigned long>(a.exponent() + places));
    mpz_mul(r, r, a.units());
}

// The number nearest to v; zero where there is none.
Decimal rounded(const Decimal &v) {
    const Bytes bytes = v.bytes();
    if (bytes == zero || bytes.empty()) return integer(0);
    const long top = static_cast<long>(v.digits().size()) + v.exponent() - 1;
    return v.rounded((top >= 0 ? top / 2 : -((1 - top) / 2)) * 2 - 38);
}

// A number of `count` digits at most, the first at 10^top.
Decimal value(Random &random, int count, int top) {
    std::string digits = random_digits(random, static_cast<size_t>(count));
    if (between(random, 0, 1) != 0) digits.insert(0, "-");
    return rounded(Decimal(digits, top - count + 1));
}

Decimal operand(Random &random) {
    switch (between(random, 0, 7)) {
        case 0: return value(random, between(random, 1, 40), between(random, -128, 125));
        case 1: return integer(between(random, -1000, 1000));
        case 2: return value(random, 12, between(random, -4, 10));
        case 3: return value(random, 3, between(random, -128, 125));
        case 4: return value(random, 40, between(random, 118, 125));
        case 5: return value(random, 40, between(random, -128, -120));
        default: return value(random, 40, between(random, -20, 40));
    }
}

// A partner for a: any, near a, near -a, or where the exponents cancel in a product.
Decimal partner(Random &random, const Decimal &a) {
    const int top = static_cast<int>(static_cast<long>(a.digits().size()) + a.exponent()) - 1;
    switch (between(random, 0, 5)) {
        case 0: {
            Decimal near = a;
            (between(random, 0, 1) != 0 ? mpz_add_ui : mpz_sub_ui)(
                near.units(), near.units(), static_cast<unsigned long>(between(random, 0, 9)));
            if (between(random, 0, 1) != 0) mpz_neg(near.units(), near.units());
            return rounded(near);
        }
        case 1: return value(random, 40, std::clamp(top + between(random, -45, 45), -128, 125));
        case 2: return value(random, 40, std::clamp(between(random, -4, 4) - top, -128, 125));
        default: return operand(random);
    }
}

Decimal exact_sum(const Decimal &a, const Decimal &b, bool subtract) {
    Decimal r("0", std::min(a.exponent(), b.exponent())), t;
    scale(r.units(), a, -r.exponent());
    scale(t.units(), b, -r.exponent());
    (subtract ? mpz_sub : mpz_add)(r.units(), r.units(), t.units());
    return r;
}

Decimal exact_product(const Decimal &a, const Decimal &b) {
    Decimal r("0", a.exponent() + b.exponent());
    mpz_mul(r.units(), a.units(), b.units());
    return r;
}

// Enough digits of the quotient; half away from zero looks at truncated digits only.
Decimal truncated_quotient(const Decimal &a, const Decimal &b) {
    constexpr long extra = 90;
    Decimal r("0", a.exponent() - b.exponent() - extra), t;
    mpz_ui_pow_ui(t.units(), 10, extra);
    mpz_mul(t.units(), t.units(), a.units());
    mpz_tdiv_q(r.units(), t.units(), b.units());
    return r;
}

Decimal exact_remainder(const Decimal &a, const Decimal &b) {
    Decimal r("0", std::min(a.exponent(), b.exponent())), t;
    scale(r.units(), a, -r.exponent());
    scale(t.units(), b, -r.exponent());
    mpz_tdiv_r(r.units(), r.units(), t.units());
    return r;
}

Decimal truncated_root(const Decimal &a) {
    const long extra = 100 + (a.exponent() & 1);
    Decimal r("0", (a.exponent() - extra) / 2);
    mpz_ui_pow_ui(r.units(), 10, static_cast<unsigned long>(extra));
    mpz_mul(r.units(), r.units(), a.units());
    mpz_sqrt(r.units(), r.units());
    return r;
}

Decimal exact_integer(const Decimal &a, bool up) {
    Decimal r = a.truncated(0);
    const bool cut = exact_sum(a, r, true).sign() != 0;
    if (cut && a.sign() > 0 && up) r = exact_sum(r, integer(1), false);
    if (cut && a.sign() < 0 && !up) r = exact_sum(r, integer(1), true);
    return r;
}

using TwoParam = sword (*)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);
using OneParam = sword (*)(const QZCICalcNumber *, QZCICalcNumber *);

Bytes run(const QZCICalcNumber &result) {
    OCINumber n;
    std::memset(&n, unused, sizeof n);
    EXPECT_EQ(QZCICalcNumToNumber(&result, &n), 0);
    return value_bytes(n);
}

QZCICalcNumber record(const OCINumber &n) {
    QZCICalcNumber r;
    std::memset(&r, unused, sizeof r);
    EXPECT_EQ(QZCICalcNumFromNumber(&r, &n), 0);
    return r;
}
QZCICalcNumber record(const Decimal &v) { return record(number(result_bytes(v))); }

// The result in a record of its own, or in place of an operand.
Bytes call(TwoParam f, const Decimal &a, const Decimal &b, int place) {
    QZCICalcNumber x = record(a), y = record(b), r;
    QZCICalcNumber *const out = place == 1 ? &x : place == 2 ? &y : &r;
    return f(&x, &y, out) == 0 ? run(*out) : Bytes{};
}
Bytes call(OneParam f, const Decimal &a, int place) {
    QZCICalcNumber x = record(a), r;
    QZCICalcNumber *const out = place == 1 ? &x : &r;
    return f(&x, out) == 0 ? run(*out) : Bytes{};
}

TEST(Algebra, RandomOperandsOfTwo) {
    Random random = seeded();
    for (long i = random_cases(10000); i > 0 && !HasFailure(); --i) {
        const Decimal a = operand(random), b = partner(random, a);
        SCOPED_TRACE(a.digits() + "e" + std::to_string(a.exponent()) + " and " + b.digits() + "e" +
                     std::to_string(b.exponent()) + (a.sign() < 0 ? " -" : " +") +
                     (b.sign() < 0 ? "-" : "+"));
        const int place = between(random, 0, 9);
        EXPECT_EQ(call(QZCICalcNumAdd, a, b, place), result_bytes(exact_sum(a, b, false)));
        EXPECT_EQ(call(QZCICalcNumSub, a, b, place), result_bytes(exact_sum(a, b, true)));
        EXPECT_EQ(call(QZCICalcNumMul, a, b, place), result_bytes(exact_product(a, b)));
        if (b.sign() == 0) continue;
        EXPECT_EQ(call(QZCICalcNumDiv, a, b, place), result_bytes(truncated_quotient(a, b)));
        EXPECT_EQ(call(QZCICalcNumMod, a, b, place), result_bytes(exact_remainder(a, b)));
    }
}

TEST(Algebra, RandomOperandsOfOne) {
    Random random = seeded();
    for (long i = random_cases(10000); i > 0 && !HasFailure(); --i) {
        Decimal a = operand(random);
        // A square, or next to one.
        if (between(random, 0, 4) == 0) {
            const Decimal root = value(random, between(random, 1, 21), between(random, -60, 60));
            a = exact_product(root, root);
            if (between(random, 0, 1) != 0) mpz_sub_ui(a.units(), a.units(), 1);
            a = rounded(a);
        }
        SCOPED_TRACE(a.digits() + "e" + std::to_string(a.exponent()) + (a.sign() < 0 ? "-" : "+"));
        const int place = between(random, 0, 3);
        EXPECT_EQ(call(QZCICalcNumCeil, a, place), result_bytes(exact_integer(a, true)));
        EXPECT_EQ(call(QZCICalcNumFloor, a, place), result_bytes(exact_integer(a, false)));
        mpz_abs(a.units(), a.units());
        EXPECT_EQ(call(QZCICalcNumSqrt, a, place), result_bytes(truncated_root(a)));
        EXPECT_EQ(run(record(a)), result_bytes(a));
    }
}

// Sums whose exact value ends half way between two numbers, and one unit off.
TEST(Algebra, Ties) {
    Random random = seeded();
    for (long i = random_cases(3000); i > 0 && !HasFailure(); --i) {
        Decimal a = value(random, 40, 1 + 2 * between(random, -20, 50));
        if (a.digits().size() < 39) continue;
        const long unit = static_cast<long>(a.digits().size()) + a.exponent() - 1;  // of the top
        const long last = (unit & ~1L) - 38;
        Decimal b(a.sign() < 0 ? "-5" : "5", last - 1);
        const int off = between(random, -1, 1);
        if (off != 0) b = exact_sum(b, Decimal(off < 0 ? "-1" : "1", last - 30), false);
        SCOPED_TRACE(a.plain() + " + " + b.plain());
        EXPECT_EQ(call(QZCICalcNumAdd, a, b, 0), result_bytes(exact_sum(a, b, false)));
    }
}

// Records wider than numbers, as logarithms are: the quotient still rounds right.
TEST(Algebra, QuotientOfWideRecords) {
    Random random = seeded();
    for (long i = random_cases(300); i > 0 && !HasFailure(); --i) {
        const auto wide = [&](Decimal &exact) {
            const int count = between(random, 1, 40);
            QZCICalcNumber r = {};
            std::string digits;
            for (int k = 0; k < count; ++k) {
                const bool edge = between(random, 0, 3) == 0;
                const int limb = edge && k > 0 && k < count - 1 ? between(random, 0, 1) * 99999999
                                                                : between(random, 1, 99999999);
                r.data_part[count - 1 - k] = static_cast<ub4>(limb);
                digits += text("%08d", limb);
            }
            const int end = between(random, -30, 5);
            r.num_signed = 1;
            r.end_pos = static_cast<sb1>(end);
            r.start_pos = static_cast<sb1>(end + count - 1);
            exact = Decimal(digits, 8 * end);
            return r;
        };
        Decimal a, b;
        const QZCICalcNumber x = wide(a), y = wide(b);
        QZCICalcNumber q;
        ASSERT_EQ(QZCICalcNumDiv(&x, &y, &q), 0);
        mpz_t ten;
        mpz_init_set_ui(ten, 10);
        mpz_pow_ui(ten, ten, 400);
        mpz_mul(a.units(), a.units(), ten);
        mpz_clear(ten);
        Decimal scaled("0", a.exponent() - b.exponent() - 400);
        mpz_tdiv_q(scaled.units(), a.units(), b.units());
        EXPECT_EQ(run(q), result_bytes(scaled)) << a.plain() << " / " << b.plain();
        ASSERT_EQ(QZCICalcNumDiv(&x, &x, &q), 0);
        EXPECT_EQ(run(q), (Bytes{2, 193, 2}));
    }
}

TEST(Record, RefusedBytes) {
    QZCICalcNumber r;
    for (const OCINumber &n : {hex("00C102"), hex("16C1" + repeated("(02){20}"))}) {
        EXPECT_EQ(QZCICalcNumFromNumber(&r, &n), OCI_ERROR);
    }
}

TEST(Record, Text) {
    const struct {
        const char *digits;
        long exponent;
        size_t size;
        const char *expected;
    } rows[] = {
        {"0", 0, 2, "0"},
        {"0", 0, 1, nullptr},
        {"-12345", -2, 500, "-123.45"},
        {"-12345", -2, 7, "-123.5"},
        {"12345", -2, 5, "123"},
        {"12345", -2, 4, "123"},
        {"12345", -2, 3, nullptr},
        {"12345", 0, 4, "1E4"},
        {"12345", 0, 5, "1E4"},
        {"12345", 0, 6, "12345"},
        {"9996", -3, 5, "10"},
        {"9996", -3, 6, "9.996"},
        {"996", 37, 500,
         "996"
         "0000000000000000000000000000000000000"},
        {"996", 38, 500, "9.96E40"},
        {"996", 38, 6, "1E41"},
        {"5", -8, 500, "5E-8"},
        {"-5", -7, 500, "-0.0000005"},
        {"-5", -7, 6, "-5E-7"},
        {"15", 124, 500, "1.5E125"},
        {"15", 124, 6, "2E125"},
    };
    for (const auto &row : rows) {
        const QZCICalcNumber r = record(Decimal(row.digits, row.exponent));
        std::vector<char> buffer(row.size + 1, 'x');
        const sword status = QZCICalcNumToStr(&r, buffer.data(), row.size);
        EXPECT_EQ(status, row.expected != nullptr ? 0 : -1) << row.digits << ' ' << row.size;
        EXPECT_STREQ(buffer.data(), row.expected != nullptr ? row.expected : "");
        EXPECT_EQ(buffer[row.size], 'x');
    }
    char text[4];
    const QZCICalcNumber p = record(number({2, 255, 101})), n = record(number({1, 0}));
    EXPECT_EQ(QZCICalcNumToStr(&p, text, sizeof text), 0);
    EXPECT_STREQ(text, "~");
    EXPECT_EQ(QZCICalcNumToStr(&n, text, sizeof text), 0);
    EXPECT_STREQ(text, "-~");
}

}  // namespace
