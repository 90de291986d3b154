// What the engine promises its callers beyond the results of numbers.
#include <map>

#include "oracle.h"
#include "support/values.h"

namespace {

#define ENGINE(name) \
    { #name, QZCICalcNum##name }
using TwoParam = sword (*)(const QZCICalcNumber *, const QZCICalcNumber *, QZCICalcNumber *);
const std::map<std::string, TwoParam> two_params = {
    ENGINE(Add), ENGINE(Sub), ENGINE(Mul), ENGINE(Div), ENGINE(Mod), ENGINE(Power), ENGINE(Atan2)};
using OneParam = sword (*)(const QZCICalcNumber *, QZCICalcNumber *);
const std::map<std::string, OneParam> one_param = {
    ENGINE(Ceil),         ENGINE(Floor),        ENGINE(Sqrt),         ENGINE(Exp),  ENGINE(Ln),
    ENGINE(SinWithRound), ENGINE(CosWithRound), ENGINE(TanWithRound), ENGINE(Asin), ENGINE(Acos),
    ENGINE(Atan),         ENGINE(Sinh),         ENGINE(Cosh),         ENGINE(Tanh)};

// Result records that are operands too.
TEST(Engine, InPlace) {
    Random random = seeded();
    const auto operand = [&random] {
        return random_value(random, between(random, 1, 40), between(random, -20, 5)).bytes();
    };
    for (long i = random_cases(300); i > 0 && !HasFailure(); --i) {
        const Bytes a = operand(), b = operand();
        const auto check = [&](const std::string &name, const auto &f) {
            SCOPED_TRACE(name);
            QZCICalcNumber x = oracle::record(a), y = oracle::record(b), apart, first = x;
            if (f(x, y, apart) != OCI_SUCCESS) return;
            EXPECT_EQ(f(first, y, first), OCI_SUCCESS);
            EXPECT_EQ(f(x, y, y), OCI_SUCCESS);
            EXPECT_EQ(oracle::bytes(first), oracle::bytes(apart));
            EXPECT_EQ(oracle::bytes(y), oracle::bytes(apart));
        };
        for (const auto &[name, f] : two_params) {
            check(name, [f = f](auto &x, auto &y, auto &result) { return f(&x, &y, &result); });
        }
        for (const auto &[name, f] : one_param) {
            check(name, [f = f](auto &x, auto &, auto &result) { return f(&x, &result); });
        }
    }
}

TEST(Engine, OperandsThatNumbersDoNotGive) {
    for (const auto &[line, c] : data_rows("engine.txt")) {
        SCOPED_TRACE(line);
        const QZCICalcNumber a = oracle::record(bytes_of(c[1]));
        const QZCICalcNumber b = oracle::record(bytes_of(c[2] == "-" ? "0" : c[2]));
        QZCICalcNumber result;
        const sword status =
            c[2] == "-" ? one_param.at(c[0])(&a, &result) : two_params.at(c[0])(&a, &b, &result);
        EXPECT_EQ(status, c[3] == "error" ? OCI_ERROR : OCI_SUCCESS);
        if (status == OCI_SUCCESS) EXPECT_EQ(oracle::bytes(result), bytes_of(c[3]));
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

// Records, and lengths, that no number has are refused, not read beyond.
TEST(Engine, OverlongRecords) {
    const QZCICalcNumber n = wide_record(repeated("(12345678){40}"), -39);
    QZCICalcNumber result;
    for (const OneParam f :
         {QZCICalcNumExp, QZCICalcNumLn, QZCICalcNumSinWithRound, QZCICalcNumAtan, QZCICalcNumSinh})
        EXPECT_EQ(f(&n, &result), OCI_ERROR);
    EXPECT_EQ(QZCICalcNumPower(&n, &n, &result), OCI_ERROR);
    for (const OCINumber &bad : {hex("00C102"), hex("16C1" + repeated("(02){20}"))}) {
        EXPECT_EQ(QZCICalcNumFromNumber(&result, &bad), OCI_ERROR);
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
