#include "oci_calc_number/elementary/logarithm.h"

#include <cstddef>

#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"

namespace calc {
namespace {

// Behind the rounded digits.
constexpr size_t place = sizeof(Digits);
static_assert(sizeof(Logarithm) % sizeof(ub8) == 0 &&
              place + sizeof(Logarithm) <= sizeof QZCICalcNumber::data_part);

Logarithm logarithm_of(const QZCICalcNumber &n) {
    Logarithm log;
    std::memcpy(&log, reinterpret_cast<const ub1 *>(n.data_part) + place, sizeof log);
    return log;
}

}  // namespace

// Word by word, as they were written: a wider load would wait for the stores to finish.
void keep_logarithm(QZCICalcNumber &n, const Operand &x, const Real<3> &value) {
    auto *to = reinterpret_cast<ub1 *>(n.data_part) + place;
    const auto keep = [&to](const void *part, size_t size) {
        const auto *from = static_cast<const ub1 *>(part);
        for (; size > 0; size -= sizeof(ub8), to += sizeof(ub8), from += sizeof(ub8)) {
            std::memcpy(to, from, sizeof(ub8));
        }
    };
    static_assert(offsetof(Logarithm, value) == sizeof x);
    keep(&x, sizeof x);
    keep(&value, sizeof value);
}

// Two logarithms' errors and a division's.
template <int N>
inline constexpr int quotient_bits = ln_bits<N> - 2;

template <int N>
int logarithm_quotient(Real<N> &r, const Operand &x, const Operand &y) {
    Real<N> divisor;
    ln(r, x);
    ln(divisor, y);
    div(r, r, divisor);
    return quotient_bits<N>;
}

template int logarithm_quotient<3>(Real<3> &, const Operand &, const Operand &);
template int logarithm_quotient<4>(Real<4> &, const Operand &, const Operand &);
template int logarithm_quotient<wide_limbs>(Wide &, const Operand &, const Operand &);

// No quotient is a midpoint: a rational one is p/q with x = z^p and y = z^q, |p| and |q| below
// 512, so it has 9 decimals at most when it has an end.
sword divide_logarithms(const QZCICalcNumber &a, const QZCICalcNumber &b,
                        QZCICalcNumber &quotient) {
    const Logarithm x = logarithm_of(a), y = logarithm_of(b);
    round_by_passes(quotient, [&]<int N>(Real<N> &r) {
        if constexpr (N == 3) {
            div(r, x.value, y.value);
            return quotient_bits<N>;
        } else {
            return logarithm_quotient(r, x.x, y.x);
        }
    });
    return OCI_SUCCESS;
}

}  // namespace calc
