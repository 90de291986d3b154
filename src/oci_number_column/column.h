// Private header of the columns: rows in blocks of 64, whatever the column's form; what
// became of them; where results go.
#pragma once

#include <bit>
#include <cstring>

#include "number_bytes.h"
#include "oci_number_column.h"

namespace columns {

using Column = oci_number_column;
using Form = oci_number_form;
using Reason = oci_number_reason;
using Tally = oci_number_tally;

// A bit for each row of a block.
using Rows = ub8;
inline constexpr unsigned block_rows = 64;
constexpr Rows first_rows(unsigned count) {
    return count == block_rows ? ~Rows{0} : (Rows{1} << count) - 1;
}

// What follows a length byte: `length` bytes, 1 to 21, and 21 that may be read.
inline constexpr unsigned value_size = OCI_NUMBER_MAX_VALUE;
struct Row {
    const ub1 *value;
    unsigned length;
};

// Stands for a row of no valid length: not zero, no digits.
inline constexpr ub1 bad_value[value_size] = {1};
inline bool is_bad(const Row &row) { return row.value == bad_value; }

inline OCINumber number_of(const Row &row) {
    OCINumber n;
    n.OCINumberPart[0] = static_cast<ub1>(row.length);
    std::memcpy(n.OCINumberPart + 1, row.value, value_size);
    return n;
}

// Why a row that no conversion takes is refused.
Reason reason_of(const Row &row);

// Consecutive rows of a column. Only those that are present may be looked at.
struct Block {
    size_t start;
    unsigned count;
    Rows present;
    const ub1 *value[block_rows];
    ub1 length[block_rows];
    ub1 copy[block_rows][value_size];  // of values so near the end that 21 bytes are not there

    Row row(unsigned i) const { return {value[i], length[i]}; }
    void set(unsigned i, const ub1 *at, unsigned bytes) {
        value[i] = at;
        length[i] = static_cast<ub1>(bytes);
    }
    void set_bad(unsigned i) { set(i, bad_value, 1); }
};

// Which of the rows from `start` on are not null.
Rows present_rows(const Column &column, size_t start, unsigned count);

// The position in a column's offsets or data.
ub8 offset_at(const void *offsets, bool wide, size_t index);
inline bool has_wide_offsets(Form form) {
    return form == OCI_NUMBER_BYTES_64 || form == OCI_NUMBER_TEXT_64;
}
// Forms whose rows lie between offsets.
inline bool has_spans(Form form) {
    return form == OCI_NUMBER_BYTES_32 || form == OCI_NUMBER_TEXT_32 || has_wide_offsets(form);
}
// From offset to offset, where that lies in the column's data.
struct Span {
    const ub1 *data;
    size_t size;
    bool valid;
};
Span span_at(const Column &column, size_t index);

// Hands out the rows of a column of numbers, in blocks.
class Reader {
public:
    explicit Reader(const Column &column)
        : column_(column), next_(static_cast<const ub1 *>(column.data)), end_(next_) {
        if (column.form != OCI_NUMBER_RECORDS && column.size > 0) end_ += column.size;
    }
    // False when there are no more.
    bool next(Block &block);

private:
    void put_records(Block &block);
    void put_prefixed(Block &block);
    void put_spans(Block &block);
    void put(Block &block, unsigned i, const ub1 *value, size_t length) const;

    const Column &column_;
    const ub1 *next_;
    const ub1 *end_;
    size_t row_ = 0;
};

// Counts rows, writes the output's bitmap, and knows when to stop.
class Outcome {
public:
    // `to` may be null.
    Outcome(const Column *to, size_t length, uword options)
        : to_(to), stop_(options == OCI_NUMBER_STOP), tally_{0, 0, length, OCI_NUMBER_DONE, 0} {}

    void begin(size_t start, unsigned count, Rows present) {
        start_ = start;
        count_ = count;
        present_ = present;
        refused_ = 0;
    }
    void refuse(unsigned i, Reason reason);
    // The data is full at this row of the block.
    void no_room(unsigned i) {
        refuse(i, OCI_NUMBER_NO_ROOM);
        status_ = OCI_NUMBER_NO_ROOM;
    }
    Rows done() const { return present_ & ~refused_; }
    // False when the call ends here.
    bool end();

    Reason finish(Tally *tally, size_t size = 0);

private:
    const Column *to_;
    bool stop_;
    Tally tally_;
    Reason status_ = OCI_NUMBER_DONE;
    size_t start_ = 0;
    unsigned count_ = 0;
    Rows present_ = 0;
    Rows refused_ = 0;
};

// Refuses a call.
Reason bad_call(Tally *tally);

// Whether a column describes what can be read, or written, in a form from `first` to `last`.
enum class Use { input, output };
bool is_usable(const Column *column, Form first, Form last, Use use);
inline bool holds_numbers(const Column *column, Use use) {
    return is_usable(column, OCI_NUMBER_RECORDS, OCI_NUMBER_BYTES_64, use);
}
inline bool is_option(uword options) {
    return options == OCI_NUMBER_NULL || options == OCI_NUMBER_STOP;
}

// The bytes of one row of an output of fixed size; 0 for others.
size_t fixed_size(Form form);

// Sets rows to zero bytes.
void clear_rows(ub1 *rows, size_t size, Rows which);

// Appends spans to a column of bytes or text.
class SpanWriter {
public:
    explicit SpanWriter(const Column &to);
    // False when there is no room.
    bool put(const void *bytes, size_t size);
    size_t size() const { return size_; }

private:
    bool put_offset();

    const Column &to_;
    bool wide_;
    size_t row_ = 0;
    size_t size_ = 0;
};

// Writes the numbers of a block, where they are done, to a column of numbers.
class NumberWriter {
public:
    explicit NumberWriter(const Column &to) : to_(to), spans_(to) {}
    void put(const OCINumber *numbers, size_t start, unsigned count, Outcome &outcome);
    size_t size() const { return to_.form == OCI_NUMBER_PREFIXED ? size_ : spans_.size(); }

private:
    const Column &to_;
    SpanWriter spans_;
    size_t size_ = 0;  // of prefixed records
};

// The conversions, by the form that is not one of numbers.
Reason to_native(const Column &from, const Column &to, uword options, Tally *tally);
Reason to_bytes(const Column &from, const Column &to, uword options, Tally *tally);
Reason from_native(const Column &from, const Column &to, uword options, Tally *tally);

// The value of a row as three words whose order is that of OCINumberCmp, and its length, which
// decides between equal words.
struct Key {
    ub8 word[3];
    unsigned length;
};
Key key_of(const Row &row);
int compare(const Key &a, const Key &b);

}  // namespace columns
