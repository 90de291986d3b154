#include "functions.h"

#include <algorithm>
#include <iterator>

#include "number_bytes.h"

namespace number_tool {

namespace {

using UnaryCall = sword (*)(OCIError *, const OCINumber *, OCINumber *);
using BinaryCall = sword (*)(OCIError *, const OCINumber *, const OCINumber *, OCINumber *);
using CountCall = sword (*)(OCIError *, const OCINumber *, sword, OCINumber *);

template <UnaryCall call>
bool unary(const LibraryError &error, OCINumber *x, unsigned) {
    return call(error.handle(), x, x) == OCI_SUCCESS;
}

template <BinaryCall call>
bool binary(const LibraryError &error, OCINumber *x, unsigned) {
    return call(error.handle(), x, x + 1, x) == OCI_SUCCESS;
}

// The second argument is an integer, 0 when it is left out.
template <CountCall call>
bool counted(const LibraryError &error, OCINumber *x, unsigned arguments) {
    sword count = 0;
    if (arguments == 2) {
        boolean is_integer = 0;
        if (OCINumberIsInt(error.handle(), x + 1, &is_integer) != OCI_SUCCESS || !is_integer ||
            OCINumberToInt(error.handle(), x + 1, sizeof count, OCI_NUMBER_SIGNED, &count) !=
                OCI_SUCCESS) {
            return false;
        }
    }
    return call(error.handle(), x, count, x) == OCI_SUCCESS;
}

sword compare(const LibraryError &error, const OCINumber &left, const OCINumber &right) {
    sword order = 0;
    OCINumberCmp(error.handle(), &left, &right, &order);
    return order;
}

template <typename Holds>
bool comparison(const LibraryError &error, OCINumber *x, Holds holds) {
    const sword truth = holds(compare(error, x[0], x[1])) ? 1 : 0;
    return OCINumberFromInt(error.handle(), &truth, sizeof truth, OCI_NUMBER_SIGNED, x) ==
           OCI_SUCCESS;
}

// The first argument that no other one goes before.
bool extreme(const LibraryError &error, OCINumber *x, unsigned count, bool wants_larger) {
    for (unsigned i = 1; i < count; ++i) {
        const sword order = compare(error, x[i], x[0]);
        if (wants_larger ? order > 0 : order < 0) x[0] = x[i];
    }
    return true;
}

constexpr unsigned any_count = 1000;
constexpr std::string_view no_count = "the second argument must be an integer of 32 bits";
constexpr std::string_view no_power =
    "0 to a negative power, or a negative number to a power that is no integer";
constexpr std::string_view no_logarithm = "logarithm of a number that is not positive";

constexpr Function functions[] = {
    {"abs", "x", 1, 1, unary<OCINumberAbs>, {}},
    {"acos", "x", 1, 1, unary<OCINumberArcCos>, "arc cosine of a number outside -1 to 1"},
    {"asin", "x", 1, 1, unary<OCINumberArcSin>, "arc sine of a number outside -1 to 1"},
    {"atan", "x", 1, 1, unary<OCINumberArcTan>, {}},
    {"atan2", "y, x", 2, 2, binary<OCINumberArcTan2>, "arc tangent of 0 and 0"},
    {"ceil", "x", 1, 1, unary<OCINumberCeil>, {}},
    {"cos", "x", 1, 1, unary<OCINumberCos>, {}},
    {"cosh", "x", 1, 1, unary<OCINumberHypCos>, {}},
    {"exp", "x", 1, 1, unary<OCINumberExp>, {}},
    {"floor", "x", 1, 1, unary<OCINumberFloor>, {}},
    {"ln", "x", 1, 1, unary<OCINumberLn>, no_logarithm},
    {"log", "base, x", 2, 2, binary<OCINumberLog>,
     "logarithm of a number, or to a base, that is not positive"},
    {"max",
     "x, ...",
     1,
     any_count,
     [](const LibraryError &error, OCINumber *x, unsigned n) { return extreme(error, x, n, true); },
     {}},
    {"min",
     "x, ...",
     1,
     any_count,
     [](const LibraryError &error, OCINumber *x, unsigned n) {
         return extreme(error, x, n, false);
     },
     {}},
    {"mod", "x, y", 2, 2, binary<OCINumberMod>, {}},
    {"neg", "x", 1, 1, unary<OCINumberNeg>, {}},
    {"power", "x, y", 2, 2, binary<OCINumberPower>, no_power},
    {"prec", "x, digits", 2, 2, counted<OCINumberPrec>, no_count, true},
    {"round", "x[, places]", 1, 2, counted<OCINumberRound>, no_count, true},
    {"shift", "x, n", 2, 2, counted<OCINumberShift>, no_count, true},
    {"sin", "x", 1, 1, unary<OCINumberSin>, {}},
    {"sinh", "x", 1, 1, unary<OCINumberHypSin>, {}},
    {"sqrt", "x", 1, 1, unary<OCINumberSqrt>, "square root of a negative number"},
    {"tan", "x", 1, 1, unary<OCINumberTan>, {}},
    {"tanh", "x", 1, 1, unary<OCINumberHypTan>, {}},
    {"trunc", "x[, places]", 1, 2, counted<OCINumberTrunc>, no_count, true},
};

constexpr Function operators[] = {
    {"+", {}, 2, 2, binary<OCINumberAdd>, {}},
    {"-", {}, 2, 2, binary<OCINumberSub>, {}},
    {"*", {}, 2, 2, binary<OCINumberMul>, {}},
    {"/", {}, 2, 2, binary<OCINumberDiv>, {}},
    {"%", {}, 2, 2, binary<OCINumberMod>, {}},
    {"^", {}, 2, 2, binary<OCINumberPower>, no_power},
    {"neg", {}, 1, 1, unary<OCINumberNeg>, {}},
    {"<=",
     {},
     2,
     2,
     [](const LibraryError &error, OCINumber *x, unsigned) {
         return comparison(error, x, [](sword order) { return order <= 0; });
     },
     {}},
    {"<",
     {},
     2,
     2,
     [](const LibraryError &error, OCINumber *x, unsigned) {
         return comparison(error, x, [](sword order) { return order < 0; });
     },
     {}},
    {">=",
     {},
     2,
     2,
     [](const LibraryError &error, OCINumber *x, unsigned) {
         return comparison(error, x, [](sword order) { return order >= 0; });
     },
     {}},
    {">",
     {},
     2,
     2,
     [](const LibraryError &error, OCINumber *x, unsigned) {
         return comparison(error, x, [](sword order) { return order > 0; });
     },
     {}},
    {"==",
     {},
     2,
     2,
     [](const LibraryError &error, OCINumber *x, unsigned) {
         return comparison(error, x, [](sword order) { return order == 0; });
     },
     {}},
    {"!=",
     {},
     2,
     2,
     [](const LibraryError &error, OCINumber *x, unsigned) {
         return comparison(error, x, [](sword order) { return order != 0; });
     },
     {}},
};

const Function *find(const Function *begin, const Function *end, std::string_view name) {
    const Function *const found =
        std::find_if(begin, end, [&](const Function &known) { return known.name == name; });
    return found == end ? nullptr : found;
}

bool is_infinite(const OCINumber &number) {
    return number_bytes::is_positive_infinity(number) || number_bytes::is_negative_infinity(number);
}

}  // namespace

const Function *find_function(std::string_view name) {
    return find(std::begin(functions), std::end(functions), name);
}

const Function *find_operator(std::string_view name) {
    return find(std::begin(operators), std::end(operators), name);
}

bool apply(const Function &function, const LibraryError &error, OCINumber *values, unsigned count,
           std::string &reason) {
    if (function.compute(error, values, count)) return true;
    // The library names the dividend; of other failures it tells only the step that failed.
    constexpr int divided_by_zero = 22056;
    const bool is_infinity_wrong = function.blames_last
                                       ? is_infinite(values[0])
                                       : std::any_of(values, values + count, is_infinite);
    if (is_infinity_wrong) {
        reason = "\"" + std::string(function.name) + "\" of " +
                 (count > 1 ? "these infinities" : "an infinity") + " has no value";
    } else if (error.code() != divided_by_zero && !function.refusal.empty()) {
        reason = function.refusal;
    } else {
        reason = error.message();
    }
    return false;
}

std::string function_names() {
    std::string names = "pi";
    for (const Function &function : functions) {
        names += ", " + std::string(function.name) + "(" + std::string(function.arguments) + ")";
    }
    return names;
}

}  // namespace number_tool
