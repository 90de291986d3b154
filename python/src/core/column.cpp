// Column: what the functions on whole columns return; the calls of these functions.
#include "column.h"

#include <cstring>
#include <stdexcept>

namespace {

// The memory of a column. Released by whoever holds it last, without Python.
struct Storage {
    oci_number_column column = {};
    size_t nulls = 0;
    Memory data, offsets, validity;
};

struct Column {
    std::shared_ptr<Storage> storage;
    const oci_number_column &get() const { return storage->column; }
};

// ---- Export

// An export holds the storage until both of its structs are released.
struct Export {
    oci_number_arrow_owner owner;
    std::shared_ptr<Storage> storage;
};

template <class Struct>
nb::object capsule_of(const Struct &content, const char *name) {
    auto *const copy = new Struct(content);
    PyObject *const capsule = PyCapsule_New(copy, name, [](PyObject *self) {
        auto *const held =
            static_cast<Struct *>(PyCapsule_GetPointer(self, PyCapsule_GetName(self)));
        if (held->release != nullptr) held->release(held);
        delete held;
    });
    if (capsule == nullptr) throw nb::python_error();
    return nb::steal(capsule);
}

nb::tuple export_array(const Column &column, nb::handle) {
    auto *const kept = new Export{{}, column.storage};
    kept->owner.context = kept;
    kept->owner.release = [](void *context) { delete static_cast<Export *>(context); };
    ArrowSchema schema;
    ArrowArray array;
    if (oci_number_arrow_export(&column.get(), static_cast<sb8>(column.storage->nulls),
                                &kept->owner, &schema, &array) != OCI_NUMBER_DONE) {
        delete kept;
        throw std::runtime_error("a column without Arrow type");
    }
    return nb::make_tuple(capsule_of(schema, "arrow_schema"), capsule_of(array, "arrow_array"));
}

nb::dict export_buffer(const Column &column) {
    const char *type = nullptr;
    switch (column.get().form) {
        case OCI_NUMBER_RECORDS:
        case OCI_NUMBER_KEYS: type = "|S22"; break;
        case OCI_NUMBER_INT64: type = "<i8"; break;
        case OCI_NUMBER_DOUBLE: type = "<f8"; break;
        case OCI_NUMBER_ORDER: type = "|i1"; break;
        // As an attribute that is missing it would end up in an array of one object.
        default: throw nb::type_error("a column without NumPy type");
    }
    if (column.storage->nulls > 0) throw nb::value_error("a column with nulls is no NumPy array");
    nb::dict interface;
    interface["shape"] = nb::make_tuple(column.get().length);
    interface["typestr"] = type;
    interface["data"] = nb::make_tuple(reinterpret_cast<size_t>(column.get().data), true);
    interface["version"] = 3;
    return interface;
}

// ---- Outputs

Column make_output(oci_number_form form, size_t length, sb4 precision = 0, sb4 scale = 0) {
    auto storage = std::make_shared<Storage>();
    oci_number_column &column = storage->column;
    column.form = form;
    column.precision = precision;
    column.scale = scale;
    column.length = length;
    column.stride = OCI_NUMBER_SIZE;
    size_t row_size = 0;
    switch (form) {
        case OCI_NUMBER_RECORDS:
        case OCI_NUMBER_KEYS: row_size = OCI_NUMBER_SIZE; break;
        case OCI_NUMBER_INT64:
        case OCI_NUMBER_DOUBLE: row_size = 8; break;
        case OCI_NUMBER_DECIMAL128: row_size = 16; break;
        case OCI_NUMBER_DECIMAL256: row_size = 32; break;
        case OCI_NUMBER_ORDER: row_size = 1; break;
        default: break;
    }
    if (has_offsets(form)) {
        storage->offsets = allocate((length + 1) * 8);
        column.offsets = storage->offsets.get();
    } else {
        storage->data = allocate(length * row_size);
        column.data = storage->data.get();
    }
    storage->validity = allocate(length / 8 + 1);
    std::memset(storage->validity.get(), 0, length / 8 + 1);
    column.validity = storage->validity.get();
    return {storage};
}

Column finish(Column column, size_t values) {
    Storage &storage = *column.storage;
    storage.nulls = storage.column.length - values;
    if (storage.nulls == 0) {
        storage.validity.reset();
        storage.column.validity = nullptr;
    }
    return column;
}

// ---- Refused rows

nb::object bytes_of(const oci_number_column &column, size_t row) {
    const auto *const data = static_cast<const ub1 *>(column.data);
    size_t start = 0, size = 0;
    switch (column.form) {
        case OCI_NUMBER_RECORDS: {
            start = row * column.stride;
            size = data[start] <= 21 ? data[start] + size_t{1} : OCI_NUMBER_SIZE;
            break;
        }
        case OCI_NUMBER_DECIMAL128:
            size = 16;
            start = 16 * row;
            break;
        case OCI_NUMBER_DECIMAL256:
            size = 32;
            start = 32 * row;
            break;
        case OCI_NUMBER_INT64:
        case OCI_NUMBER_DOUBLE:
            size = 8;
            start = 8 * row;
            break;
        default: {
            const bool wide =
                column.form == OCI_NUMBER_BYTES_64 || column.form == OCI_NUMBER_TEXT_64;
            const auto offset = [&](size_t i) {
                sb8 at = 0;
                sb4 narrow = 0;
                const auto *const from = static_cast<const ub1 *>(column.offsets);
                if (wide) return std::memcpy(&at, from + 8 * i, 8), at;
                return std::memcpy(&narrow, from + 4 * i, 4), sb8{narrow};
            };
            const sb8 first = offset(row), end = offset(row + 1);
            if (first < 0 || end < first || static_cast<size_t>(end) > column.size) break;
            start = static_cast<size_t>(first);
            size = static_cast<size_t>(end - first);
        }
    }
    return nb::bytes(size > 0 ? data + start : nullptr, size);
}

// Where a call ended, and why.
struct Outcome {
    size_t values = 0;
    size_t row = 0;
    oci_number_reason reason = OCI_NUMBER_DONE;

