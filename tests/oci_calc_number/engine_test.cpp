// What the engine promises its callers beyond the results of numbers.
#include "oracle.h"
#include "support/values.h"

namespace {

using TwoParam = sword (*)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);
constexpr TwoParam two_params[] = {QZCICalcNumAdd,  QZCICalcNumSub, QZCICalcNumMul,
                                   QZCICalcNumDiv,  QZCICalcNumMod, QZCICalcNumPower,
                                   QZCICalcNumAtan2};
using OneParam = sword (*)(const QZCICalcNumber *, QZCICalcNumber *);
constexpr OneParam one_param[] = {
    QZCICalcNumCeil,         QZCICalcNumFloor,        QZCICalcNumSqrt,         QZCICalcNumExp,
    QZCICalcNumLn,           QZCICalcNumSinWithRound, QZCICalcNumCosWithRound, QZCICalcNumAtan,
    QZCICalcNumTanWithRound, QZCICalcNumAsin,         QZCICalcNumAcos,         QZCICalcNumSinh,
    QZCICalcNumCosh,         QZCICalcNumTanh};

// Result records that are operands too.
TEST(Engine, InPlace) {
    Random random = seeded();
    const auto operand = [&random] {
        return random_value(random, between(random, 1, 40), between(random, -20, 5)).bytes();
    };
    for (long i = random_cases(300); i > 0 && !HasFailure(); --i) {
        const Bytes a = operand(), b = operand();
        const auto check = [&](const auto &f) {
            QZCICalcNumber x = oracle::record(a), y = oracle::record(b), apart, first = x;
            if (f(x, y, apart) != OCI_SUCCESS) return;
            EXPECT_EQ(f(first, y, first), OCI_SUCCESS);
            EXPECT_EQ(f(x, y, y), OCI_SUCCESS);
            EXPECT_EQ(oracle::bytes(first), oracle::bytes(apart));
            EXPECT_EQ(oracle::bytes(y), oracle::bytes(apart));
        };
        for (const TwoParam f : two_params) {
            check([f](auto &x, auto &y, auto &result) { return f(&x, &y, &result); });
        }
        for (const OneParam f : one_param) {
            check([f](auto &x, auto &, auto &result) { return f(&x, &result); });
        }
    }
}

// The number module refuses these operands, or some of them, by rules of its own.
TEST(Engine, OperandsBeyondTheDomain) {
    const auto refuses = [](auto *f, const auto &...operands) {
        QZCICalcNumber result;
        return f(&operands..., &result) == OCI_ERROR;
    };
    const auto n = [](const char *s) { return oracle::record(bytes_of(s)); };
    for (const char *s : {"0", "-1", "-inf"}) EXPECT_TRUE(refuses(QZCICalcNumLn, n(s))) << s;
    for (const char *s : {"1.0000001", "-2", "inf", "-inf"}) {
        EXPECT_TRUE(refuses(QZCICalcNumAsin, n(s))) << s;
        EXPECT_TRUE(refuses(QZCICalcNumAcos, n(s))) << s;
    }
    for (const char *s : {"-1", "-inf"}) EXPECT_TRUE(refuses(QZCICalcNumSqrt, n(s))) << s;
    for (const char *s : {"-2", "0", "inf"}) {
        EXPECT_TRUE(refuses(QZCICalcNumDiv, n(s), n("0"))) << s;
        EXPECT_TRUE(refuses(QZCICalcNumMod, n(s), n("0"))) << s;
    }
}

TEST(Engine, AnglesOfTheVerticalAxis) {
    const std::string right_angle = "1.57079632679489661923132169163975144210";
    for (const auto &[y, angle] : {std::pair{"0", std::string("0")},
                                   {"3", right_angle},
                                   {"-3", "-" + right_angle},
                                   {"-inf", "-" + right_angle}}) {
        const QZCICalcNumber a = oracle::record(bytes_of(y)), b = oracle::record(bytes_of("0"));
        QZCICalcNumber result;
        ASSERT_EQ(QZCICalcNumAtan2(&a, &b, &result), OCI_SUCCESS);
        EXPECT_EQ(oracle::bytes(result), bytes_of(angle)) << y;
    }
}

// Limbs as the eight digits of a text each.
QZCICalcNumber wide_record(const std::string &digits, int end_pos) {
    const size_t count = digits.size() / 8;
    QZCICalcNumber r = {};
    for (size_t i = 0; i < count; ++i) {
        r.data_part[count - 1 - i] = static_cast<ub4>(std::stoul(digits.substr(8 * i, 8)));
    }
    r.num_signed = 1;
    r.end_pos = static_cast<sb1>(end_pos);
    r.start_pos = static_cast<sb1>(end_pos + static_cast<int>(count) - 1);
    return r;
}

// Records wider than numbers: the quotient still rounds right.
TEST(Engine, QuotientOfWideRecords) {
    Random random = seeded();
    for (long i = random_cases(300); i > 0 && !HasFailure(); --i) {
        std::string digits[2];
        QZCICalcNumber records[2], quotient;
        const int end = between(random, -30, 5);
        for (int k = 0; k < 2; ++k) {
            const auto limbs = static_cast<size_t>(between(random, 1, 40));
            digits[k] = random_digits(random, 8 * limbs - 1) + "1";
            records[k] = wide_record(digits[k], end);
        }
        const mpz_class scaled(digits[0] + std::string(400, '0')), divisor(digits[1]);
        ASSERT_EQ(QZCICalcNumDiv(&records[0], &records[1], &quotient), OCI_SUCCESS);
        EXPECT_EQ(oracle::bytes(quotient), Decimal(mpz_class(scaled / divisor), -400).bytes())
            << digits[0] << " / " << digits[1];
        ASSERT_EQ(QZCICalcNumDiv(&records[0], &records[0], &quotient), OCI_SUCCESS);
        EXPECT_EQ(oracle::bytes(quotient), bytes_of("1"));
    }
}

// Operands that no number converts to are refused, not read beyond.
TEST(Engine, OverlongRecords) {
    const QZCICalcNumber n = wide_record(repeated("(12345678){40}"), -39);
    QZCICalcNumber result;
    for (const OneParam f :
         {QZCICalcNumExp, QZCICalcNumLn, QZCICalcNumSinWithRound, QZCICalcNumAtan, QZCICalcNumSinh})
        EXPECT_EQ(f(&n, &result), OCI_ERROR);
    EXPECT_EQ(QZCICalcNumPower(&n, &n, &result), OCI_ERROR);
}

TEST(Engine, LengthsThatNoNumberHas) {
    QZCICalcNumber r;
    for (const OCINumber &n : {hex("00C102"), hex("16C1" + repeated("(02){20}"))}) {
        EXPECT_EQ(QZCICalcNumFromNumber(&r, &n), OCI_ERROR);
    }
}

// Texts in rooms of given sizes; what does not fit is rounded, or refused.
TEST(Engine, Text) {
    for (const auto &[line, columns] : data_rows("record_text.txt")) {
        SCOPED_TRACE(line);
        const QZCICalcNumber r = oracle::record(hex_bytes(columns[0]));
        const size_t size = std::stoul(columns[1]);
        const bool refused = columns.size() < 3;
        std::string buffer(size + 1, 'x');
        EXPECT_EQ(QZCICalcNumToStr(&r, buffer.data(), size), refused ? -1 : 0);
        EXPECT_EQ(std::string(buffer.c_str()), refused ? "" : columns[2]);
        EXPECT_EQ(buffer[size], 'x');
    }
}

}  // namespace
