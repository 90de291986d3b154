// The forms in which the tool reads and writes numbers.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "faults.h"
#include "oci.h"

namespace number_tool {

enum class Form {
    text,  // canonical decimal text; infinities are ~ and -~. Read are also exponents, "+", blanks
           // and tabs around.
    strict_text,  // read only without them
    hex,          // the meaningful bytes from the length byte on: 03C20218
    list,         // as print_number lists bytes: Len=3: 194,2,24
    raw,          // 22-byte records
    sortable,     // hex of what the length byte counts, in normal form: its order is the numbers'
};

inline constexpr const char *byte_forms = "hex|list|raw|sortable";
inline constexpr const char *all_forms = "text|hex|list|raw|sortable";

const std::map<std::string, Form> &form_names();

// Where a byte list begins, behind any words in front of it; npos when there is none.
size_t find_list(std::string_view value);

// Reads the bytes of a value, whatever they mean; of decimal text, those of its
// number. Returns false with a reason when there are none to be had.
bool read_bytes(Form form, std::string_view value, GivenBytes &given, std::string &reason);

// The same, but malformed bytes are refused: `given.number` is a number then.
bool read_number(Form form, std::string_view value, GivenBytes &given, std::string &reason);

// Writes a well-formed number at `out`, with a line end except after a record,
// and returns the end; nullptr with a reason when it cannot be written.
char *write_number(Form form, const OCINumber &number, char *out, std::string &reason);

}  // namespace number_tool
