// Columns for tests: rows of numbers in each form, in memory that ends at an unreadable page.
#pragma once

#include <memory>

#include "oci_number_column.h"
#include "support/guard_page.h"
#include "support/numbers.h"
#include "support/values.h"

using Rows = std::vector<OCINumber>;
using Present = std::vector<bool>;

inline constexpr oci_number_form number_forms[] = {OCI_NUMBER_RECORDS, OCI_NUMBER_PREFIXED,
                                                   OCI_NUMBER_BYTES_32, OCI_NUMBER_BYTES_64};

inline bool is_wide(oci_number_form form) {
    return form == OCI_NUMBER_BYTES_64 || form == OCI_NUMBER_TEXT_64;
}

// A column and its memory. Bits of the bitmap that are no row's are 1, and checked.
class TestColumn {
public:
    // For reading: `data` as it lies there.
    TestColumn(oci_number_form form, const std::vector<std::string> &rows, const Present &present,
               size_t bit_offset = 0) {
        std::string data;
        std::vector<size_t> offsets = {0};
        for (const std::string &row : rows) offsets.push_back((data += row).size());
        init(form, rows.size(), bit_offset);
        column.size = data.size();
        column.data = keep(data.data(), data.size());
        set_offsets(offsets);
        for (size_t i = 0; i < rows.size(); ++i) set_bit(i, present[i]);
    }

    // For writing, with so many bytes of data.
    TestColumn(oci_number_form form, size_t rows, size_t size, size_t bit_offset = 0) {
        init(form, rows, bit_offset);
        const std::string data(size, static_cast<char>(unused));
        column.size = size;
        column.data = keep(data.data(), size);
        set_offsets(std::vector<size_t>(rows + 1, 99));
        for (size_t i = 0; i < rows; ++i) set_bit(i, i % 3 == 0);
    }

    bool is_present(size_t i) const {
        const size_t bit = column.validity_offset + i;
        return column.validity[bit / 8] >> bit % 8 & 1;
    }
    const char *at(size_t byte) const { return static_cast<const char *>(column.data) + byte; }
    size_t offset(size_t i) const {
        const auto *offsets = static_cast<const char *>(column.offsets);
        if (is_wide(column.form)) {
            sb8 offset;
            std::memcpy(&offset, offsets + 8 * i, sizeof offset);
            return static_cast<size_t>(offset);
        }
        sb4 offset;
        std::memcpy(&offset, offsets + 4 * i, sizeof offset);
        return static_cast<size_t>(offset);
    }
    std::string span(size_t i) const { return {at(offset(i)), offset(i + 1) - offset(i)}; }

    // The rows of numbers as records' bytes, without what stands behind a value.
    std::vector<Bytes> numbers() const {
        std::vector<Bytes> rows;
        size_t byte = 0;
        for (size_t i = 0; i < column.length; ++i) {
            std::string row;
            if (column.form == OCI_NUMBER_RECORDS || column.form == OCI_NUMBER_PREFIXED) {
                const char *record = at(byte);
                row = {record, static_cast<size_t>(static_cast<ub1>(*record)) + 1};
                byte += column.form == OCI_NUMBER_RECORDS ? column.stride : row.size();
            } else {
                row = span(i);
                row.insert(0, 1, static_cast<char>(row.size()));
            }
            rows.push_back({});
            for (const char c : row) rows.back().push_back(static_cast<ub1>(c));
        }
        return rows;
    }

    void expect_other_bits_kept() const {
        for (size_t bit = 0; bit < 8 * bitmap_size; ++bit) {
            const size_t row = bit - column.validity_offset;
            if (row >= column.length) {
                EXPECT_TRUE(column.validity[bit / 8] >> bit % 8 & 1) << "bit " << bit;
            }
        }
    }

