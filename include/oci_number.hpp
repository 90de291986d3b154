/* Numbers for C++ programs: oci::number, a value over the 22 bytes of an OCINumber. C++17 and up.
 *
 *   #include <iostream>
 *   #include <oci_number.hpp>
 *   using namespace oci::literals;
 *
 *   int main() {
 *       oci::number price = 19.99_num;
 *       oci::number total = round(price * 3 * 1.19_num, 2);
 *       std::cout << total << '\n';    // 71.36
 *   }
 *
 * Results, roundings and errors are those of the functions of oci.h, which do the work. What
 * differs is named here.
 *
 * Conversions: integers of all types become numbers by themselves, without loss; reals and text
 * by name (oci::number(0.1), oci::number("1E-3")). All ways out are explicit.
 *
 * Order and equality are numeric and total: two forms of a value (1.0 kept with a zero digit) are
 * equal and have one hash, negative infinity is the lowest value, positive the highest.
 *
 * ++ and -- add and subtract 1 from any value, as OCINumberInc and OCINumberDec do not.
 *
 * Failures become an oci::error, which has the error's number and message. Functions whose last
 * parameter is an on_error take a std::error_code there instead, throw nothing then, and
 * return zero when they fail:
 *
 *     std::error_code ec;
 *     oci::number root = sqrt(x, ec);
 *     if (ec == oci::errc::invalid_number) ...
 *
 * Operators have named functions beside them for that: add, sub, mul, div, mod.
 *
 * Threads: numbers are plain values. The error handle that the functions need is the calling
 * thread's own; it is made by the thread's first call and freed when the thread ends. (One that
 * the destructor of a thread_local object needs after that is not.)
 *
 * Without exceptions (-fno-exceptions), a failure that nobody takes ends the program. */
#ifndef OCI_NUMBER_HPP
#define OCI_NUMBER_HPP

#include <cxxabi.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <istream>
#include <limits>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#if __cplusplus >= 202002L
#include <compare>
#include <version>
#endif
#ifdef __cpp_lib_format
#include <format>
#endif

#include "oci.h"

// This program's or shared library's, for the end of threads.
extern "C" void *__dso_handle __attribute__((visibility("hidden")));

namespace oci {

// ---- Errors

// The numbers of the interface; 602 stands for failures without one.
enum class errc {
    failed = 602,
    text_too_long = 1458,
    invalid_argument = 21560,
    overflow = 22053,
    underflow = 22054,
    divide_by_zero = 22056,
    invalid_number = 22060,
    invalid_format = 22061,
    invalid_text = 22062,
    format_overflow = 22065
};

inline const std::error_category &number_category() noexcept {
    class category final : public std::error_category {
        const char *name() const noexcept override { return "oci_number"; }
        std::string message(int number) const override {
            switch (static_cast<errc>(number)) {
                case errc::failed: return "the operation refuses its operands";
                case errc::text_too_long: return "the number has too many digits";
                case errc::invalid_argument: return "argument is null, invalid, or out of range";
                case errc::overflow: return "overflow error";
                case errc::underflow: return "underflow error";
                case errc::divide_by_zero: return "division by zero";
                case errc::invalid_number: return "invalid number, or outside the domain";
                case errc::invalid_format: return "invalid format text";
                case errc::invalid_text: return "invalid input string";
                case errc::format_overflow: return "the number does not fit the format";
            }
            return "error " + std::to_string(number);
        }
    };
    static const category instance;
    return instance;
}

inline std::error_code make_error_code(errc e) noexcept {
    return {static_cast<int>(e), number_category()};
}

class error : public std::runtime_error {
public:
    error(int number, const std::string &message)
        : std::runtime_error(message), code_(number, number_category()) {}
    const std::error_code &code() const noexcept { return code_; }
    int number() const noexcept { return code_.value(); }

private:
    std::error_code code_;
};

// Where a failure goes: by itself into an exception, or into the error_code that it is made of.
class on_error {
public:
    constexpr on_error() noexcept = default;
    constexpr on_error(std::error_code &code) noexcept : code_(&code) {}

    constexpr void success() const noexcept {
        if (code_ != nullptr) code_->clear();
    }
    // The failure of a call with this status on the thread's error handle.
    [[gnu::cold]] void failure(sword status) const;
    [[gnu::cold]] void failure(errc number, const std::string &message) const {
        raise(make_error_code(number), [&] { return error(static_cast<int>(number), message); });
    }

private:
    template <class MakeException>
    void raise(std::error_code code, MakeException exception) const {
        if (code_ != nullptr) {
            *code_ = code;
            return;
        }
#ifdef __cpp_exceptions
        throw exception();
#else
        (void)exception;
        std::abort();
#endif
    }

