// Columns in memory: checks, rows, bitmaps, spans, tallies.
#include "oci_number_column/column.h"

#include <algorithm>

#include "digit_words.h"
#include "oci_utils/plain_number.h"

using namespace number_bytes;

namespace columns {

namespace {

Rows read_bits(const ub1 *bits, size_t offset, unsigned count) {
    const ub1 *byte = bits + offset / 8;
    Rows rows = 0;
    for (int place = -static_cast<int>(offset % 8); place < static_cast<int>(count); place += 8) {
        const Rows eight = *byte++;
        rows |= place < 0 ? eight >> -place : eight << place;
    }
    return rows & first_rows(count);
}

void write_bits(ub1 *bits, size_t offset, unsigned count, Rows rows) {
    ub1 *byte = bits + offset / 8;
    const auto eight_at = [](Rows all, int place) {
        return static_cast<ub1>(place < 0 ? all << -place : all >> place);
    };
    for (int place = -static_cast<int>(offset % 8); place < static_cast<int>(count); place += 8) {
        const ub1 kept = static_cast<ub1>(~eight_at(first_rows(count), place));
        *byte = static_cast<ub1>((*byte & kept) | eight_at(rows, place));
        ++byte;
    }
}

bool is_decimal_of(const Column &column, sb4 digits) {
    return column.precision >= 1 && column.precision <= digits && column.scale >= -128 &&
           column.scale <= 128;
}

}  // namespace

Reason reason_of(const Row &row) {
    if (is_bad(row)) return OCI_NUMBER_BAD_LENGTH;
    const OCINumber n = number_of(row);
    return is_positive_infinity(n) || is_negative_infinity(n) ? OCI_NUMBER_INFINITE
                                                              : OCI_NUMBER_BAD_DIGITS;
}

Rows present_rows(const Column &column, size_t start, unsigned count) {
    if (column.validity == nullptr) return first_rows(count);
    return read_bits(column.validity, column.validity_offset + start, count);
}

ub8 offset_at(const void *offsets, bool wide, size_t index) {
    // A negative offset lies beyond all data.
    if (wide) {
        ub8 offset;
        std::memcpy(&offset, static_cast<const ub1 *>(offsets) + 8 * index, sizeof offset);
        return offset;
    }
    sb4 offset;
    std::memcpy(&offset, static_cast<const ub1 *>(offsets) + 4 * index, sizeof offset);
    return static_cast<ub8>(sb8{offset});
}

Span span_at(const Column &column, size_t index) {
    const bool wide = has_wide_offsets(column.form);
    const ub8 from = offset_at(column.offsets, wide, index);
    const ub8 to = offset_at(column.offsets, wide, index + 1);
    if (from > to || to > column.size) return {nullptr, 0, false};
    const auto *data = static_cast<const ub1 *>(column.data);
    return {data == nullptr ? bad_value : data + from, to - from, true};
}

void Reader::put(Block &block, unsigned i, const ub1 *value, size_t length) const {
    if (length == 0 || length > value_size) {
        block.set_bad(i);
        return;
    }
    const auto left = static_cast<size_t>(end_ - value);
    if (left < value_size) [[unlikely]] {
        std::memset(block.copy[i], 0, value_size);
        std::memcpy(block.copy[i], value, left);
        value = block.copy[i];
    }
    block.set(i, value, static_cast<unsigned>(length));
}

void Reader::put_records(Block &block) {
    const ub1 *record = next_;
    for (unsigned i = 0; i < block.count; ++i, record += column_.stride) {
        const bool valid = static_cast<ub1>(record[0] - 1) < max_length;
        block.set(i, valid ? record + 1 : bad_value, valid ? record[0] : 1);
    }
    next_ = record;
}

void Reader::put_prefixed(Block &block) {
    for (unsigned i = 0; i < block.count; ++i) {
        const auto left = static_cast<size_t>(end_ - next_);
        const size_t length = left == 0 ? 0 : *next_;
        if (left <= length) {  // the record is cut, and all that follow are missing
            block.set_bad(i);
            next_ = end_;
            continue;
        }
        put(block, i, next_ + 1, length);
        next_ += length + 1;
    }
}

void Reader::put_spans(Block &block) {
    for (unsigned i = 0; i < block.count; ++i) {
        const Span span = span_at(column_, block.start + i);
        put(block, i, span.data, span.valid ? span.size : 0);
    }
}

bool Reader::next(Block &block) {
    if (row_ == column_.length) return false;
    block.start = row_;
    block.count = static_cast<unsigned>(std::min<size_t>(column_.length - row_, block_rows));
    block.present = present_rows(column_, row_, block.count);
    row_ += block.count;
    switch (column_.form) {
        case OCI_NUMBER_RECORDS: put_records(block); break;
        case OCI_NUMBER_PREFIXED: put_prefixed(block); break;
        default: put_spans(block);
    }
    return true;
}

void Outcome::refuse(unsigned i, Reason reason) {
    if (tally_.refused == 0 && refused_ == 0) {
        tally_.first_refused = start_ + i;
        tally_.reason = reason;
    }
    refused_ |= Rows{1} << i;
}

bool Outcome::end() {
    if (stop_ && refused_ != 0 && status_ == OCI_NUMBER_DONE) status_ = tally_.reason;
    Rows before = ~Rows{0};
    if (status_ != OCI_NUMBER_DONE) {
        before = first_rows(static_cast<unsigned>(tally_.first_refused - start_));
        refused_ = before + 1;
    }
    tally_.values += static_cast<unsigned>(std::popcount(done() & before));
    tally_.refused += static_cast<unsigned>(std::popcount(refused_));
    if (to_ != nullptr && to_->validity != nullptr) {
        write_bits(to_->validity, to_->validity_offset + start_, count_, done());
    }
    return status_ == OCI_NUMBER_DONE;
}

Reason Outcome::finish(Tally *tally, size_t size) {
    tally_.size = size;
    if (tally != nullptr) *tally = tally_;
    return status_;
}

Reason bad_call(Tally *tally) {
    if (tally != nullptr) *tally = {0, 0, 0, OCI_NUMBER_BAD_CALL, 0};
    return OCI_NUMBER_BAD_CALL;
}

bool is_usable(const Column *column, Form first, Form last, Use use) {
    if (column == nullptr || column->form < first || column->form > last) return false;
    const Column &c = *column;
    // Data of a variable size may be left out of an output that is only measured.
    const bool variable = fixed_size(c.form) == 0;
    if (variable && c.data == nullptr) {
        if (c.size != 0) return false;
    } else if (c.data == nullptr && c.length != 0) {
        return false;
    }
    if (has_spans(c.form) && c.offsets == nullptr) {
        const bool measured = use == Use::output && c.data == nullptr;
        if (!measured && (c.length != 0 || use == Use::output)) return false;
    }
    switch (c.form) {
        case OCI_NUMBER_RECORDS:
            return c.stride >= OCI_NUMBER_SIZE || (c.stride == 0 && use == Use::input);
        case OCI_NUMBER_DECIMAL128: return is_decimal_of(c, 38);
        case OCI_NUMBER_DECIMAL256: return is_decimal_of(c, 76);
        default: return true;
    }
}

size_t fixed_size(Form form) {
    switch (form) {
        case OCI_NUMBER_INT64: return sizeof(sb8);
        case OCI_NUMBER_DOUBLE: return sizeof(double);
        case OCI_NUMBER_DECIMAL128: return 16;
        case OCI_NUMBER_DECIMAL256: return 32;
        case OCI_NUMBER_RECORDS:
        case OCI_NUMBER_KEYS: return OCI_NUMBER_SIZE;
        case OCI_NUMBER_ORDER: return sizeof(sb1);
        default: return 0;
    }
}

void clear_rows(ub1 *rows, size_t size, Rows which) {
    for (; which != 0; which &= which - 1) {
        std::memset(rows + size * static_cast<unsigned>(std::countr_zero(which)), 0, size);
    }
}

SpanWriter::SpanWriter(const Column &to) : to_(to), wide_(has_wide_offsets(to.form)) {
    if (has_spans(to.form)) put_offset();
}

bool SpanWriter::put_offset() {
    if (to_.offsets == nullptr) return true;
    auto *const offsets = static_cast<ub1 *>(to_.offsets);
    if (wide_) {
        const auto offset = static_cast<sb8>(size_);
        std::memcpy(offsets + 8 * row_, &offset, sizeof offset);
        return true;
    }
    if (size_ > 0x7FFFFFFF) return false;
    const auto offset = static_cast<sb4>(size_);
    std::memcpy(offsets + 4 * row_, &offset, sizeof offset);
    return true;
}

bool SpanWriter::put(const void *bytes, size_t size) {
    if (to_.data != nullptr) {
        if (size > to_.size - size_) return false;
        if (size > 0) std::memcpy(static_cast<ub1 *>(to_.data) + size_, bytes, size);
    }
    size_ += size;
    ++row_;
    return put_offset();
}

namespace {

// Writes the first `count` bytes of a record, 0 to 22, and zero bytes behind them.
void store_record(const ub1 *from, unsigned count, ub1 *to) {
    using namespace digit_words;
    const Digits &kept = first_digits(count);
    const ub8 last = kept.word[1] << 48 | kept.word[2] >> 16;
    const ub8 words[3] = {load(from) & kept.word[0], load(from + 8) & kept.word[1],
                          load(from + 14) & last};
    store(to, words[0]);
    store(to + 8, words[1]);
    store(to + 14, words[2]);
}

}  // namespace

void NumberWriter::put(const OCINumber *numbers, size_t start, unsigned count, Outcome &outcome) {
    const Rows done = outcome.done();
    auto *const data = static_cast<ub1 *>(to_.data);
    const auto length_of = [&](unsigned i) {
        return (done >> i & 1) != 0 ? unsigned{numbers[i].OCINumberPart[0]} : 0;
    };
    if (to_.form == OCI_NUMBER_RECORDS) {
        ub1 *to = data + start * to_.stride;
        for (unsigned i = 0; i < count; ++i, to += to_.stride) {
            const unsigned length = length_of(i);
            store_record(numbers[i].OCINumberPart, length == 0 ? 0 : length + 1, to);
        }
        return;
    }
    for (unsigned i = 0; i < count; ++i) {
        const ub1 *const number = numbers[i].OCINumberPart;
        const size_t length = length_of(i);
        bool fits = true;
        if (to_.form == OCI_NUMBER_PREFIXED) {
            fits = data == nullptr || length + 1 <= to_.size - size_;
            if (fits && data != nullptr) {
                data[size_] = static_cast<ub1>(length);
                std::memcpy(data + size_ + 1, number + 1, length);
            }
            if (fits) size_ += length + 1;
        } else {
            fits = spans_.put(number + 1, length);
        }
        if (!fits) return outcome.no_room(i);
    }
}

Key key_of(const Row &row) {
    using namespace digit_words;
    // Exponent byte and digit bytes, zeros behind them.
    const Digits &kept = first_digits(row.length);
    return {{load(row.value) & kept.word[0], load(row.value + 8) & kept.word[1],
             (load(row.value + 13) << 24) & kept.word[2]},
            row.length};
}

int compare(const Key &a, const Key &b) {
    for (int i = 0; i < 3; ++i) {
        if (a.word[i] != b.word[i]) return a.word[i] < b.word[i] ? -1 : 1;
    }
    return (a.length > b.length) - (a.length < b.length);
}

}  // namespace columns

