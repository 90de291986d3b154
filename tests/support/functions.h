// The functions of numbers in one shape, for tests of what they share.
#pragma once

#include "support/numbers.h"

struct Function {
    using Call = std::function<sword(OCIError *, OCINumber *, OCINumber *, sword, OCINumber *)>;
    std::string name;
    Call call;               // with one or two numbers, a count, and room for the result
    std::string parameters;  // as traced: %a and %b the numbers, %c the count, %r the result
    int numbers;             // how many numbers it takes
    int result;              // which argument the result is; 0: the number itself
    bool gives_number;       // or an integer

    template <class R>
    Function(const char *n, sword (*f)(OCIError *, const OCINumber *, R *),
             const char *traced = "[number:%a] [result:%r]")
        : Function(n, traced, 1, 3, std::is_same_v<R, OCINumber>) {
        call = [f](auto e, auto a, auto, auto, auto r) {
            return f(e, a, reinterpret_cast<R *>(r));
        };
    }
    Function(const char *n, sword (*f)(OCIError *, const OCINumber *, sword, OCINumber *),
             const char *traced = "[number:%a] [dcplace:%c] [result:%r]")
        : Function(n, traced, 1, 4, true) {
        call = [f](auto e, auto a, auto, auto c, auto r) { return f(e, a, c, r); };
    }
    Function(const char *n, sword (*f)(OCIError *, OCINumber *))
        : Function(n, "[number:%a]", 1, 0, true) {
        call = [f](auto e, auto a, auto, auto, auto) { return f(e, a); };
    }
    template <class R>
    Function(const char *n, sword (*f)(OCIError *, const OCINumber *, const OCINumber *, R *),
             const char *traced = "[number1:%a] [number2:%b] [result:%r]")
        : Function(n, traced, 2, 4, std::is_same_v<R, OCINumber>) {
        call = [f](auto e, auto a, auto b, auto, auto r) {
            return f(e, a, b, reinterpret_cast<R *>(r));
        };
    }
    Function(const char *n, const char *traced, int taken, int place, bool number)
        : name(n), parameters(traced), numbers(taken), result(place), gives_number(number) {}

    bool has_count() const { return result == 4 && numbers == 1; }
};

// clang-format off
inline const Function functions[] = {
    {"IsZero", OCINumberIsZero}, {"IsInt", OCINumberIsInt}, {"Sign", OCINumberSign},
    {"Cmp", OCINumberCmp}, {"Assign", OCINumberAssign, "[from:%a] [to:%r]"}, {"Abs", OCINumberAbs},
    {"Neg", OCINumberNeg}, {"Shift", OCINumberShift, "[number:%a] [nDig:%c] [result:%r]"},
    {"Prec", OCINumberPrec}, {"Round", OCINumberRound}, {"Trunc", OCINumberTrunc},
    {"Inc", OCINumberInc}, {"Dec", OCINumberDec}, {"Add", OCINumberAdd}, {"Sub", OCINumberSub},
    {"Mul", OCINumberMul}, {"Div", OCINumberDiv}, {"Mod", OCINumberMod}, {"Power", OCINumberPower},
    {"ArcTan2", OCINumberArcTan2}, {"Log", OCINumberLog, "[base:%a] [number:%b] [result:%r]"},
    {"IntPower", OCINumberIntPower, "[base:%a] [exp:%c] [result:%r]"}, {"Sin", OCINumberSin},
    {"Cos", OCINumberCos}, {"Tan", OCINumberTan}, {"ArcSin", OCINumberArcSin},
    {"ArcCos", OCINumberArcCos}, {"ArcTan", OCINumberArcTan}, {"HypSin", OCINumberHypSin},
    {"HypCos", OCINumberHypCos}, {"HypTan", OCINumberHypTan}, {"Ceil", OCINumberCeil},
    {"Exp", OCINumberExp}, {"Floor", OCINumberFloor}, {"Ln", OCINumberLn}, {"Sqrt", OCINumberSqrt},
};
// clang-format on

inline const Function &function(const std::string &name) {
    for (const Function &f : functions) {
        if (f.name == name) return f;
    }
    std::abort();
}

inline void PrintTo(const Function &f, std::ostream *out) { *out << f.name; }

// What a function makes of a number or two: the bytes of the result, none where it refuses them.
inline Bytes result_of(const Function &f, OCINumber a, OCINumber b, sword count) {
    ErrorHandle err;
    OCINumber result = number({});
    const sword status = f.call(err, &a, &b, count, &result);
    take_log();
    return status == OCI_SUCCESS ? value_bytes(f.result == 0 ? a : result) : Bytes{};
}
