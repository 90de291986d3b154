// The decimal text codec and the scanners, against the grammar, GMP and strtold.
#include "oci_utils/oci_utils.h"
#include "support.h"

using namespace fuzz;

namespace {

void check_rendering(const OCINumber &n, ub1 room) {
    std::vector<OraText> text(room, unused);
    ub2 size = room;
    const sword status = getStrFromNumber(&n, text.data(), &size);
    const std::string expected = is_finite(n) ? exact(n).plain() : "";
    if (status != 0) {
        REQUIRE(size == room);
        REQUIRE(std::count(text.begin(), text.end(), unused) == room);
        REQUIRE(!is_finite(n) || expected.size() > room);
        return;
    }
    REQUIRE(size <= room && (!is_well_formed(n) || is_finite(n)));
    REQUIRE(std::count(text.begin() + size, text.end(), unused) == room - size);
    if (is_finite(n)) REQUIRE(std::string(text.begin(), text.begin() + size) == expected);
    // Whatever was rendered is read again, and to the same text.
    OCINumber back = number({});
    REQUIRE(getNumberFromStr(&back, text.data(), size) == 0);
    if (!is_finite(n)) return;
    REQUIRE(value_bytes(back) == exact(n).bytes());
}

void check_reading(std::string_view text) {
    std::vector<ub1> bytes = exact_copy<ub1>(text);
    OCINumber n = number({});
    const sword status = getNumberFromStr(&n, bytes.data(), static_cast<ub4>(bytes.size()));
    const PlainText parts(text);
    const Bytes expected = parts.is_good ? parts.value().bytes() : Bytes{1, 0};
    REQUIRE((status == 0) == !is_infinite(expected));
    REQUIRE(status == 0 ? value_bytes(n) == expected : n == number({}));
    for (size_t i = value_bytes(n).size(); i < sizeof n; ++i) {
        REQUIRE(n.OCINumberPart[i] == unused);
    }
}

void check_integer(std::string_view text) {
    std::vector<char> bytes = exact_copy<char>(text);
    char *end = bytes.data() + bytes.size();
    int error = 7;
    const long long result = my_strtoll10(bytes.data(), &end, &error);
    REQUIRE(end == bytes.data() + bytes.size());
    const bool is_signed = text.starts_with('-') || text.starts_with('+');
    std::string_view digits = text.substr(is_signed);
    digits = digits.substr(0, digits.find_first_not_of("0123456789"));
    if (digits.empty()) {
        REQUIRE(error == 33);
        return;
    }
    const mpz_class magnitude(std::string(digits), 10);
    const mpz_class value = text[0] == '-' ? mpz_class(-magnitude) : magnitude;
    if (value < mpz_class("-9223372036854775808") || value > mpz_class("18446744073709551615")) {
        REQUIRE(error == 34 && result == 0);
        return;
    }
    REQUIRE(error == (value < 0 ? -1 : 0));
    REQUIRE(value < 0 ? value == mpz_class(static_cast<long>(result))
                      : value == mpz_class(static_cast<unsigned long>(result)));
}

void check_real(std::string_view text) {
    const std::vector<char> bytes = exact_copy<char>(text);
    int error = 7;
    const long double result = qz_atold(bytes.data(), bytes.data() + bytes.size(), &error);
    const PlainText parts(text);
    const std::string digits = std::string(parts.integer) + std::string(parts.fraction);
    const size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    const bool is_good = parts.is_good && !text.starts_with(' ') && digits.size() - zeros <= 1024 &&
                         parts.fraction.size() <= 1024;
    REQUIRE(error == (is_good ? 0 : 1));
    REQUIRE(result == (is_good ? std::strtold(std::string(text).c_str(), nullptr) : 0));
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed) {
    return mutate(data, size, max_size, seed, 1, 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const auto room = source.take<ub1>();
    check_rendering(source.take<OCINumber>(), room);
    check_reading(source.rest());
    check_integer(source.rest());
    check_real(source.rest());
    return 0;
}
