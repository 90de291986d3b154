// Columns as Arrow arrays and back, by the structs of the Arrow C data interface.
#include "oci_number_arrow.h"

#include <cstdio>

#include "oci_number_column/column.h"

namespace columns {

namespace {

// Types of one letter, and the one of records.
struct Type {
    const char *format;
    Form form;
};
constexpr Type types[] = {
    {"w:22", OCI_NUMBER_RECORDS}, {"z", OCI_NUMBER_BYTES_32}, {"Z", OCI_NUMBER_BYTES_64},
    {"l", OCI_NUMBER_INT64},      {"g", OCI_NUMBER_DOUBLE},   {"u", OCI_NUMBER_TEXT_32},
    {"U", OCI_NUMBER_TEXT_64},    {"w:22", OCI_NUMBER_KEYS},  {"c", OCI_NUMBER_ORDER},
};

// The next integer of a decimal's format, behind its first character; moves on behind it.
bool read_integer(const char *&format, sb4 &value) {
    const bool negative = *++format == '-';
    if (negative) ++format;
    const char *const digits = format;
    value = 0;
    while (*format >= '0' && *format <= '9' && format - digits < 4) {
        value = 10 * value + (*format++ - '0');
    }
    if (negative) value = -value;
    return format != digits;
}

// Form, precision and scale by the format.
bool read_format(const char *format, Column &column) {
    if (format[0] == 'd') {
        if (*++format != ':' || !read_integer(format, column.precision) || *format != ',' ||
            !read_integer(format, column.scale)) {
            return false;
        }
        sb4 bits = 128;
        if (*format == ',' && !read_integer(format, bits)) return false;
        column.form = bits == 256 ? OCI_NUMBER_DECIMAL256 : OCI_NUMBER_DECIMAL128;
        return *format == '\0' && (bits == 128 || bits == 256);
    }
    for (const Type &type : types) {
        if (std::strcmp(format, type.format) == 0) {
            column.form = type.form;
            return type.form != OCI_NUMBER_ORDER;
        }
    }
    return false;
}

bool is_decimal(Form form) {
    return form == OCI_NUMBER_DECIMAL128 || form == OCI_NUMBER_DECIMAL256;
}

void *writable(const void *memory) { return const_cast<void *>(memory); }

// Both structs have one owner; the last to be released releases it.
void release(oci_number_arrow_owner *owner) {
    const auto call = owner->release;
    void *const context = owner->context;
    if (__atomic_sub_fetch(&owner->alive, 1, __ATOMIC_ACQ_REL) == 0 && call != nullptr) {
        call(context);
    }
}
void release_schema(ArrowSchema *schema) {
    schema->release = nullptr;
    release(static_cast<oci_number_arrow_owner *>(schema->private_data));
}
void release_array(ArrowArray *array) {
    array->release = nullptr;
    release(static_cast<oci_number_arrow_owner *>(array->private_data));
}

}  // namespace

}  // namespace columns

using namespace columns;

extern "C" oci_number_reason oci_number_arrow_import(const ArrowSchema *schema,
                                                     const ArrowArray *array,
                                                     oci_number_column *column) {
    Column c = {};
    if (schema == nullptr || array == nullptr || column == nullptr || schema->release == nullptr ||
        array->release == nullptr || schema->format == nullptr || !read_format(schema->format, c) ||
        schema->dictionary != nullptr || array->length < 0 || array->offset < 0) {
        return OCI_NUMBER_BAD_CALL;
    }
    const bool spans = has_spans(c.form);
    if (array->n_buffers != (spans ? 3 : 2) || array->buffers == nullptr) {
        return OCI_NUMBER_BAD_CALL;
    }
    const auto length = static_cast<size_t>(array->length);
    const size_t start = length == 0 ? 0 : static_cast<size_t>(array->offset);
    c.length = start + length;
    if (array->null_count != 0) {
        c.validity = static_cast<ub1 *>(writable(array->buffers[0]));
    }
    c.stride = OCI_NUMBER_SIZE;
    if (spans) {
        c.offsets = writable(array->buffers[1]);
        c.data = writable(array->buffers[2]);
        // Without a byte of data there may be none, without rows no offset.
        if (length != 0 && c.offsets != nullptr && c.data != nullptr) {
            c.size = offset_at(c.offsets, has_wide_offsets(c.form), c.length);
        }
    } else {
        c.data = writable(array->buffers[1]);
    }
    if (!is_usable(&c, OCI_NUMBER_RECORDS, OCI_NUMBER_TEXT_64, Use::input)) {
        return OCI_NUMBER_BAD_CALL;
    }
    return oci_number_column_slice(&c, start, length, column);
}

extern "C" oci_number_reason oci_number_arrow_export(const oci_number_column *column, sb8 nulls,
                                                     oci_number_arrow_owner *owner,
                                                     ArrowSchema *schema, ArrowArray *array) {
    if (owner == nullptr || schema == nullptr || array == nullptr ||
        !is_usable(column, OCI_NUMBER_RECORDS, OCI_NUMBER_ORDER, Use::output) || nulls < -1 ||
        column->length > ~ub8{0} >> 1 || column->validity_offset % 8 != 0 ||
        (column->form == OCI_NUMBER_RECORDS && column->stride != OCI_NUMBER_SIZE) ||
        (column->data == nullptr && column->length != 0)) {
        return OCI_NUMBER_BAD_CALL;
    }
    const char *format = nullptr;
    for (const Type &type : types) {
        if (type.form == column->form) format = type.format;
    }
    if (is_decimal(column->form)) {
        std::snprintf(owner->format, sizeof owner->format,
                      column->form == OCI_NUMBER_DECIMAL256 ? "d:%d,%d,256" : "d:%d,%d",
                      column->precision, column->scale);
        format = owner->format;
    }
    if (format == nullptr) return OCI_NUMBER_BAD_CALL;
    owner->alive = 2;
    const bool spans = has_spans(column->form);
    owner->buffers[0] =
        column->validity == nullptr ? nullptr : column->validity + column->validity_offset / 8;
    owner->buffers[1] = spans ? column->offsets : column->data;
    owner->buffers[2] = column->data;
    *schema = {format,         "",   nullptr, ARROW_FLAG_NULLABLE, 0, nullptr, nullptr,
               release_schema, owner};
    *array = {static_cast<int64_t>(column->length),
              column->validity == nullptr ? 0 : nulls,
              0,
              spans ? 3 : 2,
              0,
              owner->buffers,
              nullptr,
              nullptr,
              release_array,
              owner};
    return OCI_NUMBER_DONE;
}
