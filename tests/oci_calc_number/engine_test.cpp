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

// A record that no function made has no text: no digit in front, or bytes that are none.
TEST(Engine, TextOfNoValue) {
    for (const auto &[byte, text] :
         {std::pair{0, ""}, {1, "1.01"}, {99, "99.9"}, {100, ""}, {255, ""}}) {
        QZCICalcNumber r = {};
        std::memset(r.data_part, byte, sizeof r.data_part);
        char buffer[500] = "x";
        EXPECT_EQ(QZCICalcNumToStr(&r, buffer, sizeof buffer), *text == 0 ? -1 : 0);
        EXPECT_EQ(std::string(buffer).substr(0, 4), text);
    }
}

}  // namespace
