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
    for (long i = random_cases(300); i > 0 && !HasFailure(); --i) {
        const Bytes
            a = random_value(random, between(random, 1, 40), between(random, -20, 5)).bytes(),
            b = random_value(random, between(random, 1, 40), between(random, -20, 5)).bytes();
        for (const TwoParam f : two_params) {
            QZCICalcNumber x = oracle::record(a), y = oracle::record(b), apart;
            const QZCICalcNumber before = x;
            if (f(&x, &y, &apart) != OCI_SUCCESS) continue;
            ASSERT_EQ(f(&x, &y, &x), OCI_SUCCESS);
            ASSERT_EQ(f(&before, &y, &y), OCI_SUCCESS);
            EXPECT_EQ(oracle::bytes(x), oracle::bytes(apart)) << &f - two_params;
            EXPECT_EQ(oracle::bytes(y), oracle::bytes(apart)) << &f - two_params;
        }
        for (const OneParam f : one_param) {
            QZCICalcNumber x = oracle::record(a), apart;
            if (f(&x, &apart) != OCI_SUCCESS) continue;
            ASSERT_EQ(f(&x, &x), OCI_SUCCESS);
            EXPECT_EQ(oracle::bytes(x), oracle::bytes(apart)) << &f - one_param;
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

// Exponents that no number has are refused: no table reaches that far.
TEST(Engine, ExponentsThatNoNumberHas) {
    for (const int exponent : {63, 100, 127, -85, -128}) {
        QZCICalcNumber n = oracle::record(bytes_of("1.5")), result;
        n.start_pos = static_cast<sb1>(exponent);
        for (const OneParam f : {QZCICalcNumLn, QZCICalcNumAtan})
            EXPECT_EQ(f(&n, &result), OCI_ERROR);
        EXPECT_EQ(QZCICalcNumPower(&n, &n, &result), OCI_ERROR);
    }
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
