// Number: an immutable scalar over the bytes of a record, always in normal form.
#include <algorithm>
#include <cctype>
#include <cmath>

#include "core.h"

// What a Number is made of; anything else is refused then.
struct Initial {
    nb::handle object;
};

template <>
struct nanobind::detail::type_caster<Initial> {
    NB_TYPE_CASTER(Initial, const_name("Number | int | float | str | decimal.Decimal | "
                                       "fractions.Fraction"))
    bool from_python(handle source, uint32_t, cleanup_list *) noexcept {
        value.object = source;
        return true;
    }
};

using oci::number;

namespace {

// Types of Python's library, for as long as the process lives.
struct Types {
    nb::object decimal = nb::module_::import_("decimal").attr("Decimal");
    nb::object integral = nb::module_::import_("numbers").attr("Integral");
    nb::object rational = nb::module_::import_("numbers").attr("Rational");
};
const Types &types() {
    static const Types *const instance = new Types;
    return *instance;
}
bool is_instance(nb::handle object, const nb::object &type) noexcept {
    return PyObject_IsInstance(object.ptr(), type.ptr()) == 1;
}

[[noreturn]] void raise(PyObject *type, const char *message) {
    PyErr_SetString(type, message);
    throw nb::python_error();
}

// ---- From Python's values

std::string text_of(nb::handle object) {
    Py_ssize_t size = 0;
    const nb::str text(object);
    const char *const characters = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
    if (characters == nullptr) throw nb::python_error();
    return {characters, static_cast<size_t>(size)};
}

// NumPy's integers, for one, are no ints.
nb::object to_index(nb::handle object) {
    return nb::steal(nb::detail::raise_if_null(PyNumber_Index(object.ptr())));
}

// Text of a finite value that is known to be a number.
number from_digits(const std::string &text) {
    std::error_code ec;
    const number result(text, ec);
    if (ec) raise(PyExc_OverflowError, "a magnitude of 10**126 or more");
    return result;
}

number from_text(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
        text.remove_prefix(1);
    }
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
        text.remove_suffix(1);
    }
    std::string word(text.substr(!text.empty() && (text[0] == '-' || text[0] == '+')));
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    if (word == "inf" || word == "infinity") return number(oci::detail::infinity(text[0] == '-'));
    return number(text);
}

number from_int(nb::handle object) {
    int overflow = 0;
    const long long value = PyLong_AsLongLongAndOverflow(object.ptr(), &overflow);
    if (overflow == 0) return value;
    // Python does not write integers of more digits than a few thousand.
    if (nb::cast<long long>(object.attr("bit_length")()) > 419) {
        raise(PyExc_OverflowError, "a magnitude of 10**126 or more");
    }
    return from_digits(text_of(nb::steal(PyNumber_ToBase(object.ptr(), 10))));
}

number from_decimal(nb::handle object) {
    if (nb::cast<bool>(object.attr("is_nan")())) raise(PyExc_ValueError, "NaN is no Number");
    const std::string text = text_of(object);
    return nb::cast<bool>(object.attr("is_finite")()) ? from_digits(text) : from_text(text);
}

// Digits beyond those that a number holds are cut off: they do not matter for rounding half away
// from zero.
number from_rational(nb::handle object) {
    const nb::object numerator = object.attr("numerator"), denominator = object.attr("denominator");
    const auto bits = [](const nb::object &i) { return nb::cast<double>(i.attr("bit_length")()); };
    const double size = bits(numerator) - bits(denominator);
    const int places = 44 - static_cast<int>(std::floor(size * 0.30103));
    const nb::object power = nb::int_(10).attr("__pow__")(nb::int_(std::abs(places)));
    const nb::object magnitude = numerator.attr("__abs__")();
    const nb::object digits =
        places >= 0 ? nb::object((magnitude * power).attr("__floordiv__")(denominator))
                    : nb::object(magnitude.attr("__floordiv__")(denominator * power));
    const char *sign = nb::cast<bool>(numerator.attr("__lt__")(0)) ? "-" : "";
    return from_digits(sign + text_of(digits) + "e" + std::to_string(-places));
}