    std::error_code *code_ = nullptr;
};

// ---- The thread's error handle

namespace detail {

struct thread_handle {
    OCIEnv *env;
    OCIError *error;
    bool is_closed_at_end;  // close_at_end() will be called
};
// Initialised by a constant and without destructor, so that reaching it takes no guard, and
// destructors of other thread_local objects may still compute.
inline thread_local thread_handle this_thread = {nullptr, nullptr, false};

// Also called after each failure: some leave nothing in the handle, and must not find there what an
// earlier one has left.
inline void close_handle() noexcept {
    if (this_thread.env != nullptr) OCIHandleFree(this_thread.env, OCI_HTYPE_ENV);
    this_thread.env = nullptr;
    this_thread.error = nullptr;
}

inline void close_at_end(void *) {
    close_handle();
    this_thread.is_closed_at_end = false;
}

// Null when there is no memory; the functions then return OCI_INVALID_HANDLE.
[[gnu::cold]] inline OCIError *open_handle() noexcept {
    OCIEnv *env = nullptr;
    void *handle = nullptr;
    if (OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
        OCI_SUCCESS) {
        return nullptr;
    }
    if (OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, nullptr) != OCI_SUCCESS) {
        OCIHandleFree(env, OCI_HTYPE_ENV);
        return nullptr;
    }
    this_thread.env = env;
    this_thread.error = static_cast<OCIError *>(handle);
    // What a thread_local object's destructor is registered by; it serves again when the destructor
    // of another such object opens a handle after this thread's was closed.
    if (!this_thread.is_closed_at_end) {
        this_thread.is_closed_at_end =
            abi::__cxa_thread_atexit(close_at_end, nullptr, &__dso_handle) == 0;
    }
    return this_thread.error;
}

inline OCIError *handle() {
    OCIError *error = this_thread.error;
    return error != nullptr ? error : open_handle();
}

}  // namespace detail

inline void on_error::failure(sword status) const {
    if (status == OCI_INVALID_HANDLE) {
        raise(std::make_error_code(std::errc::not_enough_memory), [] { return std::bad_alloc(); });
        return;
    }
    sb4 number = 0;
    OraText text[OCI_ERROR_MAXMSG_SIZE2 + 1] = "";
    OCIErrorGet(detail::handle(), 1, nullptr, &number, text, sizeof text, OCI_HTYPE_ERROR);
    detail::close_handle();
    std::string_view message(reinterpret_cast<const char *>(text));
    if (!message.empty() && message.back() == '\n') message.remove_suffix(1);
    if (number == 0) {
        number = static_cast<int>(errc::failed);
        message = "the value cannot be converted";
    }
    raise({number, number_category()}, [&] { return error(number, std::string(message)); });
}

// ---- Bytes, as oci.h describes them: made and compared where a call would be too late (in
// constant expressions) or too much

