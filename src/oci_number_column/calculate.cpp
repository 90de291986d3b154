// Arithmetic, rounding and comparison of columns.
#include "oci_calc_number/algebraic/algebraic.h"
#include "oci_calc_number/convert.h"
#include "oci_number/steps.h"
#include "oci_number_column/column.h"

using namespace number_bytes;

namespace columns {

namespace {

using calc::Finite;
using Operation = oci_number_operation;

// ---- Of finite values, as the calculations are

template <Operation operation>
[[gnu::always_inline]] inline Finite of_finite(const Finite &a, const Finite &b) {
    if constexpr (operation == OCI_NUMBER_ADD) return calc::sum(a, b, false);
    if constexpr (operation == OCI_NUMBER_SUB) return calc::sum(a, b, true);
    if constexpr (operation == OCI_NUMBER_MUL) return calc::product(a, b);
    if constexpr (operation == OCI_NUMBER_DIV) return calc::quotient(a, b);
    if constexpr (operation == OCI_NUMBER_MOD) return calc::remainder(a, b);
    if constexpr (operation == OCI_NUMBER_CEIL) return calc::integer_part(a, !a.negative);
    if constexpr (operation == OCI_NUMBER_FLOOR) return calc::integer_part(a, a.negative);
    // cppcheck-suppress missingReturn ; each operation of finite values has a line
    if constexpr (operation == OCI_NUMBER_SQRT) return calc::square_root(a);
}

constexpr bool takes_two(Operation operation) { return operation >= OCI_NUMBER_ADD; }

// By way of records: zero, infinities, numbers not in normal form.
Reason by_records(Operation operation, const Row &a, const Row &b, OCINumber &result) {
    QZCICalcNumber x, y, z;
    for (const auto &[row, record] : {std::pair{&a, &x}, std::pair{&b, &y}}) {
        const OCINumber n = number_of(*row);
        if (is_bad(*row)) return OCI_NUMBER_BAD_LENGTH;
        if (QZCICalcNumFromNumber(record, &n) != OCI_SUCCESS) return OCI_NUMBER_BAD_DIGITS;
    }
    sword status = OCI_ERROR;
    switch (operation) {
        case OCI_NUMBER_ADD: status = QZCICalcNumAdd(&x, &y, &z); break;
        case OCI_NUMBER_SUB: status = QZCICalcNumSub(&x, &y, &z); break;
        case OCI_NUMBER_MUL: status = QZCICalcNumMul(&x, &y, &z); break;
        case OCI_NUMBER_DIV:
        case OCI_NUMBER_MOD:
            if (y.is_zero != 0) return OCI_NUMBER_ZERO_DIVISOR;
            status = operation == OCI_NUMBER_DIV ? QZCICalcNumDiv(&x, &y, &z)
                                                 : QZCICalcNumMod(&x, &y, &z);
            break;
        case OCI_NUMBER_CEIL: status = QZCICalcNumCeil(&x, &z); break;
        case OCI_NUMBER_FLOOR: status = QZCICalcNumFloor(&x, &z); break;
        default:
            // The sign is that of the exponent byte, whatever the digits are.
            if (!is_negative(a.value[0])) status = QZCICalcNumSqrt(&x, &z);
    }
    if (status != OCI_SUCCESS) return OCI_NUMBER_NO_VALUE;
    QZCICalcNumToNumber(&z, &result);
    return OCI_NUMBER_DONE;
}

template <Operation operation>
Reason calculate(const Row &a, const Row &b, sword, OCINumber &result) {
    Finite x, y = {};
    ub8 others = read_finite(a.value, a.length, x);
    if (takes_two(operation)) others |= read_finite(b.value, b.length, y);
    if (operation == OCI_NUMBER_SQRT) others |= x.negative;
    if (others != 0) [[unlikely]]
        return by_records(operation, a, b, result);
    write_finite(of_finite<operation>(x, y), result);
    return OCI_NUMBER_DONE;
}

// ---- On the bytes

template <Operation operation>
Reason change(const Row &a, const Row &, sword places, OCINumber &result) {
    using namespace oci_number;
    if (is_bad(a)) return OCI_NUMBER_BAD_LENGTH;
    const OCINumber n = number_of(a);
    if constexpr (operation == OCI_NUMBER_ABS) OCINumberMagnitude(n, result);
    if constexpr (operation == OCI_NUMBER_NEG) OCINumberNegate(n, result);
    if constexpr (operation == OCI_NUMBER_ROUND) {
        OCINumberKeepPlaces(n, places, CutMode::round, result);
    }
    if constexpr (operation == OCI_NUMBER_TRUNC) {
        OCINumberKeepPlaces(n, places, CutMode::truncate, result);
    }
    return OCI_NUMBER_DONE;
}

// ---- Columns

// A loop for each operation.
template <Reason (*row)(const Row &, const Row &, sword, OCINumber &)>
void of_block(const Block &a, const Block &b, sword places, OCINumber *results, Outcome &outcome) {
    for (Rows rows = outcome.done(); rows != 0; rows &= rows - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(rows));
        if (const Reason reason = row(a.row(i), b.row(i), places, results[i])) {
            outcome.refuse(i, reason);
        }
    }
}
using OfBlock = void (*)(const Block &, const Block &, sword, OCINumber *, Outcome &);

OfBlock find(Operation operation) {
    switch (operation) {
        case OCI_NUMBER_ABS: return of_block<change<OCI_NUMBER_ABS>>;
        case OCI_NUMBER_NEG: return of_block<change<OCI_NUMBER_NEG>>;
        case OCI_NUMBER_ROUND: return of_block<change<OCI_NUMBER_ROUND>>;
        case OCI_NUMBER_TRUNC: return of_block<change<OCI_NUMBER_TRUNC>>;
        case OCI_NUMBER_CEIL: return of_block<calculate<OCI_NUMBER_CEIL>>;
        case OCI_NUMBER_FLOOR: return of_block<calculate<OCI_NUMBER_FLOOR>>;
        case OCI_NUMBER_SQRT: return of_block<calculate<OCI_NUMBER_SQRT>>;
        case OCI_NUMBER_ADD: return of_block<calculate<OCI_NUMBER_ADD>>;
        case OCI_NUMBER_SUB: return of_block<calculate<OCI_NUMBER_SUB>>;
        case OCI_NUMBER_MUL: return of_block<calculate<OCI_NUMBER_MUL>>;
        case OCI_NUMBER_DIV: return of_block<calculate<OCI_NUMBER_DIV>>;
        case OCI_NUMBER_MOD: return of_block<calculate<OCI_NUMBER_MOD>>;
        default: return nullptr;
    }
}

void compare_block(const Block &a, const Block &b, ub1 *orders, Outcome &outcome) {
    for (Rows rows = outcome.done(); rows != 0; rows &= rows - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(rows));
        if (is_bad(a.row(i)) || is_bad(b.row(i))) {
            outcome.refuse(i, OCI_NUMBER_BAD_LENGTH);
        } else {
            orders[i] = static_cast<ub1>(compare(key_of(a.row(i)), key_of(b.row(i))));
        }
    }
    clear_rows(orders, 1, first_rows(a.count) & ~outcome.done());
}

}  // namespace

}  // namespace columns

