// Private header of the columns: what comes in, whatever exports it.
#pragma once

#include <oci_number_arrow.h>

#include <memory>
#include <utility>
#include <vector>

#include "core.h"

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE
struct ArrowArrayStream {
    int (*get_schema)(ArrowArrayStream *, ArrowSchema *out);
    int (*get_next)(ArrowArrayStream *, ArrowArray *out);
    const char *(*get_last_error)(ArrowArrayStream *);
    void (*release)(ArrowArrayStream *);
    void *private_data;
};
#endif

// Memory without initial value, which the library fills.
struct Free {
    void operator()(ub1 *memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<ub1[], Free>;
Memory allocate(size_t size);

bool is_text(oci_number_form form);
bool has_offsets(oci_number_form form);

// The rows of a Python object, where they are, as columns one behind the other. Lives and dies
// with the GIL held; the columns may be read without.
class Source {
public:
    // Takes what exports the Arrow C interface, one or many arrays, or a buffer; a list or tuple
    // of numbers is copied.
    explicit Source(nb::handle object);
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;
    ~Source();

    const std::vector<oci_number_column> &parts() const { return parts_; }
    size_t length() const;
    // The part of a row as it was given, which becomes the row in it.
    const oci_number_column &part_of(size_t &row) const;
    // Makes one part of all, which hold numbers.
    void join();

private:
    void release();
    void take_array(const ArrowSchema *schema, const ArrowArray *array);
    void take_stream(ArrowArrayStream *stream);
    void take_views(const ArrowArray &array, bool text);
    void take_buffer(nb::handle object);
    void take_sequence(nb::handle object);

    std::vector<oci_number_column> parts_;
    std::vector<oci_number_column> joined_;  // what was made one part of
    std::vector<nb::object> capsules_;
    std::vector<ArrowArray> arrays_;
    std::vector<Memory> memory_;
    Py_buffer buffer_ = {};
};