namespace detail {

inline constexpr int max_pairs = 20;

// Of at most 20 digit pairs, the first of them not zero and with the weight 100^exponent.
constexpr OCINumber join_pairs(bool negative, int exponent, const unsigned char *pairs, int count) {
    OCINumber n{};
    while (count > 0 && pairs[count - 1] == 0) --count;
    if (count == 0 || exponent < -64) {
        n.OCINumberPart[0] = 1;
        n.OCINumberPart[1] = 128;
        return n;
    }
    n.OCINumberPart[1] = static_cast<ub1>(negative ? 62 - exponent : 193 + exponent);
    for (int i = 0; i < count; ++i) {
        n.OCINumberPart[2 + i] = static_cast<ub1>(negative ? 101 - pairs[i] : pairs[i] + 1);
    }
    int length = 1 + count;
    if (negative && count < max_pairs) n.OCINumberPart[++length] = 102;
    n.OCINumberPart[0] = static_cast<ub1>(length);
    return n;
}

constexpr OCINumber infinity(bool negative) {
    return negative ? OCINumber{{1, 0}} : OCINumber{{2, 255, 101}};
}

template <class Integer>
constexpr OCINumber from_integer(Integer value) {
    bool negative = false;
    if constexpr (std::is_signed_v<Integer>) negative = value < 0;
    const auto wide = static_cast<unsigned long long>(value);
    unsigned char pairs[10]{};
    int first = 10;
    for (unsigned long long rest = negative ? 0 - wide : wide; rest != 0; rest /= 100) {
        pairs[--first] = static_cast<unsigned char>(rest % 100);
    }
    return join_pairs(negative, 9 - first, pairs + first, 10 - first);
}

// Reads [+-]digits[.digits][e[+-]digits] or [+-]~, all of the text. More digits than a number
// holds are rounded half away from zero, so none behind the 41st matters. Returns false for
// another text and for a magnitude of 10^126 or more.
constexpr bool from_text(const char *at, const char *end, OCINumber &result) {
    bool negative = false;
    if (at != end && (*at == '-' || *at == '+')) negative = *at++ == '-';
    if (end - at == 1 && *at == '~') {
        result = infinity(negative);
        return true;
    }

    unsigned char digits[2 * max_pairs + 1]{};  // from the first that is not zero
    int count = 0;
    long long point = 0;  // how many of the digits stand in front of the point; below 0 of none
    bool has_digits = false, has_point = false;
    for (; at != end; ++at) {
        if (*at == '.' && !has_point) {
            has_point = true;
            continue;
        }
        if (*at < '0' || *at > '9') break;
        has_digits = true;
        if (count == 0 && *at == '0') {
            point -= has_point;
            continue;
        }
        if (count <= 2 * max_pairs) digits[count++] = static_cast<unsigned char>(*at - '0');
        point += !has_point;
    }
    if (!has_digits) return false;

    if (at != end) {
        if (*at != 'e' && *at != 'E') return false;
        ++at;
        bool below = false;
        if (at != end && (*at == '-' || *at == '+')) below = *at++ == '-';
        if (at == end) return false;
        long long exponent = 0;
        for (; at != end; ++at) {
            if (*at < '0' || *at > '9') return false;
            // No text is long enough to bring the point back from there.
            if (exponent < 1000000000000000) exponent = 10 * exponent + (*at - '0');
        }
        point += below ? -exponent : exponent;
    }

    if (count > 0 && point > 126) return false;
    if (count == 0 || point < -128) {
        result = join_pairs(false, 0, digits, 0);
        return true;
    }
    // A pair does not straddle the point: an odd count of digits in front of it begins with one
    // alone.
    const bool odd = point % 2 != 0;
    int exponent = static_cast<int>((point + 128 + 1) / 2) - 65;
    int used = 0;
    unsigned char pairs[max_pairs]{};
    for (int i = 0; i < max_pairs; ++i) {
        const int tens = i == 0 && odd ? 0 : digits[used++];
        pairs[i] = static_cast<unsigned char>(10 * tens + digits[used++]);
    }
    if (digits[used] >= 5) {
        int i = max_pairs - 1;
        while (i >= 0 && pairs[i] == 99) pairs[i--] = 0;
        if (i >= 0) {
            ++pairs[i];
        } else {
            pairs[0] = 1;
            if (++exponent > 62) return false;
        }
    }
    result = join_pairs(negative, exponent, pairs, max_pairs);
    return true;
}

// No zero digit in front or at the end, as all results of calculations are: the order of the
// bytes is then that of the values.
inline bool is_ordered_form(const OCINumber &n) noexcept {
    const ub1 *bytes = n.OCINumberPart;
    const unsigned length = bytes[0];
    if (length < 2 || length > 21) return length == 1;
    const ub1 zero_digit = bytes[1] < 128 ? 101 : 1;
    return bytes[2] != zero_digit &&
           bytes[bytes[length] == 102 ? length - 1 : length] != zero_digit;
}

// Bytes that hold no number stay as they are.
[[gnu::cold]] inline OCINumber ordered_form(const OCINumber &n) noexcept {
    const OCINumber zero = from_integer(0);
    OCINumber sum;
    if (OCINumberAdd(handle(), &n, &zero, &sum) == OCI_SUCCESS) return sum;
    close_handle();
    return n;
}

inline unsigned length_of(const OCINumber &n) noexcept {
    return n.OCINumberPart[0] <= 21 ? n.OCINumberPart[0] : 0;
}

inline int compare_bytes(const OCINumber &a, const OCINumber &b) noexcept {
    const unsigned a_length = length_of(a), b_length = length_of(b);
    const int order = std::memcmp(a.OCINumberPart + 1, b.OCINumberPart + 1,
                                  a_length < b_length ? a_length : b_length);
    return order != 0 ? order : static_cast<int>(a_length) - static_cast<int>(b_length);
}

inline int compare(const OCINumber &a, const OCINumber &b) noexcept {
    if (is_ordered_form(a) && is_ordered_form(b)) return compare_bytes(a, b);
    return compare_bytes(ordered_form(a), ordered_form(b));
}

[[gnu::cold]] inline void refuse_text(std::string_view text, on_error e) {
    e.failure(errc::invalid_text, "OCI-22062: invalid input string [" + std::string(text) + "]");
}

template <class T>
inline constexpr bool is_character =
    std::is_same_v<T, char> || std::is_same_v<T, wchar_t> || std::is_same_v<T, char16_t> ||
#ifdef __cpp_char8_t
    std::is_same_v<T, char8_t> ||
#endif
    std::is_same_v<T, char32_t>;

// Truth values and characters are no numbers.
template <class T>
inline constexpr bool is_integer = std::is_integral_v<T> &&
                                   sizeof(T) <= sizeof(unsigned long long) &&
                                   !std::is_same_v<T, bool> && !is_character<T>;

struct unset {};

}  // namespace detail

