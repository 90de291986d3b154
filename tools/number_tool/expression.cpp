#include "expression.h"

#include <algorithm>
#include <iterator>

#include "decimal.h"
#include "number_bytes.h"
#include "stream.h"

namespace number_tool {

namespace {

using UnaryCall = sword (*)(OCIError *, const OCINumber *, OCINumber *);
using BinaryCall = sword (*)(OCIError *, const OCINumber *, const OCINumber *, OCINumber *);
using CountCall = sword (*)(OCIError *, const OCINumber *, sword, OCINumber *);

// A function of the expression language: exactly one of the calls is set.
struct NamedFunction {
    std::string_view name;
    std::string_view arguments;
    UnaryCall unary = nullptr;
    BinaryCall binary = nullptr;
    CountCall count = nullptr;   // the second argument is an integer
    std::string_view refused{};  // what it has no value for
};

constexpr std::string_view of_infinity = "an angle that is infinite";
constexpr std::string_view power_refused =
    "a negative base with a fractional exponent, or zero with a negative one";
constexpr std::string_view outside_1 = "an argument outside -1 to 1";

constexpr NamedFunction functions[] = {
    {"abs", "x", OCINumberAbs},
    {"acos", "x", OCINumberArcCos, nullptr, nullptr, outside_1},
    {"asin", "x", OCINumberArcSin, nullptr, nullptr, outside_1},
    {"atan", "x", OCINumberArcTan},
    {"atan2", "y, x", nullptr, OCINumberArcTan2, nullptr, "a second argument of zero"},
    {"ceil", "x", OCINumberCeil},
    {"cos", "x", OCINumberCos, nullptr, nullptr, of_infinity},
    {"cosh", "x", OCINumberHypCos},
    {"exp", "x", OCINumberExp},
    {"floor", "x", OCINumberFloor},
    {"ln", "x", OCINumberLn, nullptr, nullptr, "zero or a negative number"},
    {"log", "base, x", nullptr, OCINumberLog, nullptr, "zero or a negative number"},
    {"mod", "x, y", nullptr, OCINumberMod, nullptr, "an infinite dividend"},
    {"neg", "x", OCINumberNeg},
    {"power", "x, y", nullptr, OCINumberPower, nullptr, power_refused},
    {"prec", "x, digits", nullptr, nullptr, OCINumberPrec},
    {"round", "x, places", nullptr, nullptr, OCINumberRound},
    {"shift", "x, n", nullptr, nullptr, OCINumberShift},
    {"sin", "x", OCINumberSin, nullptr, nullptr, of_infinity},
    {"sinh", "x", OCINumberHypSin},
    {"sqrt", "x", OCINumberSqrt, nullptr, nullptr, "a negative number"},
    {"tan", "x", OCINumberTan, nullptr, nullptr, of_infinity},
    {"tanh", "x", OCINumberHypTan},
    {"trunc", "x, places", nullptr, nullptr, OCINumberTrunc},
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

class Evaluator {
public:
    Evaluator(std::string_view text, const LibraryError &err, std::string &reason)
        : text_(text), err_(err), reason_(reason) {}

    bool run(OCINumber &result) {
        if (!sum(result)) return false;
        return at_end() || fail("unexpected " + in_quotes(text_.substr(pos_, 1)), pos_);
    }

private:
    // Parentheses, signs and powers nest this deep at most.
    static constexpr int max_depth = 200;

    bool at_end() {
        while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t')) ++pos_;
        return pos_ == text_.size();
    }
    char peek() { return at_end() ? '\0' : text_[pos_]; }
    bool take(char c) {
        if (peek() != c || at_end()) return false;
        ++pos_;
        return true;
    }

    bool fail(const std::string &what, size_t where) {
        reason_ = what + " at column " + std::to_string(where + 1);
        return false;
    }

    // Passes the library's status on; a failure is placed at the call. Where a function of this
    // name has no value the library says no more than that it failed.
    bool check(sword status, size_t where, std::string_view name, std::string_view refused) {
        if (status == OCI_SUCCESS) return true;
        constexpr int divided_by_zero = 22056;
        if (refused.empty() || err_.code() == divided_by_zero) return fail(err_.message(), where);
        return fail("no " + std::string(name) + " of " + std::string(refused), where);
    }
    bool check(sword status, size_t where) { return check(status, where, {}, {}); }

    bool apply(BinaryCall call, OCINumber &left, const OCINumber &right, size_t where,
               std::string_view name, std::string_view refused) {
        return check(call(err_.handle(), &left, &right, &left), where, name, refused);
    }

    bool sum(OCINumber &result) {
        if (!product(result)) return false;
        for (;;) {
            const char c = peek();
            if (c != '+' && c != '-') return true;
            const size_t where = pos_++;
            OCINumber right{};
            if (!product(right)) return false;
            const bool good =
                c == '+'
                    ? apply(OCINumberAdd, result, right, where, "sum", "opposite infinities")
                    : apply(OCINumberSub, result, right, where, "difference", "equal infinities");
            if (!good) return false;
        }
    }

    bool product(OCINumber &result) {
        if (!sign(result)) return false;
        for (;;) {
            const char c = peek();
            if (c != '*' && c != '/' && c != '%') return true;
            const size_t where = pos_++;
            OCINumber right{};
            if (!sign(right)) return false;
            const bool good =
                c == '*'
                    ? apply(OCINumberMul, result, right, where, "product", "zero and an infinity")
                : c == '/' ? apply(OCINumberDiv, result, right, where, "quotient", "infinities")
                           : apply(OCINumberMod, result, right, where, "remainder",
                                   "an infinite dividend");
            if (!good) return false;
        }
    }

    bool sign(OCINumber &result) {
        if (depth_ == max_depth) return fail("nested too deeply", pos_);
        ++depth_;
        bool good;
        if (peek() == '-') {
            const size_t where = pos_++;
            good = sign(result) && check(OCINumberNeg(err_.handle(), &result, &result), where);
        } else {
            good = power(result);
        }
        --depth_;
        return good;
    }

    bool power(OCINumber &result) {
        if (!value(result)) return false;
        if (peek() != '^') return true;
        const size_t where = pos_++;
        OCINumber exponent{};
        return sign(exponent) &&
               apply(OCINumberPower, result, exponent, where, "power", power_refused);
    }

    bool value(OCINumber &result) {
        const char c = peek();
        if (take('(')) return sum(result) && close();
        if (is_digit(c) || c == '.') return number(result);
        if (is_letter(c)) return named(result);
        if (at_end()) return fail("a value is missing", pos_);
        return fail("unexpected " + in_quotes(text_.substr(pos_, 1)), pos_);
    }

    bool close() { return take(')') || fail("\")\" is missing", pos_); }

    bool number(OCINumber &result) {
        const size_t start = pos_;
        const auto skip = [&](auto belongs) {
            while (pos_ < text_.size() && belongs(text_[pos_])) ++pos_;
        };
        skip([](char c) { return is_digit(c) || c == '.'; });
        if (pos_ < text_.size() && (text_[pos_] | 0x20) == 'e') {
            ++pos_;
            if (pos_ < text_.size() && (text_[pos_] == '+' || text_[pos_] == '-')) ++pos_;
            skip(is_digit);
        }
        DecimalText parts;
        const std::string_view number = text_.substr(start, pos_ - start);
        if (!scan_decimal(number, false, start + 1, parts, reason_)) return false;
        // What is too large for a number is an infinity, as the result of a step is.
        if (!number_of(parts, result)) number_bytes::set_infinity(result, false);
        return true;
    }

    bool named(OCINumber &result) {
        const size_t start = pos_;
        while (pos_ < text_.size() && (is_letter(text_[pos_]) || is_digit(text_[pos_]))) ++pos_;
        const std::string_view name = text_.substr(start, pos_ - start);
        if (name == "pi") {
            OCINumberSetPi(err_.handle(), &result);
            return true;
        }
        const auto *f =
            std::find_if(std::begin(functions), std::end(functions),
                         [&](const NamedFunction &known) { return known.name == name; });
        if (f == std::end(functions)) return fail("unknown name " + in_quotes(name), start);
        if (!take('(')) return fail("\"(\" is missing", pos_);
        if (!sum(result)) return false;
        if (f->unary != nullptr) {
            return close() &&
                   check(f->unary(err_.handle(), &result, &result), start, f->name, f->refused);
        }
        if (!take(',')) return fail("\",\" is missing", pos_);
        at_end();
        const size_t second = pos_;
        OCINumber argument{};
        if (!sum(argument) || !close()) return false;
        if (f->binary != nullptr)
            return apply(f->binary, result, argument, start, f->name, f->refused);
        return count_call(f->count, result, argument, start, second);
    }

    bool count_call(CountCall call, OCINumber &result, const OCINumber &argument, size_t start,
                    size_t second) {
        sword count = 0;
        boolean is_integer = 0;
        if (OCINumberIsInt(err_.handle(), &argument, &is_integer) != OCI_SUCCESS || !is_integer ||
            OCINumberToInt(err_.handle(), &argument, sizeof count, OCI_NUMBER_SIGNED, &count) !=
                OCI_SUCCESS) {
            return fail("the second argument must be an integer of 32 bits", second);
        }
        return check(call(err_.handle(), &result, count, &result), start);
    }

    std::string_view text_;
    const LibraryError &err_;
    std::string &reason_;
    size_t pos_ = 0;
    int depth_ = 0;
};

}  // namespace

bool evaluate(std::string_view expression, const LibraryError &err, OCINumber &result,
              std::string &reason) {
    return Evaluator(expression, err, reason).run(result);
}

std::string expression_names() {
    std::string names = "pi";
    for (const NamedFunction &f : functions) {
        names += ", ";
        names += f.name;
        names += '(';
        names += f.arguments;
        names += ')';
    }
    return names;
}

}  // namespace number_tool