using namespace columns;

extern "C" const char *oci_number_reason_text(oci_number_reason reason) {
    switch (reason) {
        case OCI_NUMBER_DONE: return "done";
        case OCI_NUMBER_BAD_CALL: return "arguments that the function does not take";
        case OCI_NUMBER_NO_ROOM: return "no room in the output";
        case OCI_NUMBER_BAD_LENGTH: return "not 1 to 21 bytes";
        case OCI_NUMBER_BAD_DIGITS: return "bytes that are no number";
        case OCI_NUMBER_INFINITE: return "an infinity";
        case OCI_NUMBER_OUT_OF_RANGE: return "too large for the result";
        case OCI_NUMBER_TOO_MANY_PLACES: return "more places behind the point than the scale";
        case OCI_NUMBER_TEXT_TOO_LONG: return "too long as decimal text";
        case OCI_NUMBER_NOT_A_NUMBER: return "not a number";
        case OCI_NUMBER_BAD_TEXT: return "text that is no number";
        case OCI_NUMBER_ZERO_DIVISOR: return "division by zero";
        case OCI_NUMBER_NO_VALUE: return "a calculation without value";
    }
    return "unknown";
}

extern "C" oci_number_reason oci_number_column_slice(const oci_number_column *column, size_t start,
                                                     size_t length, oci_number_column *part) {
    if (column == nullptr || part == nullptr || start > column->length ||
        length > column->length - start) {
        return OCI_NUMBER_BAD_CALL;
    }
    Column c = *column;
    size_t step = c.form == OCI_NUMBER_RECORDS ? c.stride : fixed_size(c.form);
    if (has_spans(c.form)) {
        if (c.offsets != nullptr) {
            c.offsets = static_cast<ub1 *>(c.offsets) + start * (has_wide_offsets(c.form) ? 8 : 4);
        }
    } else if (c.form == OCI_NUMBER_PREFIXED && start != 0) {
        return OCI_NUMBER_BAD_CALL;
    }
    if (c.data != nullptr) c.data = static_cast<ub1 *>(c.data) + start * step;
    c.validity_offset += start;
    c.length = length;
    *part = c;
    return OCI_NUMBER_DONE;
}

extern "C" oci_number_reason oci_number_column_convert(const oci_number_column *from,
                                                       const oci_number_column *to, uword options,
                                                       oci_number_tally *tally) {
    if (!is_option(options) ||
        !is_usable(from, OCI_NUMBER_RECORDS, OCI_NUMBER_TEXT_64, Use::input) ||
        !is_usable(to, OCI_NUMBER_RECORDS, OCI_NUMBER_KEYS, Use::output) ||
        from->length != to->length) {
        return bad_call(tally);
    }
    const auto of_numbers = [](Form form) { return form <= OCI_NUMBER_BYTES_64; };
    if (!of_numbers(from->form)) {
        return of_numbers(to->form) ? from_native(*from, *to, options, tally) : bad_call(tally);
    }
    switch (to->form) {
        case OCI_NUMBER_INT64:
        case OCI_NUMBER_DOUBLE:
        case OCI_NUMBER_DECIMAL128:
        case OCI_NUMBER_DECIMAL256: return to_native(*from, *to, options, tally);
        default: return to_bytes(*from, *to, options, tally);
    }
}