// ---- Numbers

class number {
public:
    // Zero.
    constexpr number() noexcept : bytes_{{1, 128}} {}

    template <class Integer, std::enable_if_t<detail::is_integer<Integer>, int> = 0>
    constexpr number(Integer value) noexcept : bytes_(detail::from_integer(value)) {}

    // As OCINumberFromReal: with 6, 15 or 18 significant digits, so 0.1 becomes 0.1. A NaN is
    // refused.
    template <class Real, std::enable_if_t<std::is_floating_point_v<Real>, int> = 0>
    explicit number(Real value, on_error e = {}) {
        const sword status = OCINumberFromReal(detail::handle(), &value, sizeof value, &bytes_);
        if (status == OCI_SUCCESS) {
            e.success();
        } else {
            *this = number();
            e.failure(status);
        }
    }

    // Text such as -12.5, 1E-3 or ~ for infinity, without blanks; exact up to 39 digits, rounded
    // half away from zero behind what a number holds. 10^126 and more is refused.
    explicit constexpr number(std::string_view text, on_error e = {}) : number() {
        if (detail::from_text(text.data(), text.data() + text.size(), bytes_)) {
            e.success();
        } else {
            detail::refuse_text(text, e);
        }
    }

    // A record as it stands; bytes that hold no number are refused by what computes with them.
    explicit constexpr number(const OCINumber &bytes) noexcept : bytes_(bytes) {}

    // For results: leaves the bytes to the call that writes them.
    explicit number(detail::unset) noexcept {}

    // The bytes, for the functions of oci.h and for records.
    constexpr const OCINumber &bytes() const noexcept { return bytes_; }
    constexpr OCINumber &bytes() noexcept { return bytes_; }

    // To an integer, truncated toward zero; error overflow outside the type's range. To a real as
    // OCINumberToReal: rounded to 6, 15 or 18 digits behind the point first.
    template <class T>
    T to(on_error e = {}) const;
    template <class T,
              std::enable_if_t<detail::is_integer<T> || std::is_floating_point_v<T>, int> = 0>
    explicit operator T() const {
        return to<T>();
    }

    number &operator+=(const number &b) { return assign<OCINumberAdd>(b); }
    number &operator-=(const number &b) { return assign<OCINumberSub>(b); }
    number &operator*=(const number &b) { return assign<OCINumberMul>(b); }
    number &operator/=(const number &b) { return assign<OCINumberDiv>(b); }
    number &operator%=(const number &b) { return assign<OCINumberMod>(b); }

    number &operator++() { return *this += 1; }
    number &operator--() { return *this -= 1; }
    number operator++(int) {
        const number before = *this;
        ++*this;
        return before;
    }
    number operator--(int) {
        const number before = *this;
        --*this;
        return before;
    }

    friend bool operator==(const number &a, const number &b) noexcept {
        return detail::compare(a.bytes_, b.bytes_) == 0;
    }
#if defined(__cpp_impl_three_way_comparison) && defined(__cpp_lib_three_way_comparison)
    friend std::strong_ordering operator<=>(const number &a, const number &b) noexcept {
        return detail::compare(a.bytes_, b.bytes_) <=> 0;
    }
#else
    friend bool operator!=(const number &a, const number &b) noexcept { return !(a == b); }
    friend bool operator<(const number &a, const number &b) noexcept {
        return detail::compare(a.bytes_, b.bytes_) < 0;
    }
    friend bool operator>(const number &a, const number &b) noexcept { return b < a; }
    friend bool operator<=(const number &a, const number &b) noexcept { return !(b < a); }
    friend bool operator>=(const number &a, const number &b) noexcept { return !(a < b); }
#endif

private:
    template <sword (*function)(OCIError *, const OCINumber *, const OCINumber *, OCINumber *)>
    number &assign(const number &b) {
        const sword status = function(detail::handle(), &bytes_, &b.bytes_, &bytes_);
        if (status != OCI_SUCCESS) on_error().failure(status);
        return *this;
    }

    OCINumber bytes_;
};

static_assert(sizeof(number) == OCI_NUMBER_SIZE && alignof(number) == 1);
static_assert(std::is_trivially_copyable_v<number> && std::is_standard_layout_v<number>);

namespace detail {

// Calls a function of oci.h whose result is a number.
template <auto function, class... Arguments>
inline number call(on_error e, Arguments... arguments) {
    number result{unset{}};
    const sword status = function(handle(), arguments..., &result.bytes());
    if (status == OCI_SUCCESS) {
        e.success();
    } else {
        result = number();
        e.failure(status);
    }
    return result;
}
template <auto function>
inline number unary(const number &x, on_error e) {
    return call<function>(e, &x.bytes());
}
template <auto function>
inline number binary(const number &x, const number &y, on_error e) {
    return call<function>(e, &x.bytes(), &y.bytes());
}

}  // namespace detail

