// A program that reaches each template of oci_number.hpp; it is compiled only.
#include <oci_number.hpp>
#include <sstream>

using namespace oci::literals;

bool use(const oci::number &a, const oci::number &b);

template <class... T>
static bool converts(const oci::number &a) {
    return ((oci::number(static_cast<T>(a)) == a) && ...);
}

bool use(const oci::number &a, const oci::number &b) {
    std::error_code ec;
    std::stringstream stream;
    oci::number c = 1'000.5_num + 7L - 3u, d(std::string_view("1e3"), ec);
    c += a, c -= b, c *= 2, c /= d, c %= 5, ++c, c--;
    stream << round(sqrt(c, ec), 2) << pow(c, 2) << oci::pi() << to_fixed(a, 3);
    stream >> d;
    char text[200];
    const bool written = to_chars(text, text + 200, d).ec == std::errc();
    return written && (a == b || a != b || a < b || a > b || a <= b || a >= b || a == 1) &&
           converts<signed char, short, int, long, long long, unsigned char, unsigned short,
                    unsigned, unsigned long, unsigned long long, float, double, long double>(c) &&
           std::hash<oci::number>()(c) != 0 && c < std::numeric_limits<oci::number>::max() &&
           oci::parse("1", "9", ec) == oci::parse("1") && to_string(c, "FM99", ec).empty() &&
           isfinite(c) && sign(c) > 0 && (ec == oci::errc::failed || !ec);
}
