#include "expression.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "oci_utils/oci_utils.h"
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
    CountCall count = nullptr;  // the second argument is an integer
};

constexpr NamedFunction functions[] = {
    {"abs", "x", OCINumberAbs},
    {"acos", "x", OCINumberArcCos},
    {"asin", "x", OCINumberArcSin},
    {"atan", "x", OCINumberArcTan},
    {"atan2", "y, x", nullptr, OCINumberArcTan2},
    {"ceil", "x", OCINumberCeil},
    {"cos", "x", OCINumberCos},
    {"cosh", "x", OCINumberHypCos},
    {"exp", "x", OCINumberExp},
    {"floor", "x", OCINumberFloor},
    {"ln", "x", OCINumberLn},
    {"log", "base, x", nullptr, OCINumberLog},
    {"mod", "x, y", nullptr, OCINumberMod},
    {"neg", "x", OCINumberNeg},
    {"power", "x, y", nullptr, OCINumberPower},
    {"prec", "x, digits", nullptr, nullptr, OCINumberPrec},
    {"round", "x, places", nullptr, nullptr, OCINumberRound},
    {"shift", "x, n", nullptr, nullptr, OCINumberShift},
    {"sin", "x", OCINumberSin},
    {"sinh", "x", OCINumberHypSin},
    {"sqrt", "x", OCINumberSqrt},
    {"tan", "x", OCINumberTan},
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

    // Passes the library's status on; a failure is placed at the call.
    bool check(sword status, size_t where) {
        if (status == OCI_SUCCESS) return true;
        return fail(err_.message(), where);
    }

    bool apply(BinaryCall call, OCINumber &left, const OCINumber &right, size_t where) {
        return check(call(err_.handle(), &left, &right, &left), where);
    }

    bool sum(OCINumber &result) {
        if (!product(result)) return false;
        for (;;) {
            const char c = peek();
            if (c != '+' && c != '-') return true;
            const size_t where = pos_++;
            OCINumber right{};
            if (!product(right)) return false;
            if (!apply(c == '+' ? OCINumberAdd : OCINumberSub, result, right, where)) return false;
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
            const BinaryCall call = c == '*'   ? OCINumberMul
                                    : c == '/' ? OCINumberDiv
                                               : OCINumberMod;
            if (!apply(call, result, right, where)) return false;
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
        return sign(exponent) && apply(OCINumberPower, result, exponent, where);
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
        while (pos_ < text_.size() && (is_digit(text_[pos_]) || text_[pos_] == '.')) ++pos_;
        std::string mantissa(text_.substr(start, pos_ - start));
        if (getNumberFromStr(&result, reinterpret_cast<ub1 *>(mantissa.data()),
                             static_cast<ub4>(mantissa.size())) != OCI_SUCCESS) {
            return fail(in_quotes(mantissa) + " is no number or too large", start);
        }
        if (pos_ == text_.size() || (text_[pos_] | 0x20) != 'e') return true;
        size_t p = pos_ + 1;
        if (p < text_.size() && text_[p] == '+') ++p;
        sword exponent = 0;
        const auto parsed =
            std::from_chars(text_.data() + p, text_.data() + text_.size(), exponent);
        if (parsed.ec != std::errc()) return fail("digits of an exponent are missing", p);
        pos_ = static_cast<size_t>(parsed.ptr - text_.data());
        return check(OCINumberShift(err_.handle(), &result, exponent, &result), start);
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
            return close() && check(f->unary(err_.handle(), &result, &result), start);
        }
        if (!take(',')) return fail("\",\" is missing", pos_);
        at_end();
        const size_t second = pos_;
        OCINumber argument{};
        if (!sum(argument) || !close()) return false;
        if (f->binary != nullptr) return apply(f->binary, result, argument, start);
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