// ---- Arithmetic

inline number add(const number &a, const number &b, on_error e = {}) {
    return detail::binary<OCINumberAdd>(a, b, e);
}
inline number sub(const number &a, const number &b, on_error e = {}) {
    return detail::binary<OCINumberSub>(a, b, e);
}
inline number mul(const number &a, const number &b, on_error e = {}) {
    return detail::binary<OCINumberMul>(a, b, e);
}
inline number div(const number &a, const number &b, on_error e = {}) {
    return detail::binary<OCINumberDiv>(a, b, e);
}
// The remainder has the sign of `a`.
inline number mod(const number &a, const number &b, on_error e = {}) {
    return detail::binary<OCINumberMod>(a, b, e);
}
inline number neg(const number &x, on_error e = {}) { return detail::unary<OCINumberNeg>(x, e); }

inline number operator+(const number &a, const number &b) { return add(a, b); }
inline number operator-(const number &a, const number &b) { return sub(a, b); }
inline number operator*(const number &a, const number &b) { return mul(a, b); }
inline number operator/(const number &a, const number &b) { return div(a, b); }
inline number operator%(const number &a, const number &b) { return mod(a, b); }
inline number operator-(const number &x) { return neg(x); }
inline number operator+(const number &x) { return x; }

// ---- Functions

inline number abs(const number &x, on_error e = {}) { return detail::unary<OCINumberAbs>(x, e); }
inline number sqrt(const number &x, on_error e = {}) { return detail::unary<OCINumberSqrt>(x, e); }
inline number exp(const number &x, on_error e = {}) { return detail::unary<OCINumberExp>(x, e); }
// The natural logarithm, the common one, and that to any base.
inline number log(const number &x, on_error e = {}) { return detail::unary<OCINumberLn>(x, e); }
inline number log_base(const number &base, const number &x, on_error e = {}) {
    return detail::binary<OCINumberLog>(base, x, e);
}
inline number log10(const number &x, on_error e = {}) { return log_base(10, x, e); }
inline number pow(const number &base, const number &exponent, on_error e = {}) {
    return detail::binary<OCINumberPower>(base, exponent, e);
}
inline number sin(const number &x, on_error e = {}) { return detail::unary<OCINumberSin>(x, e); }
inline number cos(const number &x, on_error e = {}) { return detail::unary<OCINumberCos>(x, e); }
inline number tan(const number &x, on_error e = {}) { return detail::unary<OCINumberTan>(x, e); }
inline number asin(const number &x, on_error e = {}) {
    return detail::unary<OCINumberArcSin>(x, e);
}
inline number acos(const number &x, on_error e = {}) {
    return detail::unary<OCINumberArcCos>(x, e);
}
inline number atan(const number &x, on_error e = {}) {
    return detail::unary<OCINumberArcTan>(x, e);
}
inline number atan2(const number &y, const number &x, on_error e = {}) {
    return detail::binary<OCINumberArcTan2>(y, x, e);
}
inline number sinh(const number &x, on_error e = {}) {
    return detail::unary<OCINumberHypSin>(x, e);
}
inline number cosh(const number &x, on_error e = {}) {
    return detail::unary<OCINumberHypCos>(x, e);
}
inline number tanh(const number &x, on_error e = {}) {
    return detail::unary<OCINumberHypTan>(x, e);
}
inline number floor(const number &x, on_error e = {}) {
    return detail::unary<OCINumberFloor>(x, e);
}
inline number ceil(const number &x, on_error e = {}) { return detail::unary<OCINumberCeil>(x, e); }

// To `places` decimal places, half away from zero or toward zero; -1 is to tens.
inline number round(const number &x, int places = 0, on_error e = {}) {
    return detail::call<OCINumberRound>(e, &x.bytes(), places);
}
inline number trunc(const number &x, int places = 0, on_error e = {}) {
    return detail::call<OCINumberTrunc>(e, &x.bytes(), places);
}
// To `digits` significant digits.
inline number prec(const number &x, int digits, on_error e = {}) {
    return detail::call<OCINumberPrec>(e, &x.bytes(), digits);
}
// Times 10^places.
inline number shift(const number &x, int places, on_error e = {}) {
    return detail::call<OCINumberShift>(e, &x.bytes(), places);
}

inline number pi() {
    number result;
    OCINumberSetPi(detail::handle(), &result.bytes());
    return result;
}

// -1, 0 or 1.
inline int sign(const number &x) noexcept { return (x > 0) - (x < 0); }
inline bool isinf(const number &x) noexcept {
    return x.bytes().OCINumberPart[0] < 3 &&
           (detail::compare_bytes(x.bytes(), detail::infinity(true)) == 0 ||
            detail::compare_bytes(x.bytes(), detail::infinity(false)) == 0);
}
inline bool isfinite(const number &x) noexcept { return !isinf(x); }
inline bool is_integer(const number &x) { return !isinf(x) && trunc(x) == x; }

