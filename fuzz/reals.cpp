// Reals by their bits and records to reals, against printf, exact decimals and strtold.
#include <cmath>
#include <limits>

#include "support.h"

using namespace fuzz;

namespace {

template <class Real>
inline constexpr int decimals = sizeof(Real) == 4   ? 6
                                : sizeof(Real) == 8 ? 15
                                                    : 18;

// Of a finite real: as many digits and two more as printf writes them, then two fewer.
template <class Real>
Bytes rounded_digits(Real real) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*Le", decimals<Real> + 1, static_cast<long double>(real));
    const Decimal printed{std::string(text)};
    return printed.rounded(printed.exponent() + 2).bytes();
}

// Whether the 80-bit format has a value for the bits.
bool has_value(const ub1 *bits, size_t size) {
    if (size != 16 || real_digits != 64) return true;
    const bool has_exponent = (bits[8] | (bits[9] & 0x7f)) != 0;
    return !has_exponent || (bits[7] & 0x80) != 0;
}

template <class Real>
void check_from_real(const ub1 *bits) {
    Real real;
    std::memcpy(&real, bits, sizeof real);
    OCINumber n = number({});
    const std::vector<ub1> at_end(bits, bits + sizeof real);
    const Outcome outcome = watched(fuzz::bytes_of(n), {0}, [&](OCIError *err) {
        return OCINumberFromReal(err, at_end.data(), sizeof real, &n);
    });
    if (!has_value(bits, sizeof real) || std::isnan(real)) {
        REQUIRE(outcome.status == OCI_ERROR);
        return;
    }
    REQUIRE(outcome.status == OCI_SUCCESS);
    const Bytes bytes = value_bytes(n);
    if (std::isinf(real)) {
        REQUIRE(bytes == (real > 0 ? Bytes{2, 255, 101} : Bytes{1, 0}));
    } else if (std::abs(static_cast<long double>(real)) <
               static_cast<long double>(std::numeric_limits<double>::denorm_min())) {
        REQUIRE(bytes == (Bytes{1, 128}));  // far below the least number, too
    } else {
        REQUIRE(bytes == rounded_digits(real));
    }
}

template <class Real>
void check_to_real(const OCINumber &n) {
    ub1 bytes[2 * sizeof(Real)] = {};
    const OCINumber *both[] = {&n, &n};
    const OCINumber before = n;
    const Outcome outcome = watched(bytes, {0, 602}, [&](OCIError *err) {
        return OCINumberToRealArray(err, both, 2, sizeof(Real), bytes);
    });
    REQUIRE(n == before);
    if (!is_well_formed(n)) return;
    long double expected;
    if (!is_finite(n)) {
        expected =
            sizeof(Real) == 4 ? std::numeric_limits<float>::max() : static_cast<long double>(1e126);
        if (n.OCINumberPart[0] == 1) expected = -expected;
    } else {
        const Decimal value = exact(n);
        if (value.plain().size() > 128) {
            REQUIRE(outcome.status == OCI_ERROR && outcome.code == 0);
            return;
        }
        expected = std::strtold(value.rounded(-decimals<Real>).plain().c_str(), nullptr);
        if (sizeof(Real) == 4 && std::abs(expected) > std::numeric_limits<float>::max()) {
            REQUIRE(outcome.code == 602);
            return;
        }
        expected = std::copysign(expected, value.sign() < 0 ? -1.0L : 1.0L);
    }
    REQUIRE(outcome.status == OCI_SUCCESS);
    for (int i = 0; i < 2; ++i) {
        Real real;
        std::memcpy(&real, bytes + static_cast<size_t>(i) * sizeof real, sizeof real);
        REQUIRE(real == static_cast<Real>(expected));
        REQUIRE(std::signbit(real) == std::signbit(expected));
    }
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed) {
    return mutate(data, size, std::min<size_t>(max_size, 16 + sizeof(OCINumber)), seed, 16, 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const auto bits = source.take<std::array<ub1, 16>>();
    const auto n = source.take<OCINumber>();
    check_from_real<float>(bits.data());
    check_from_real<double>(bits.data());
    if (has_long_double) check_from_real<long double>(bits.data());
    check_to_real<float>(n);
    check_to_real<double>(n);
    if (has_long_double) check_to_real<long double>(n);
    return 0;
}