    oci_number_column column = {};

private:
    void init(oci_number_form form, size_t rows, size_t bit_offset) {
        column.form = form;
        column.length = rows;
        column.stride = OCI_NUMBER_SIZE;
        column.validity_offset = bit_offset;
        bitmap_size = (bit_offset + rows + 7) / 8;
        const std::string ones(bitmap_size, '\xFF');
        column.validity = static_cast<ub1 *>(keep(ones.data(), ones.size()));
    }
    void set_bit(size_t i, bool value) {
        const size_t bit = column.validity_offset + i;
        const auto mask = static_cast<ub1>(1u << bit % 8);
        ub1 &byte = column.validity[bit / 8];
        byte = static_cast<ub1>(value ? byte | mask : byte & ~mask);
    }
    void set_offsets(const std::vector<size_t> &from) {
        const std::vector<sb8> wide(from.begin(), from.end());
        const std::vector<sb4> narrow(from.begin(), from.end());
        column.offsets = is_wide(column.form) ? keep(wide.data(), 8 * wide.size())
                                              : keep(narrow.data(), 4 * narrow.size());
    }
    void *keep(const void *bytes, size_t size) {
        memory_.push_back(std::make_unique<GuardedBytes>(bytes, size));
        return memory_.back()->address();
    }

    size_t bitmap_size;
    std::vector<std::unique_ptr<GuardedBytes>> memory_;
};

// The bytes of a number in a form, as scalar functions see them: what stands behind the value is
// there in records only.
inline std::string row_of(oci_number_form form, const OCINumber &n) {
    const auto *bytes = reinterpret_cast<const char *>(&n);
    if (form == OCI_NUMBER_RECORDS) return {bytes, sizeof n};
    const size_t length = std::min<size_t>(n.OCINumberPart[0], 21);
    return form == OCI_NUMBER_PREFIXED ? std::string(bytes, length + 1)
                                       : std::string(bytes + 1, length);
}

inline TestColumn column_of(oci_number_form form, const Rows &rows, const Present &present,
                            size_t bit_offset = 0) {
    std::vector<std::string> texts;
    for (const OCINumber &n : rows) texts.push_back(row_of(form, n));
    return TestColumn(form, texts, present, bit_offset);
}

// Numbers of all kinds: values of every size, integers, zeros, infinities, other forms than the
// normal one, bytes that are no number.
inline OCINumber random_number(Random &random) {
    const auto finite = [&](int count, int top) {
        return number(random_value(random, count, top).bytes());
    };
    switch (random() % 12) {
        case 0: return number({1, 128});
        case 1: return random() % 2 ? number({1, 0}) : number({2, 255, 101});
        case 2: return finite(between(random, 1, 40), between(random, -128, 125));
        case 3: {  // any bytes, sometimes of any length
            OCINumber n;
            for (ub1 &b : n.OCINumberPart) b = static_cast<ub1>(random() % 103);
            n.OCINumberPart[0] = static_cast<ub1>(random() % 24);
            n.OCINumberPart[1] = static_cast<ub1>(random());
            return n;
        }
        case 4: {  // zero digits at either end
            OCINumber n = finite(between(random, 1, 12), between(random, -8, 12));
            const ub1 zero = n.OCINumberPart[1] < 128 ? 101 : 1;
            ub1 &length = n.OCINumberPart[0];
            if (random() % 2) {
                for (unsigned i = length; i >= 2; --i) n.OCINumberPart[i + 1] = n.OCINumberPart[i];
                n.OCINumberPart[2] = zero;
            } else if (n.OCINumberPart[length] == 102) {
                n.OCINumberPart[length] = zero;
                n.OCINumberPart[length + 1] = 102;
            } else {
                n.OCINumberPart[length + 1] = zero;
            }
            ++length;
            return n;
        }
        case 5: {  // near the ends of 64 bits
            const Decimal limit(random() % 2 ? "9223372036854775808" : "18446744073709551616");
            return number(
                (random() % 2 ? limit : limit.negated()).plus(between(random, -2, 2)).bytes());
        }
        case 6: return finite(between(random, 15, 40), between(random, -18, 2));
        case 7: {  // at, and next to, the midpoint of two doubles
            const int halvings = between(random, 0, 15);
            mpz_class units = (mpz_class(1) << 53) + random() % (1UL << 53);
            units = 2 * units + 1;
            for (int i = 0; i < halvings; ++i) units *= 5;
            const Decimal midpoint(units, -halvings);
            return number(midpoint.shifted(15).plus(between(random, -1, 1)).shifted(-15).bytes());
        }
        default: {
            const int count = between(random, 1, 18);
            return finite(count, between(random, -3, count));
        }
    }
}

struct RandomRows {
    Rows rows;
    Present present;
    RandomRows(Random &random, size_t count, bool all_present) {
        for (size_t i = 0; i < count; ++i) {
            rows.push_back(random_number(random));
            present.push_back(all_present || random() % 4 != 0);
        }
    }
};