// ---- Integers and reals

template <class T>
T number::to(on_error e) const {
    static_assert(detail::is_integer<T> || std::is_floating_point_v<T>);
    const auto convert = [](const OCINumber &from, T &result) {
        if constexpr (std::is_floating_point_v<T>) {
            return OCINumberToReal(detail::handle(), &from, sizeof result, &result);
        } else {
            return OCINumberToInt(detail::handle(), &from, sizeof result,
                                  std::is_signed_v<T> ? OCI_NUMBER_SIGNED : OCI_NUMBER_UNSIGNED,
                                  &result);
        }
    };
    T result{};
    sword status = convert(bytes_, result);
    if (status != OCI_SUCCESS) {
        detail::close_handle();
        // Perhaps it has only more digits behind the point than the conversion reads.
        constexpr int places = !std::is_floating_point_v<T> ? 0
                               : sizeof(T) == 4             ? 6
                               : sizeof(T) == 8             ? 15
                                                            : 18;
        number cut;
        status = (places > 0 ? OCINumberRound : OCINumberTrunc)(detail::handle(), &bytes_, places,
                                                                &cut.bytes_);
        if constexpr (detail::is_integer<T>) {
            using limits = std::numeric_limits<T>;
            if (status == OCI_SUCCESS && (cut < limits::min() || cut > limits::max())) {
                e.failure(errc::overflow, "OCI-22053: overflow error");
                return T{};
            }
        }
        if (status == OCI_SUCCESS) status = convert(cut.bytes_, result);
        if (status != OCI_SUCCESS) {
            e.failure(status);
            return T{};
        }
    }
    e.success();
    return result;
}

// The reals of `count` records in one call, as OCINumberToRealArray: the first that fails ends it;
// what stands in front of it is stored, the rest of `reals` left as it was.
template <class Real>
void to_reals(const OCINumber **numbers, uword count, Real *reals, on_error e = {}) {
    static_assert(std::is_floating_point_v<Real>);
    const sword status =
        OCINumberToRealArray(detail::handle(), numbers, count, sizeof *reals, reals);
    if (status == OCI_SUCCESS) {
        e.success();
    } else {
        e.failure(status);
    }
}

// ---- Text

namespace detail {

// Sign, a zero, the point, and up to 127 zeros and 40 digits behind it.
inline constexpr std::size_t text_size = 172;

inline sword write_digits(const OCINumber &n, char *text, std::size_t &size) {
    ub4 length = text_size;
    const sword status = OCINumberToText(handle(), &n, reinterpret_cast<const OraText *>("TM"), 2,
                                         nullptr, 0, &length, reinterpret_cast<OraText *>(text));
    if (status == OCI_SUCCESS) size = length;
    return status;
}

inline void insert_zeros(char *text, std::size_t &size, std::size_t at, std::size_t count) {
    std::memmove(text + at + count, text + at, size - at);
    std::memset(text + at, '0', count);
    size += count;
}

// Writes the plain decimal text of `n` at `text`, which has room for text_size.
inline sword write_text(const number &n, char *text, std::size_t &size) {
    sword status = write_digits(n.bytes(), text, size);
    std::size_t zeros = 0;
    if (status != OCI_SUCCESS) {
        close_handle();
        if (isinf(n)) {
            size = n < 0 ? 2 : 1;
            std::memcpy(text, n < 0 ? "-~" : "~", size);
            return OCI_SUCCESS;
        }
        // A zero digit in front is refused, and so are too many zeros behind the point: those
        // that an exact shift takes away are put back.
        OCINumber form = ordered_form(n.bytes());
        status = write_digits(form, text, size);
        if (status != OCI_SUCCESS) {
            close_handle();
            zeros = 64;
            status = OCINumberShift(handle(), &form, static_cast<int>(zeros), &form);
            if (status == OCI_SUCCESS) status = write_digits(form, text, size);
        }
        if (status != OCI_SUCCESS) return status;
    }
    const std::size_t first = text[0] == '-';
    if (text[first] == '.') {
        if (zeros > 0) insert_zeros(text, size, first + 1, zeros);
        insert_zeros(text, size, first, 1);
    }
    return OCI_SUCCESS;
}

}  // namespace detail

// As std::to_chars: all digits, 123.45, -0.25 or ~; value_too_large when there is no room,
// invalid_argument for bytes that hold no number.
inline std::to_chars_result to_chars(char *first, char *last, const number &n) {
    char scratch[detail::text_size];
    const std::size_t room = static_cast<std::size_t>(last - first);
    char *const text = room >= detail::text_size ? first : scratch;
    std::size_t size = 0;
    if (detail::write_text(n, text, size) != OCI_SUCCESS) {
        detail::close_handle();
        return {last, std::errc::invalid_argument};
    }
    if (size > room) return {last, std::errc::value_too_large};
    if (text != first) std::memcpy(first, text, size);
    return {first + size, std::errc()};
}