using namespace columns;

extern "C" oci_number_reason oci_number_column_calculate(oci_number_operation operation,
                                                         const oci_number_column *a,
                                                         const oci_number_column *b, sword places,
                                                         const oci_number_column *to, uword options,
                                                         oci_number_tally *tally) {
    const bool compares = operation == OCI_NUMBER_CMP;
    const OfBlock of = find(operation);
    const Form result = compares ? OCI_NUMBER_ORDER : OCI_NUMBER_RECORDS;
    if (!is_option(options) || (of == nullptr && !compares) || !holds_numbers(a, Use::input) ||
        (takes_two(operation) ? !holds_numbers(b, Use::input) || b->length != a->length
                              : b != nullptr) ||
        !is_usable(to, result, compares ? OCI_NUMBER_ORDER : OCI_NUMBER_BYTES_64, Use::output) ||
        to->length != a->length) {
        return bad_call(tally);
    }
    const Column &second = takes_two(operation) ? *b : *a;
    Reader a_reader(*a), b_reader(second);
    NumberWriter writer(*to);
    Outcome outcome(to, a->length, options);
    Block a_block, b_block;
    OCINumber results[block_rows];
    while (a_reader.next(a_block) && b_reader.next(b_block)) {
        outcome.begin(a_block.start, a_block.count, a_block.present & b_block.present);
        if (compares) {
            compare_block(a_block, b_block, static_cast<ub1 *>(to->data) + a_block.start, outcome);
        } else {
            of(a_block, b_block, places, results, outcome);
            writer.put(results, a_block.start, a_block.count, outcome);
        }
        if (!outcome.end()) break;
    }
    return outcome.finish(tally, writer.size());
}
