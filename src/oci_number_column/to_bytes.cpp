// Columns of numbers to bytes: other columns of numbers, text, sort keys.
#include "oci_number/call_frame.h"
#include "oci_number/steps.h"
#include "oci_number_column/column.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;
using plain_number::PlainNumber;

namespace columns {

namespace {

// Calls each(row, i), which returns a Reason, for the rows that are present.
template <class Each>
void each_present(const Block &block, Outcome &outcome, Each each) {
    for (Rows rows = block.present; rows != 0; rows &= rows - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(rows));
        if (const Reason reason = each(block.row(i), i)) outcome.refuse(i, reason);
    }
}

Reason to_numbers(const Column &from, const Column &to, uword options, Tally *tally) {
    Reader reader(from);
    NumberWriter writer(to);
    Outcome outcome(&to, from.length, options);
    Block block;
    OCINumber numbers[block_rows];
    while (reader.next(block)) {
        outcome.begin(block.start, block.count, block.present);
        each_present(block, outcome, [&](const Row &row, unsigned i) {
            numbers[i] = number_of(row);
            return is_bad(row) ? OCI_NUMBER_BAD_LENGTH : OCI_NUMBER_DONE;
        });
        writer.put(numbers, block.start, block.count, outcome);
        if (!outcome.end()) break;
    }
    return outcome.finish(tally, writer.size());
}

struct Text {
    OraText buffer[OCI_NUMBER_MAX_TEXT];
    OraText *start = buffer;
    sb8 length;
};
static_assert(OCI_NUMBER_MAX_TEXT == oci_number::number_text_size);

Reason to_text(const Row &row, Text &text) {
    const OCINumber n = number_of(row);
    ub2 size = sizeof text.buffer;
    if (is_bad(row) || oci_number::is_taken_for_infinity(n)) return reason_of(row);
    if (getStrFromNumber(&n, text.buffer, &size) != OCI_SUCCESS) {
        PlainNumber p;
        return read(n, p) ? OCI_NUMBER_TEXT_TOO_LONG : reason_of(row);
    }
    text.start = text.buffer;
    text.length = size;
    oci_number::OCINumberDropLeadingZero(text.start, text.length);
    return OCI_NUMBER_DONE;
}

Reason to_texts(const Column &from, const Column &to, uword options, Tally *tally) {
    Reader reader(from);
    SpanWriter writer(to);
    Outcome outcome(&to, from.length, options);
    Block block;
    Text text;
    do {
        if (!reader.next(block)) break;
        outcome.begin(block.start, block.count, block.present);
        for (unsigned i = 0; i < block.count; ++i) {
            text.length = 0;
            if ((block.present >> i & 1) != 0) {
                if (const Reason reason = to_text(block.row(i), text)) outcome.refuse(i, reason);
            }
            if (!writer.put(text.start, static_cast<size_t>(text.length))) {
                outcome.no_room(i);
                break;
            }
        }
    } while (outcome.end());
    return outcome.finish(tally, writer.size());
}

// A digit above the first is 0, or the value is zero: other than in normal form there are values
// of several byte strings.
Reason to_key(const Row &row, ub1 *key) {
    std::memset(key, 0, OCI_NUMBER_SIZE);
    OCINumber n = number_of(row);
    PlainNumber p;
    if (!read(row.value, row.length, p)) {
        if (is_bad(row) || (!is_negative_infinity(n) && !is_positive_infinity(n))) {
            return reason_of(row);
        }
    } else if (p.count == 0) {
        set_zero(n);
    } else {
        write_digits(n, p.negative, p.digits);
        set_frame(n, p.negative, p.exponent, p.count);
    }
    key[0] = 1;
    std::memcpy(key + 1, n.OCINumberPart + 1, n.OCINumberPart[0]);
    return OCI_NUMBER_DONE;
}

Reason to_keys(const Column &from, const Column &to, uword options, Tally *tally) {
    Reader reader(from);
    Outcome outcome(&to, from.length, options);
    Block block;
    auto *keys = static_cast<ub1 *>(to.data);
    while (reader.next(block)) {
        outcome.begin(block.start, block.count, block.present);
        each_present(block, outcome, [keys](const Row &row, unsigned i) {
            return to_key(row, keys + size_t{OCI_NUMBER_SIZE} * i);
        });
        clear_rows(keys, OCI_NUMBER_SIZE, first_rows(block.count) & ~outcome.done());
        keys += size_t{OCI_NUMBER_SIZE} * block.count;
        if (!outcome.end()) break;
    }
    return outcome.finish(tally);
}

}  // namespace

Reason to_bytes(const Column &from, const Column &to, uword options, Tally *tally) {
    switch (to.form) {
        case OCI_NUMBER_TEXT_32:
        case OCI_NUMBER_TEXT_64: return to_texts(from, to, options, tally);
        case OCI_NUMBER_KEYS: return to_keys(from, to, options, tally);
        default: return to_numbers(from, to, options, tally);
    }
}

}  // namespace columns