inline std::string to_string(const number &n, on_error e = {}) {
    char text[detail::text_size];
    std::size_t size = 0;
    const sword status = detail::write_text(n, text, size);
    if (status == OCI_SUCCESS) {
        e.success();
    } else {
        e.failure(status);
        size = 0;
    }
    return std::string(text, size);
}

// With exactly `places` digits behind the point, rounded half away from zero.
inline std::string to_fixed(const number &n, int places, on_error e = {}) {
    std::error_code ec;
    std::string text = to_string(round(n, places, e), ec);
    if (ec || places <= 0 || isinf(n)) return text;
    std::size_t point = text.find('.');
    if (point == text.npos) {
        point = text.size();
        text += '.';
    }
    text.resize(point + 1 + static_cast<std::size_t>(places), '0');
    return text;
}

// Under a format model of OCINumberToText, such as "FM9990.00".
inline std::string to_string(const number &n, std::string_view model, on_error e = {}) {
    char text[128];
    ub4 size = sizeof text;
    const sword status = OCINumberToText(
        detail::handle(), &n.bytes(), reinterpret_cast<const OraText *>(model.data()),
        static_cast<ub4>(model.size()), nullptr, 0, &size, reinterpret_cast<OraText *>(text));
    if (status == OCI_SUCCESS) {
        e.success();
    } else {
        e.failure(status);
        size = 0;
    }
    return std::string(text, size);
}

// The number of a text, as its constructor reads it, or matched against a format model by
// OCINumberFromText.
inline number parse(std::string_view text, on_error e = {}) { return number(text, e); }
inline number parse(std::string_view text, std::string_view model, on_error e = {}) {
    return detail::call<OCINumberFromText>(e, reinterpret_cast<const OraText *>(text.data()),
                                           static_cast<ub4>(text.size()),
                                           reinterpret_cast<const OraText *>(model.data()),
                                           static_cast<ub4>(model.size()), nullptr, 0u);
}

// Honours width and fill, showpos, and std::fixed with the precision.
inline std::ostream &operator<<(std::ostream &out, const number &n) {
    const bool fixed = (out.flags() & out.floatfield) == out.fixed;
    std::string text = fixed ? to_fixed(n, static_cast<int>(out.precision())) : to_string(n);
    if ((out.flags() & out.showpos) != 0 && text[0] != '-') text.insert(0, 1, '+');
    return out << text;
}

// Reads what the constructor takes, behind blanks; failbit for anything else.
inline std::istream &operator>>(std::istream &in, number &n) {
    const std::istream::sentry ready(in);
    if (!ready) return in;
    std::string text;
    for (;;) {
        const int c = in.peek();
        if (c == std::char_traits<char>::eof()) break;
        const char letter = std::char_traits<char>::to_char_type(c);
        const bool starts = text.empty() || text.back() == 'e' || text.back() == 'E';
        if (std::string_view(starts ? "0123456789.eE~+-" : "0123456789.eE~").find(letter) ==
            std::string_view::npos) {
            break;
        }
        text += letter;
        in.get();
    }
    std::error_code ec;
    const number value(text, ec);
    if (ec) {
        in.setstate(std::ios_base::failbit);
    } else {
        n = value;
    }
    return in;
}

// ---- Literals: 1.23_num and 1'000_num, constants that the compiler makes

namespace detail {

template <char... letters>
constexpr number literal() {
    char text[sizeof...(letters)]{};
    std::size_t size = 0;
    for (const char letter : {letters...}) {
        if (letter != '\'') text[size++] = letter;
    }
    number result;
    // An integer that begins with zero would be octal.
    bool decimal = size == 1 || text[0] != '0';
    for (std::size_t i = 1; i < size; ++i) {
        if (text[i] == '.' || text[i] == 'e' || text[i] == 'E') decimal = true;
    }
    if (!decimal || !from_text(text, text + size, result.bytes())) {
        std::abort();  // not a decimal below 10^126
    }
    return result;
}

template <char... letters>
inline constexpr number literal_value = literal<letters...>();

}  // namespace detail

inline namespace literals {

template <char... letters>
constexpr const number &operator""_num() noexcept {
    return detail::literal_value<letters...>;
}

}  // namespace literals

}  // namespace oci

// ---- For the standard library

template <>
struct std::is_error_code_enum<oci::errc> : std::true_type {};