number make(nb::handle object) {
    if (is_operand(object)) return Operand{object}.value();
    if (PyFloat_Check(object.ptr())) {
        const double value = nb::cast<double>(object);
        if (std::isnan(value)) raise(PyExc_ValueError, "NaN is no Number");
        return number(value);
    }
    if (PyUnicode_Check(object.ptr())) return from_text(text_of(object));
    if (is_instance(object, types().rational)) return from_rational(object);
    PyErr_Format(PyExc_TypeError, "cannot make a Number of %R", Py_TYPE(object.ptr()));
    throw nb::python_error();
}

number from_bytes(nb::bytes bytes, bool length_byte) {
    OCINumber record = {};
    size_t size = bytes.size();
    const auto *from = static_cast<const ub1 *>(bytes.data());
    if (length_byte && size > 0) {
        record.OCINumberPart[0] = from[0];
        ++from;
        if (--size > 21 || from[-1] > size) size = 0;
        size = size == 0 ? 0 : from[-1];
    } else {
        record.OCINumberPart[0] = static_cast<ub1>(size <= 21 ? size : 0);
    }
    if (size == 0 || size > 21) raise(PyExc_ValueError, "a length that no number has");
    std::copy_n(from, size, record.OCINumberPart + 1);
    std::error_code ec;
    const number result = oci::add(number(record), 0, ec);
    if (ec) raise(PyExc_ValueError, "bytes that are no number");
    return result;
}

// ---- To Python's values

nb::bytes to_bytes(const number &n, bool length_byte) {
    const ub1 *bytes = n.bytes().OCINumberPart;
    if (!length_byte) return nb::bytes(bytes + 1, bytes[0]);
    OCINumber record = {};
    std::copy_n(bytes, bytes[0] + 1, record.OCINumberPart);
    return nb::bytes(record.OCINumberPart, sizeof record);
}

std::string to_text(const number &n) {
    if (isinf(n)) return n < 0 ? "-Infinity" : "Infinity";
    return to_string(n);
}

nb::object to_decimal(const number &n) { return types().decimal(to_text(n)); }

nb::object to_int(const number &n) {
    if (isinf(n)) raise(PyExc_OverflowError, "an infinity is no integer");
    return nb::steal(PyLong_FromString(to_string(trunc(n)).c_str(), nullptr, 10));
}

double to_float(const number &n) {
    return PyOS_string_to_double(to_text(n).c_str(), nullptr, nullptr);
}

// The value modulo the prime 2^61 - 1, as the hashes of all numbers of Python are.
Py_hash_t hash(const number &n) {
    __extension__ using Wide = unsigned __int128;
    constexpr ub8 prime = (ub8{1} << 61) - 1;
    const auto multiply = [](ub8 a, ub8 b) { return static_cast<ub8>(Wide{a} * b % prime); };
    if (isinf(n)) return n < 0 ? -314159 : 314159;
    const ub1 *bytes = n.bytes().OCINumberPart;
    const bool negative = bytes[1] < 128;
    int length = bytes[0];
    if (negative && bytes[length] == 102) --length;
    ub8 value = 0;
    for (int i = 2; i <= length; ++i) {
        const int digit = negative ? 101 - bytes[i] : bytes[i] - 1;
        value = (multiply(value, 100) + static_cast<ub8>(digit)) % prime;
    }
    const int exponent = (negative ? 62 - bytes[1] : bytes[1] - 193) - (length - 2);
    if (length < 2) return 0;
    ub8 factor = exponent < 0 ? 1129863074514710036 : 100;  // whose product is 1
    for (int power = std::abs(exponent); power != 0; power /= 2) {
        if (power % 2 != 0) value = multiply(value, factor);
        factor = multiply(factor, factor);
    }
    const auto result = negative ? -static_cast<Py_hash_t>(value) : static_cast<Py_hash_t>(value);
    return result == -1 ? -2 : result;
}

// ---- Operations

