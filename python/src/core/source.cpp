// Columns that come from Python: Arrow arrays and streams, buffers, sequences.
#include <cstring>
#include <string>

#include "column.h"

namespace {

[[noreturn]] void refuse_type(const std::string &what) {
    throw nb::type_error(("no column of numbers: " + what).c_str());
}

template <class Struct>
Struct *pointer_in(nb::handle capsule, const char *name) {
    void *const pointer = PyCapsule_GetPointer(capsule.ptr(), name);
    if (pointer == nullptr) throw nb::python_error();
    return static_cast<Struct *>(pointer);
}

template <class Value>
Value read(const void *from, size_t index) {
    Value value;
    std::memcpy(&value, static_cast<const ub1 *>(from) + index * sizeof value, sizeof value);
    return value;
}

bool is_valid(const oci_number_column &column, size_t row) {
    const size_t bit = column.validity_offset + row;
    return column.validity == nullptr || (column.validity[bit / 8] >> bit % 8 & 1) != 0;
}

ub1 *writable(const void *memory) { return static_cast<ub1 *>(const_cast<void *>(memory)); }

}  // namespace

Memory allocate(size_t size) {
    Memory memory(static_cast<ub1 *>(std::malloc(size > 0 ? size : 1)));
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

bool is_text(oci_number_form form) {
    return form == OCI_NUMBER_TEXT_32 || form == OCI_NUMBER_TEXT_64;
}
bool has_offsets(oci_number_form form) {
    return is_text(form) || form == OCI_NUMBER_BYTES_32 || form == OCI_NUMBER_BYTES_64;
}

Source::Source(nb::handle object) {
    try {
        if (nb::hasattr(object, "__arrow_c_array__")) {
            const nb::object pair = object.attr("__arrow_c_array__")();
            capsules_ = {pair[0], pair[1]};
            take_array(pointer_in<ArrowSchema>(capsules_[0], "arrow_schema"),
                       pointer_in<ArrowArray>(capsules_[1], "arrow_array"));
        } else if (nb::hasattr(object, "__arrow_c_stream__")) {
            capsules_ = {object.attr("__arrow_c_stream__")()};
            take_stream(pointer_in<ArrowArrayStream>(capsules_[0], "arrow_array_stream"));
        } else if (PyList_Check(object.ptr()) || PyTuple_Check(object.ptr())) {
            take_sequence(object);
        } else if (PyObject_CheckBuffer(object.ptr())) {
            take_buffer(object);
        } else {
            refuse_type(nb::cast<std::string>(nb::str(object.type().attr("__name__"))));
        }
    } catch (...) {
        release();
        throw;
    }
}

Source::~Source() { release(); }

void Source::release() {
    for (ArrowArray &array : arrays_) {
        if (array.release != nullptr) array.release(&array);
    }
    arrays_.clear();
    PyBuffer_Release(&buffer_);
}

size_t Source::length() const {
    size_t length = 0;
    for (const oci_number_column &part : parts_) length += part.length;
    return length;
}

const oci_number_column &Source::part_of(size_t &row) const {
    const auto &parts = joined_.empty() ? parts_ : joined_;
    size_t i = 0;
    while (row >= parts[i].length) row -= parts[i++].length;
    return parts[i];
}

void Source::join() {
    for (const oci_number_column &part : parts_) {
        if (part.form > OCI_NUMBER_BYTES_64) refuse_type("its rows are other values");
    }
    if (parts_.size() == 1) return;
    oci_number_column all = {};
    all.form = OCI_NUMBER_RECORDS;
    all.length = length();
    all.stride = OCI_NUMBER_SIZE;
    memory_.push_back(allocate(all.length * OCI_NUMBER_SIZE));
    all.data = memory_.back().get();
    memory_.push_back(allocate(all.length / 8 + 1));
    all.validity = memory_.back().get();
    const nb::gil_scoped_release release;
    size_t row = 0;
    for (const oci_number_column &part : parts_) {
        oci_number_column to;
        oci_number_column_slice(&all, row, part.length, &to);
        // A row of a length that no number has stays one, for what reads it next.
        oci_number_tally tally;
        oci_number_column_convert(&part, &to, OCI_NUMBER_NULL, &tally);
        for (size_t i = 0; tally.refused > 0 && i < part.length; ++i) {
            const size_t bit = to.validity_offset + i;
            if (is_valid(part, i)) to.validity[bit / 8] |= static_cast<ub1>(1u << bit % 8);
        }
        row += part.length;
    }
    joined_ = std::exchange(parts_, {all});
}

// ---- Arrow

void Source::take_array(const ArrowSchema *schema, const ArrowArray *array) {
    // A table of one column stands for that.
    ArrowArray child;
    if (std::strcmp(schema->format, "+s") == 0) {
        if (schema->n_children != 1 || array->n_children != 1) {
            refuse_type("a table of " + std::to_string(schema->n_children) + " columns");
        }
        if (array->null_count != 0 && array->n_buffers > 0 && array->buffers[0] != nullptr) {
            refuse_type("a struct with nulls of its own");
        }
        child = *array->children[0];
        child.offset += array->offset;
        child.length = array->length;
        if (array->length != array->children[0]->length) child.null_count = -1;
        schema = schema->children[0];
        array = &child;
    }
    if (schema->dictionary != nullptr) refuse_type("a dictionary; cast it to its values");
    const std::string format = schema->format;
    if (format == "vz" || format == "vu") return take_views(*array, format == "vu");
    oci_number_column column;
    if (oci_number_arrow_import(schema, array, &column) != OCI_NUMBER_DONE) {
        refuse_type("Arrow type \"" + format + '"');
    }
    parts_.push_back(column);
}

void Source::take_stream(ArrowArrayStream *stream) {
    ArrowSchema schema = {};
    const auto check = [&](int status) {
        if (status == 0) return;
        const char *const why = stream->get_last_error(stream);
        throw std::runtime_error(why != nullptr ? why : std::strerror(status));
    };
    const auto read_arrays = [&] {
        const nb::gil_scoped_release release;
        check(stream->get_schema(stream, &schema));
        for (;;) {
            ArrowArray array = {};
            check(stream->get_next(stream, &array));
            if (array.release == nullptr) break;
            arrays_.push_back(array);
        }
    };
    try {
        read_arrays();
        for (const ArrowArray &array : arrays_) take_array(&schema, &array);
        // Without rows any form will do.
        if (arrays_.empty()) {
            parts_.emplace_back();
            parts_[0].form = OCI_NUMBER_RECORDS;
            parts_[0].stride = OCI_NUMBER_SIZE;
        }
    } catch (...) {
        if (schema.release != nullptr) schema.release(&schema);
        throw;
    }
    schema.release(&schema);
}

// Views hold up to 12 bytes themselves and tell where more are; the library reads rows that lie
// one behind the other.
void Source::take_views(const ArrowArray &array, bool text) {
    oci_number_column column = {};
    column.form = text ? OCI_NUMBER_TEXT_64 : OCI_NUMBER_BYTES_64;
    column.length = static_cast<size_t>(array.length);
    if (array.null_count != 0) column.validity = writable(array.buffers[0]);
    column.validity_offset = static_cast<size_t>(array.offset);
    const auto *const views = static_cast<const ub1 *>(array.buffers[1]) + 16 * array.offset;
    memory_.push_back(allocate((column.length + 1) * sizeof(sb8)));
    auto *const offsets = reinterpret_cast<sb8 *>(memory_.back().get());
    offsets[0] = 0;
    for (size_t i = 0; i < column.length; ++i) {
        offsets[i + 1] = offsets[i] + (is_valid(column, i) ? read<sb4>(views, 4 * i) : 0);
    }
    column.offsets = offsets;
    column.size = static_cast<size_t>(offsets[column.length]);
    memory_.push_back(allocate(column.size));
    column.data = memory_.back().get();
    for (size_t i = 0; i < column.length; ++i) {
        const auto size = static_cast<size_t>(offsets[i + 1] - offsets[i]);
        const ub1 *from = views + 16 * i + 4;
        if (size > 12) {
            from = static_cast<const ub1 *>(array.buffers[2 + read<sb4>(views, 4 * i + 2)]) +
                   read<sb4>(views, 4 * i + 3);
        }
        std::memcpy(memory_.back().get() + offsets[i], from, size);
    }
    parts_.push_back(column);
}

// ---- Buffers and sequences

void Source::take_buffer(nb::handle object) {
    if (PyObject_GetBuffer(object.ptr(), &buffer_, PyBUF_RECORDS_RO) != 0) {
        throw nb::python_error();
    }
    const std::string format = buffer_.format != nullptr ? buffer_.format : "B";
    oci_number_column column = {};
    column.data = buffer_.buf;
    column.length = buffer_.ndim > 0 ? static_cast<size_t>(buffer_.shape[0]) : 0;
    const Py_ssize_t item = buffer_.itemsize;
    if (buffer_.ndim == 2 && item == 1 && buffer_.shape[1] == 22 &&
        (buffer_.strides[1] == 1 || column.length == 0)) {
        column.form = OCI_NUMBER_RECORDS;
    } else if (buffer_.ndim == 1 && item == 22) {
        column.form = OCI_NUMBER_RECORDS;
    } else if (buffer_.ndim == 1 && item == 8 && (format == "l" || format == "q")) {
        column.form = OCI_NUMBER_INT64;
    } else if (buffer_.ndim == 1 && format == "d") {
        column.form = OCI_NUMBER_DOUBLE;
    } else {
        refuse_type("a buffer of " + std::to_string(buffer_.ndim) + " dimensions of \"" + format +
                    '"');
    }
    const Py_ssize_t size = column.form == OCI_NUMBER_RECORDS ? 22 : item;
    const Py_ssize_t stride = column.length > 1 ? buffer_.strides[0] : size;
    if (stride < size || (stride != size && column.form != OCI_NUMBER_RECORDS)) {
        refuse_type("a buffer with a stride of " + std::to_string(stride) + " bytes");
    }
    column.stride = static_cast<size_t>(stride);
    parts_.push_back(column);
}

void Source::take_sequence(nb::handle object) {
    oci_number_column column = {};
    column.form = OCI_NUMBER_RECORDS;
    column.length = nb::len(object);
    column.stride = OCI_NUMBER_SIZE;
    memory_.push_back(allocate(column.length * OCI_NUMBER_SIZE));
    auto *records = memory_.back().get();
    column.data = records;
    memory_.push_back(allocate(column.length / 8 + 1));
    column.validity = memory_.back().get();
    std::memset(column.validity, 0, column.length / 8 + 1);
    for (size_t i = 0; i < column.length; ++i, records += OCI_NUMBER_SIZE) {
        const nb::object item = object[i];
        if (item.is_none()) continue;
        if (!is_operand(item)) refuse_type("item " + std::to_string(i));
        const OCINumber bytes = Operand{item}.value().bytes();
        std::memcpy(records, &bytes, sizeof bytes);
        column.validity[i / 8] |= static_cast<ub1>(1u << i % 8);
    }
    parts_.push_back(column);
}