// Equal numbers have equal hashes, in whatever form they are stored.
template <>
struct std::hash<oci::number> {
    std::size_t operator()(const oci::number &n) const noexcept {
        const OCINumber bytes = oci::detail::is_ordered_form(n.bytes())
                                    ? n.bytes()
                                    : oci::detail::ordered_form(n.bytes());
        return std::hash<std::string_view>()(
            std::string_view(reinterpret_cast<const char *>(bytes.OCINumberPart) + 1,
                             oci::detail::length_of(bytes)));
    }
};

template <>
class std::numeric_limits<oci::number> {
public:
    static constexpr bool is_specialized = true;
    static constexpr bool is_signed = true;
    static constexpr bool is_integer = false;
    static constexpr bool is_exact = false;
    static constexpr bool is_bounded = true;
    static constexpr bool is_modulo = false;
    static constexpr bool is_iec559 = false;
    static constexpr bool has_infinity = true;
    static constexpr bool has_quiet_NaN = false;
    static constexpr bool has_signaling_NaN = false;
    static constexpr std::float_denorm_style has_denorm = std::denorm_absent;
    static constexpr bool has_denorm_loss = false;
    static constexpr bool traps = false;
    static constexpr bool tinyness_before = false;
    static constexpr std::float_round_style round_style = std::round_to_nearest;
    // Base-100 digits: 39 or 40 decimal ones, as they are aligned on the point.
    static constexpr int radix = 100;
    static constexpr int digits = 20;
    static constexpr int digits10 = 39;
    static constexpr int max_digits10 = 40;
    static constexpr int min_exponent = -63;
    static constexpr int min_exponent10 = -128;
    static constexpr int max_exponent = 63;
    static constexpr int max_exponent10 = 125;

    static constexpr oci::number min() noexcept { return power(-64); }
    static constexpr oci::number max() noexcept { return largest(false); }
    static constexpr oci::number lowest() noexcept { return largest(true); }
    static constexpr oci::number epsilon() noexcept { return power(-19); }
    static constexpr oci::number round_error() noexcept {
        const unsigned char half = 50;
        return oci::number(oci::detail::join_pairs(false, -1, &half, 1));
    }
    static constexpr oci::number infinity() noexcept {
        return oci::number(oci::detail::infinity(false));
    }
    static constexpr oci::number denorm_min() noexcept { return min(); }
    static constexpr oci::number quiet_NaN() noexcept { return {}; }
    static constexpr oci::number signaling_NaN() noexcept { return {}; }

private:
    static constexpr oci::number power(int exponent) noexcept {
        const unsigned char one = 1;
        return oci::number(oci::detail::join_pairs(false, exponent, &one, 1));
    }
    static constexpr oci::number largest(bool negative) noexcept {
        unsigned char pairs[oci::detail::max_pairs]{};
        for (unsigned char &pair : pairs) pair = 99;
        return oci::number(oci::detail::join_pairs(negative, 62, pairs, oci::detail::max_pairs));
    }
};

#ifdef __cpp_lib_format
// [[fill]align][+][width][.places]: {:>12.2} writes two digits behind the point.
template <>
struct std::formatter<oci::number, char> {
    constexpr auto parse(std::format_parse_context &context) {
        auto at = context.begin();
        const auto end = context.end();
        const auto is_align = [](char c) { return c == '<' || c == '>' || c == '^'; };
        if (end - at > 1 && *at != '{' && *at != '}' && is_align(at[1])) fill_ = *at++;
        if (at != end && is_align(*at)) align_ = *at++;
        if (at != end && *at == '+') plus_ = *at++ == '+';
        const auto read = [&](int &value) {
            if (at == end || *at < '0' || *at > '9') return false;
            for (value = 0; at != end && *at >= '0' && *at <= '9' && value < 100000; ++at) {
                value = 10 * value + (*at - '0');
            }
            return true;
        };
        read(width_);
        if (at != end && *at == '.' && (++at, !read(places_))) {
            throw std::format_error("digits are missing behind the period");
        }
        if (at != end && *at != '}') throw std::format_error("no format of a number");
        return at;
    }

    template <class Context>
    auto format(const oci::number &n, Context &context) const {
        std::string text = places_ >= 0 ? oci::to_fixed(n, places_) : oci::to_string(n);
        if (plus_ && text[0] != '-') text.insert(0, 1, '+');
        const auto width = static_cast<std::size_t>(width_);
        if (text.size() < width) {
            const std::size_t missing = width - text.size();
            const std::size_t behind = align_ == '<'   ? missing
                                       : align_ == '^' ? (missing + 1) / 2
                                                       : 0;
            text.append(behind, fill_);
            text.insert(0, missing - behind, fill_);
        }
        auto out = context.out();
        for (const char letter : text) *out++ = letter;
        return out;
    }

private:
    char fill_ = ' ';
    char align_ = '>';
    bool plus_ = false;
    int width_ = 0;
    int places_ = -1;
};
#endif

#endif