template <int operation>
nb::object compare(const number &a, nb::handle b) {
    int overflow = 0;
    number value;
    if (nb::isinstance<number>(b)) {
        value = nb::cast<const number &>(b);
    } else if (PyLong_Check(b.ptr())) {
        value = PyLong_AsLongLongAndOverflow(b.ptr(), &overflow);
    } else if (PyFloat_Check(b.ptr()) || is_instance(b, types().decimal)) {
        overflow = 1;
    } else if (is_instance(b, types().integral)) {
        return compare<operation>(a, to_index(b));
    } else if (is_instance(b, types().rational)) {
        overflow = 1;
    } else {
        return nb::borrow(Py_NotImplemented);
    }
    // A Number could hold these only rounded.
    if (overflow != 0) {
        return nb::steal(nb::detail::raise_if_null(
            PyObject_RichCompare(to_decimal(a).ptr(), b.ptr(), operation)));
    }
    const bool equal = a == value, below = a < value;
    const bool results[] = {below, below || equal, equal, !equal, !below && !equal, !below};
    return nb::bool_(results[operation]);
}

// The integer part of the quotient, as the remainder leaves it; rounded as a magnitude, as not all
// digits of negative values are.
number quotient(const number &a, const number &b) {
    const number value = (a - a % b) / b;
    return value < 0 ? -round(-value) : round(value);
}

nb::str format(nb::handle self, nb::str specification) {
    if (specification.attr("__len__")().equal(nb::int_(0))) return nb::str(self);
    nb::module_ decimal = nb::module_::import_("decimal");
    nb::object context =
        decimal.attr("localcontext")(nb::arg("rounding") = decimal.attr("ROUND_HALF_UP"));
    context.attr("__enter__")();
    const nb::object value = to_decimal(nb::cast<const number &>(self));
    PyObject *text = PyObject_Format(value.ptr(), specification.ptr());
    if (text == nullptr) {
        nb::python_error error;
        context.attr("__exit__")(nb::none(), nb::none(), nb::none());
        throw error;
    }
    context.attr("__exit__")(nb::none(), nb::none(), nb::none());
    return nb::steal<nb::str>(text);
}

using Binary = number (*)(const number &, const number &, oci::on_error);
using Unary = number (*)(const number &, oci::on_error);

template <Binary function>
number forward(const number &a, Operand b) {
    return function(a, b.value(), {});
}
template <Binary function>
number backward(const number &a, Operand b) {
    return function(b.value(), a, {});
}
template <Unary function>
number unary(const number &x) {
    return function(x, {});
}

}  // namespace

bool is_operand(nb::handle object) noexcept {
    return PyLong_Check(object.ptr()) || nb::isinstance<number>(object) ||
           is_instance(object, types().decimal) || is_instance(object, types().integral);
}

number Operand::value() const {
    if (nb::isinstance<number>(object)) return nb::cast<const number &>(object);
    if (PyLong_Check(object.ptr())) return from_int(object);
    if (is_instance(object, types().decimal)) return from_decimal(object);
    return from_int(to_index(object));
}

