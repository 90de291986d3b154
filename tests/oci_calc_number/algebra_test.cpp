// The algebraic functions against exact arithmetic, on random numbers of several
// distributions and on constructed ties.
#include <algorithm>

#include "oci_calc_number/oci_calc_number.h"
#include "support/values.h"

namespace {

using Random = std::mt19937_64;
using Bytes = std::vector<int>;

int between(Random &random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

Decimal integer(long value) { return Decimal(std::to_string(value), 0); }

// The number nearest to v; zero where there is none.
Decimal rounded(const Decimal &v) {
    const Bytes bytes = v.bytes();
    return bytes.empty() || bytes == Bytes{1, 128} ? integer(0) : Decimal::of(bytes);
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

// A result of mpz on operands of the same unit: a sum, difference or remainder.
Decimal combined(void (*f)(mpz_ptr, mpz_srcptr, mpz_srcptr), const Decimal &a, const Decimal &b) {
    const long unit = std::min(a.exponent(), b.exponent());
    Decimal r = a.to_unit(unit);
    const Decimal t = b.to_unit(unit);
    f(r.units(), r.units(), t.units());
    return r;
}

Decimal product(const Decimal &a, const Decimal &b) {
    Decimal r("0", a.exponent() + b.exponent());
    mpz_mul(r.units(), a.units(), b.units());
    return r;
}

// More digits than any rounding looks at.
Decimal quotient(const Decimal &a, const Decimal &b) {
    const Decimal scaled = a.to_unit(a.exponent() - 400);
    Decimal r("0", scaled.exponent() - b.exponent());
    mpz_tdiv_q(r.units(), scaled.units(), b.units());
    return r;
}

Decimal root(const Decimal &a) {
    const Decimal scaled = a.to_unit(a.exponent() - 100 - (a.exponent() & 1));
    Decimal r("0", scaled.exponent() / 2);
    mpz_sqrt(r.units(), scaled.units());
    return r;
}

Decimal to_integer(const Decimal &a, bool up) {
    const Decimal r = a.truncated(0);
    const bool cut = combined(mpz_sub, a, r).sign() != 0;
    return cut && (a.sign() > 0) == up ? r.plus(up ? 1 : -1) : r;
}

using TwoParam = sword (*)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);
using OneParam = sword (*)(const QZCICalcNumber *, QZCICalcNumber *);

Bytes bytes_of(const QZCICalcNumber &record) {
    OCINumber n = number({});
    EXPECT_EQ(QZCICalcNumToNumber(&record, &n), 0);
    return value_bytes(n);
}

QZCICalcNumber record(const Bytes &bytes) {
    QZCICalcNumber r;
    std::memset(&r, unused, sizeof r);
    const OCINumber n = number(bytes);
    EXPECT_EQ(QZCICalcNumFromNumber(&r, &n), 0);
    return r;
}
QZCICalcNumber record(const Decimal &v) { return record(result_bytes(v)); }

// The result in a record of its own, or in place of an operand.
Bytes call(TwoParam f, const Decimal &a, const Decimal &b, int place) {
    QZCICalcNumber x = record(a), y = record(b), r;
    QZCICalcNumber *const out = place == 1 ? &x : place == 2 ? &y : &r;
    return f(&x, &y, out) == 0 ? bytes_of(*out) : Bytes{};
}
Bytes call(OneParam f, const Decimal &a, int place) {
    QZCICalcNumber x = record(a), r;
    QZCICalcNumber *const out = place == 1 ? &x : &r;
    return f(&x, out) == 0 ? bytes_of(*out) : Bytes{};
}

TEST(Algebra, RandomOperandsOfTwo) {
    Random random = seeded();
    for (long i = random_cases(10000); i > 0 && !HasFailure(); --i) {
        const Decimal a = operand(random), b = partner(random, a);
        SCOPED_TRACE(a.plain() + " and " + b.plain());
        const int place = between(random, 0, 9);
        EXPECT_EQ(call(QZCICalcNumAdd, a, b, place), result_bytes(combined(mpz_add, a, b)));
        EXPECT_EQ(call(QZCICalcNumSub, a, b, place), result_bytes(combined(mpz_sub, a, b)));
        EXPECT_EQ(call(QZCICalcNumMul, a, b, place), result_bytes(product(a, b)));
        if (b.sign() == 0) continue;
        EXPECT_EQ(call(QZCICalcNumDiv, a, b, place), result_bytes(quotient(a, b)));
        EXPECT_EQ(call(QZCICalcNumMod, a, b, place), result_bytes(combined(mpz_tdiv_r, a, b)));
    }
}

TEST(Algebra, RandomOperandsOfOne) {
    Random random = seeded();
    for (long i = random_cases(10000); i > 0 && !HasFailure(); --i) {
        Decimal a = operand(random);
        // A square, or next to one.
        if (between(random, 0, 4) == 0) {
            const Decimal side = value(random, between(random, 1, 21), between(random, -60, 60));
            a = product(side, side);
            if (between(random, 0, 1) != 0) mpz_sub_ui(a.units(), a.units(), 1);
            a = rounded(a);
        }
        SCOPED_TRACE(a.plain());
        const int place = between(random, 0, 3);
        EXPECT_EQ(call(QZCICalcNumCeil, a, place), result_bytes(to_integer(a, true)));
        EXPECT_EQ(call(QZCICalcNumFloor, a, place), result_bytes(to_integer(a, false)));
        mpz_abs(a.units(), a.units());
        EXPECT_EQ(call(QZCICalcNumSqrt, a, place), result_bytes(root(a)));
        EXPECT_EQ(bytes_of(record(a)), result_bytes(a));
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
        if (off != 0) b = combined(mpz_add, b, Decimal(off < 0 ? "-1" : "1", last - 30));
        SCOPED_TRACE(a.plain() + " + " + b.plain());
        EXPECT_EQ(call(QZCICalcNumAdd, a, b, 0), result_bytes(combined(mpz_add, a, b)));
    }
}

TEST(Record, RefusedBytes) {
    QZCICalcNumber r;
    for (const OCINumber &n : {hex("00C102"), hex("16C1" + repeated("(02){20}"))}) {
        EXPECT_EQ(QZCICalcNumFromNumber(&r, &n), OCI_ERROR);
    }
}

// Texts in rooms of given sizes; what does not fit is rounded, or refused.
TEST(Record, Text) {
    for (const auto &[line, columns] : data_rows("record_text.txt")) {
        SCOPED_TRACE(line);
        const QZCICalcNumber r = record(hex_bytes(columns[0]));
        const size_t size = std::stoul(columns[1]);
        const bool refused = columns.size() < 3;
        std::vector<char> buffer(size + 1, 'x');
        EXPECT_EQ(QZCICalcNumToStr(&r, buffer.data(), size), refused ? -1 : 0);
        EXPECT_EQ(buffer.data(), refused ? "" : columns[2]);
        EXPECT_EQ(buffer[size], 'x');
    }
}

}  // namespace
