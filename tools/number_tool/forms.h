// The forms in which the tool reads and writes numbers.
#pragma once

#include <string>
#include <string_view>

#include "faults.h"
#include "oci.h"

namespace number_tool {

enum class Form {
    text,      // canonical decimal text; infinities are ~ and -~
    hex,       // the meaningful bytes from the length byte on: 03C20218
    list,      // as print_number lists bytes: Len=3: 194,2,24
    raw,       // 22-byte records
    base64,    // the bytes of hex
    digits,    // hex of the exponent byte and the digit bytes alone: C20218
    sortable,  // hex of the bytes behind the length byte, whose order is that of the values
    json,      // text and hex as an object; written only
};

// The names of the forms, text first and json last.
struct FormName {
    std::string_view name;
    Form form;
};
inline constexpr FormName form_names[] = {
    {"text", Form::text},         {"hex", Form::hex},       {"list", Form::list},
    {"raw", Form::raw},           {"base64", Form::base64}, {"digits", Form::digits},
    {"sortable", Form::sortable}, {"json", Form::json},
};
// The name of old of a list.
inline constexpr FormName old_list_name = {"dump", Form::list};

// Where a byte list begins, behind any words in front of it; npos when there is none.
size_t find_list(std::string_view value);

// How numbers are read.
struct Reading {
    Form form = Form::text;
    bool is_strict = false;  // decimal text without exponent, "+" and blanks behind
};

// Reads the bytes of a value, whatever they mean; of decimal text, those of its
// number. Returns false with a reason when there are none to be had.
bool read_bytes(const Reading &reading, std::string_view value, GivenBytes &given,
                std::string &reason);

// The number of a value; null when there is none, also because its bytes are malformed. It stands
// in `room`, or in the value itself when that is a record: bytes just copied are slow to read.
const OCINumber *read_number(const Reading &reading, std::string_view value, OCINumber &room,
                             std::string &reason);

// Writes the decimal text of a record at `out` and returns the end; nullptr when the record is
// malformed or an infinity. What the codec checks anyway is not looked at twice.
char *write_record_text(std::string_view record, char *out);

// Writes a well-formed number at `out` and returns the end; nullptr with a reason
// when it cannot be written.
char *write_number(Form form, const OCINumber &number, char *out, std::string &reason);

}  // namespace number_tool