    // Takes what became of a part that begins at a row; false when the call ends there.
    bool add(size_t start, oci_number_reason status, const oci_number_tally &tally) {
        values += tally.values;
        reason = status;
        row = start + tally.first_refused;
        return status == OCI_NUMBER_DONE;
    }
    void check(std::initializer_list<const Source *> sources) const {
        if (reason == OCI_NUMBER_DONE) return;
        if (reason == OCI_NUMBER_BAD_CALL)
            throw nb::type_error("a column that the call does not take");
        if (reason == OCI_NUMBER_NO_ROOM) {
            throw std::overflow_error("more than 2 GiB: take a large type");
        }
        nb::list operands;
        bool text = false;
        for (const Source *source : sources) {
            size_t at = row;
            const oci_number_column &part = source->part_of(at);
            operands.append(bytes_of(part, at));
            text = is_text(part.form);
        }
        const nb::object type = nb::module_::import_("oci_number._errors").attr("RowError");
        const nb::object error =
            type(row, oci_number_reason_text(reason), nb::tuple(operands), text);
        PyErr_SetObject(type.ptr(), error.ptr());
        throw nb::python_error();
    }
};

// Calls `function(part, start, tally)` for the parts of a source, without the GIL.
template <class Function>
Outcome for_parts(const Source &source, Function function) {
    const nb::gil_scoped_release release;
    Outcome outcome;
    size_t start = 0;
    for (const oci_number_column &part : source.parts()) {
        oci_number_tally tally = {};
        const oci_number_reason status = function(part, start, tally);
        if (!outcome.add(start, status, tally)) break;
        start += part.length;
    }
    return outcome;
}

uword options(bool stop) { return stop ? OCI_NUMBER_STOP : OCI_NUMBER_NULL; }

// ---- Functions

Column convert(nb::handle object, int form, int precision, int scale, bool stop) {
    Source source(object);
    const auto to_form = static_cast<oci_number_form>(form);
    if (has_offsets(to_form)) source.join();
    const Column output = make_output(to_form, source.length(), precision, scale);
    Storage &storage = *output.storage;
    const Outcome outcome = for_parts(
        source, [&](const oci_number_column &part, size_t start, oci_number_tally &tally) {
            if (!has_offsets(to_form)) {
                oci_number_column to;
                oci_number_column_slice(&storage.column, start, part.length, &to);
                return oci_number_column_convert(&part, &to, options(stop), &tally);
            }
            // Once for the size.
            oci_number_reason status =
                oci_number_column_convert(&part, &storage.column, options(stop), &tally);
            if (status != OCI_NUMBER_DONE) return status;
            storage.data = allocate(tally.size);
            storage.column.data = storage.data.get();
            storage.column.size = tally.size;
            return oci_number_column_convert(&part, &storage.column, options(stop), &tally);
        });
    outcome.check({&source});
    return finish(output, outcome.values);
}

// Every row of a column is one number when it is given as that.
oci_number_column constant(const OCINumber &number, size_t length) {
    oci_number_column column = {};
    column.form = OCI_NUMBER_RECORDS;
    column.length = length;
    column.data = const_cast<OCINumber *>(&number);
    return column;
}

Column calculate(int operation, nb::handle a, nb::handle b, int places, bool stop) {
    const auto which = static_cast<oci_number_operation>(operation);
    const nb::handle objects[] = {a, b};
    std::unique_ptr<Source> sources[2];
    OCINumber numbers[2] = {};
    size_t length = 0, columns = 0;
    for (int i = 0; i < 2; ++i) {
        if (objects[i].is_none()) continue;
        if (is_operand(objects[i])) {
            numbers[i] = Operand{objects[i]}.value().bytes();
            continue;
        }
        sources[i] = std::make_unique<Source>(objects[i]);
        // Parts of two columns need not begin at the same rows.
        if (!b.is_none()) sources[i]->join();
        if (columns++ > 0 && length != sources[i]->length()) {
            throw nb::value_error("columns of different lengths");
        }
        length = sources[i]->length();
    }
    if (columns == 0) throw nb::type_error("no column among the operands");
    const Column output =
        make_output(which == OCI_NUMBER_CMP ? OCI_NUMBER_ORDER : OCI_NUMBER_RECORDS, length);
    const Source &walked = sources[0] ? *sources[0] : *sources[1];
    const Outcome outcome = for_parts(
        walked, [&](const oci_number_column &part, size_t start, oci_number_tally &tally) {
            oci_number_column to;
            oci_number_column_slice(&output.get(), start, part.length, &to);
            oci_number_column first = sources[0] ? part : constant(numbers[0], part.length);
            oci_number_column second =
                sources[1] ? sources[1]->parts()[0] : constant(numbers[1], part.length);
            return oci_number_column_calculate(which, &first, b.is_none() ? nullptr : &second,
                                               places, &to, options(stop), &tally);
        });
    if (outcome.reason != OCI_NUMBER_DONE) {
        sources[0] && sources[1] ? outcome.check({sources[0].get(), sources[1].get()})
                                 : outcome.check({&walked});
    }
    return finish(output, outcome.values);
}

oci::number sum(nb::handle object, bool stop) {
    const Source source(object);
    oci_number_sum total;
    oci_number_sum_start(&total);
    for_parts(source, [&](const oci_number_column &part, size_t, oci_number_tally &tally) {
        return oci_number_sum_add(&total, &part, options(stop), &tally);
    }).check({&source});
    oci::number result;
    oci_number_sum_value(&total, &result.bytes());
    return result;
}

// Count, least and greatest.
nb::tuple extremes(nb::handle object, bool stop) {
    const Source source(object);
    oci::number least, greatest;
    size_t values = 0;
    for_parts(source, [&](const oci_number_column &part, size_t, oci_number_tally &tally) {
        oci::number low, high;
        const oci_number_reason status =
            oci_number_column_extremes(&part, &low.bytes(), &high.bytes(), options(stop), &tally);
        if (tally.values > 0) {
            if (values == 0 || low < least) least = low;
            if (values == 0 || high > greatest) greatest = high;
        }
        values += tally.values;
        return status;
    }).check({&source});
    if (values == 0) return nb::make_tuple(0, nb::none(), nb::none());
    return nb::make_tuple(values, oci::add(least, 0), oci::add(greatest, 0));
}

}  // namespace

