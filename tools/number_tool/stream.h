// The stream that every command runs on: values come in, an operation turns each
// into a result or refuses it, and results go to standard output in the order of the
// values. Memory is constant.
#pragma once

#include <functional>
#include <limits>
#include <map>
#include <string>
#include <string_view>

#include "fields.h"
#include "input.h"
#include "output.h"

namespace number_tool {

// The longest result of one value.
inline constexpr size_t max_result = 8192;

// One value, alone or as a field of a line.
struct Value {
    std::string_view text;
    const Fields *line;
    size_t field;  // from 1; 0 when the value is a whole line
};

// Converts one value: writes its result, at most max_result bytes, at `out` and returns the
// result's end. Returns nullptr to refuse the value, with what is wrong with it in `reason`.
using Operation = std::function<char *(const Value &value, char *out, std::string &reason)>;

// What becomes of a refused value.
enum class OnError {
    fail,  // it is left out, and the status is 1
    skip,  // it is left out
    keep,  // it stays as it is
    null,  // a text takes its place
};

// Where results go when values are fields of lines.
enum class ResultPlace {
    in_line,  // into the line, in place of the values
    alone,    // without the rest of the line
    nowhere,  // there are none
};

struct StreamOptions {
    Inputs inputs;
    Framing framing = Framing::lines;
    ResultPlace results = ResultPlace::in_line;
    bool ends_results = true;  // with a line end, or a zero byte when values end with one

    // Columns: the fields that are values; the rest of the line stays.
    FieldList fields;
    Dialect dialect;
    bool has_header = false;     // the first line of each file; that of the first file stays
    bool reads_columns = false;  // the operation looks at the fields of the line

    OnError on_error = OnError::fail;
    std::string null_text;
    size_t max_errors = std::numeric_limits<size_t>::max();
    bool is_quiet = false;

    unsigned jobs = 1;
    bool has_progress = true;
};

struct Summary {
    size_t values = 0;
    size_t refused = 0;
    std::map<size_t, size_t> refused_of_field;
    // A value was refused that must not be, or a file could not be read.
    bool failed = false;

    int status() const { return failed ? 1 : 0; }
};

// Runs an operation over all inputs; each thread makes its own. What is refused or cannot be read
// is named on standard error. Throws OutputClosed, OutputFailed and MessagesClosed.
Summary for_each_value(const StreamOptions &options,
                       const std::function<Operation()> &make_operation, Output &out);

}  // namespace number_tool