void bind_number(nb::module_ &module) {
    types();
    nb::class_<number> type(
        module, "Number", nb::is_final(),
        "An immutable decimal of up to 40 significant digits, or an infinity.\n\n"
        "Made of an int, Decimal, Fraction or str, rounded half away from zero to 20 base-100\n"
        "digits; of a float with 15 significant digits, so that Number(0.1) is 0.1. Computes with\n"
        "Numbers, ints and Decimals, each result rounded once; magnitudes of 10**126 and more\n"
        "become infinities, those below 10**-128 zero. Equal to and ordered with ints, Decimals,\n"
        "Fractions and floats by exact value, with their hash.");
    type.def(nb::new_([](Initial value) { return make(value.object); }), nb::arg("value") = 0);

    // Bytes and text
    type.def_static(
        "from_bytes", from_bytes, nb::arg("data"), nb::kw_only(), nb::arg("length_byte") = true,
        "The number of a record's bytes: up to 22 that begin with the length byte, or,\n"
        "without `length_byte`, the 1 to 21 behind it.");
    type.def("to_bytes", to_bytes, nb::kw_only(), nb::arg("length_byte") = true,
             "The 22 bytes of the record, or, without `length_byte`, those of the value alone.");
    type.def("__bytes__", [](const number &n) { return to_bytes(n, true); });
    type.def_static(
        "from_text",
        [](std::string_view text, std::string_view model) { return oci::parse(text, model); },
        nb::arg("text"), nb::arg("model"),
        nb::sig("def from_text(text: str, model: str) -> Number"),
        "The number of a text that matches a format model such as '9990.99'.");
    type.def(
        "to_text", [](const number &n, std::string_view model) { return to_string(n, model); },
        nb::arg("model"), nb::sig("def to_text(self, model: str) -> str"),
        "The text under a format model such as 'FM9990.00'.");
    type.def("__str__", to_text);
    type.def("__repr__", [](const number &n) { return "Number('" + to_text(n) + "')"; });
    type.def("__format__", format, nb::sig("def __format__(self, specification: str, /) -> str"),
             "As Decimal's, but rounded half away from zero.");
    type.def("__reduce__", [](nb::handle self) {
        const nb::object restore = nb::module_::import_("oci_number").attr("_restore");
        return nb::make_tuple(restore,
                              nb::make_tuple(to_bytes(nb::cast<const number &>(self), false)));
    });

    // Other types
    type.def("to_decimal", to_decimal, nb::sig("def to_decimal(self) -> decimal.Decimal"),
             "The exact value as a Decimal.");
    type.def(
        "to_fraction",
        [](const number &n) {
            return nb::module_::import_("fractions").attr("Fraction")(to_decimal(n));
        },
        nb::sig("def to_fraction(self) -> fractions.Fraction"), "The exact value as a Fraction.");
    type.def(
        "as_integer_ratio",
        [](const number &n) { return to_decimal(n).attr("as_integer_ratio")(); },
        nb::sig("def as_integer_ratio(self) -> tuple[int, int]"),
        "Numerator and denominator in lowest terms.");
    type.def("__int__", to_int, nb::sig("def __int__(self) -> int"), "The integer part.");
    type.def("__trunc__", to_int, nb::sig("def __trunc__(self) -> int"));
    type.def(
        "__floor__", [](const number &n) { return to_int(floor(n)); },
        nb::sig("def __floor__(self) -> int"));
    type.def(
        "__ceil__", [](const number &n) { return to_int(ceil(n)); },
        nb::sig("def __ceil__(self) -> int"));
    type.def("__float__", to_float, "The nearest float.");
    type.def("__bool__", [](const number &n) { return n != 0; });
    type.def("__hash__", hash);

    // Order
    const auto define_order = [&](const char *name, auto function, const char *signature) {
        type.def(name, function, nb::is_operator(), nb::sig(signature));
    };
    define_order("__eq__", compare<Py_EQ>, "def __eq__(self, other: object, /) -> bool");
    define_order("__ne__", compare<Py_NE>, "def __ne__(self, other: object, /) -> bool");
#define OTHER \
    "(self, other: Number | int | float | decimal.Decimal | fractions.Fraction, /) -> bool"
    define_order("__lt__", compare<Py_LT>, "def __lt__" OTHER);
    define_order("__le__", compare<Py_LE>, "def __le__" OTHER);
    define_order("__gt__", compare<Py_GT>, "def __gt__" OTHER);
    define_order("__ge__", compare<Py_GE>, "def __ge__" OTHER);
#undef OTHER
    type.def(
        "is_integer", [](const number &n) { return is_integer(n); },
        "Whether there is no fraction; an infinity is no integer.");
    type.def("is_infinite", [](const number &n) { return isinf(n); });

    // Arithmetic
    type.def("__add__", forward<oci::add>, nb::is_operator());
    type.def("__radd__", backward<oci::add>, nb::is_operator());
    type.def("__sub__", forward<oci::sub>, nb::is_operator());
    type.def("__rsub__", backward<oci::sub>, nb::is_operator());
    type.def("__mul__", forward<oci::mul>, nb::is_operator());
    type.def("__rmul__", backward<oci::mul>, nb::is_operator());
    type.def("__truediv__", forward<oci::div>, nb::is_operator());
    type.def("__rtruediv__", backward<oci::div>, nb::is_operator());
    type.def("__mod__", forward<oci::mod>, nb::is_operator(),
             "The remainder of the truncated quotient, exact, with the sign of the dividend.");
    type.def("__rmod__", backward<oci::mod>, nb::is_operator());
    type.def(
        "__floordiv__", [](const number &a, Operand b) { return quotient(a, b.value()); },
        nb::is_operator(), "The quotient truncated toward zero, as Decimal's.");
    type.def(
        "__rfloordiv__", [](const number &a, Operand b) { return quotient(b.value(), a); },
        nb::is_operator());
    type.def(
        "__divmod__",
        [](const number &a, Operand b) {
            const number divisor = b.value();
            return nb::make_tuple(quotient(a, divisor), a % divisor);
        },
        nb::is_operator(),
        nb::sig("def __divmod__(self, other: Number | int | decimal.Decimal, /) -> "
                "tuple[Number, Number]"),
        "What // and % give.");
    type.def("__pow__", forward<oci::pow>, nb::is_operator());
    type.def("__rpow__", backward<oci::pow>, nb::is_operator());
    type.def("__neg__", unary<oci::neg>);
    type.def("__pos__", [](const number &n) { return n; });
    type.def("__abs__", unary<oci::abs>);
    type.def(
        "__round__", [](const number &n) { return to_int(round(n)); },
        nb::sig("def __round__(self) -> int"));
    type.def(
        "__round__", [](const number &n, int places) { return round(n, places); },
        nb::arg("places"),
        "Rounded half away from zero, to an int or to a Number of so many places.");
    type.def(
        "round", [](const number &n, int places) { return round(n, places); },
        nb::arg("places") = 0,
        "Rounded half away from zero to decimal places, below 0 to tens and hundreds. A\n"
        "negative value of 20 base-100 digits stays when the cut falls on the last of them.");
    type.def(
        "trunc", [](const number &n, int places) { return trunc(n, places); },
        nb::arg("places") = 0, "Cut off behind so many decimal places.");
    type.def(
        "prec", [](const number &n, int digits) { return prec(n, digits); }, nb::arg("digits"),
        "Rounded half away from zero to so many significant digits.");
    type.def(
        "shift", [](const number &n, int places) { return shift(n, places); }, nb::arg("places"),
        "Times 10 to the power `places`.");
    type.def("floor", unary<oci::floor>, "The greatest integer that is not above.");
    type.def("ceil", unary<oci::ceil>, "The least integer that is not below.");

    // Elementary functions
    type.def("sqrt", unary<oci::sqrt>, "The square root, correctly rounded, as all functions are.");
    type.def("exp", unary<oci::exp>, "e to this power.");
    type.def("ln", unary<oci::log>, "The natural logarithm.");
    type.def("log10", unary<oci::log10>, "The logarithm to the base 10.");
    type.def(
        "log", [](const number &n, Operand base) { return log_base(base.value(), n); },
        nb::arg("base"), "The logarithm to a base.");
    type.def("sin", unary<oci::sin>, "The sine of an angle in radians.");
    type.def("cos", unary<oci::cos>, "The cosine of an angle in radians.");
    type.def("tan", unary<oci::tan>, "The tangent of an angle in radians.");
    type.def("asin", unary<oci::asin>, "The arc sine, in [-pi/2, pi/2].");
    type.def("acos", unary<oci::acos>, "The arc cosine, in [0, pi].");
    type.def("atan", unary<oci::atan>, "The arc tangent, in [-pi/2, pi/2].");
    type.def(
        "atan2", [](const number &y, Operand x) { return atan2(y, x.value()); }, nb::arg("x"),
        "The angle of the point with this ordinate and the abscissa `x`, which is not 0.");
    type.def("sinh", unary<oci::sinh>, "The hyperbolic sine.");
    type.def("cosh", unary<oci::cosh>, "The hyperbolic cosine.");
    type.def("tanh", unary<oci::tanh>, "The hyperbolic tangent.");
    module.def("pi", oci::pi, "Pi, rounded to 38 decimal places.");
}