void bind_column(nb::module_ &module) {
    nb::class_<Column> type(
        module, "Column", nb::is_final(),
        "The result of a function on whole columns. Its memory is handed on without a copy: to\n"
        "what takes the Arrow PyCapsule interface, such as pyarrow.array and polars.Series, and,\n"
        "without nulls and of a type that NumPy has, to numpy.asarray. Its functions take it, "
        "too.");
    type.def("__len__", [](const Column &column) { return column.get().length; });
    type.def_prop_ro(
        "null_count", [](const Column &column) { return column.storage->nulls; },
        "How many rows are null.");
    type.def("__arrow_c_array__", export_array, nb::arg("requested_schema") = nb::none(),
             nb::sig("def __arrow_c_array__(self, requested_schema: object | None = None) -> "
                     "tuple[object, object]"),
             "The capsules of an ArrowSchema and an ArrowArray.");
    type.def_prop_ro("__array_interface__", export_buffer,
                     nb::sig("def __array_interface__(self) -> dict[str, object]"),
                     "What numpy.asarray asks for.");

    const auto object = nb::arg("object");
    module.def("convert", convert, object, nb::arg("form"), nb::arg("precision"), nb::arg("scale"),
               nb::arg("stop"), "oci_number_column_convert.");
    module.def("calculate", calculate, nb::arg("operation"), nb::arg("a"), nb::arg("b").none(),
               nb::arg("places"), nb::arg("stop"), "oci_number_column_calculate.");
    module.def("sum", sum, object, nb::arg("stop"), "oci_number_sum_add and _value.");
    module.def("extremes", extremes, object, nb::arg("stop"),
               nb::sig("def extremes(object: object, stop: bool) -> "
                       "tuple[int, Number | None, Number | None]"),
               "oci_number_column_extremes.");
}
