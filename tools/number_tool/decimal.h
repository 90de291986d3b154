// Decimal text as people have it, to numbers.
#pragma once

#include <string>
#include <string_view>

#include "oci.h"

namespace number_tool {

// Reads blanks and tabs, a sign, digits with at most one period among them, an exponent, blanks
// and tabs; or ~ for infinity. Strict text has only blanks in front, "-", and digits with a
// period. Returns false with the reason and the column (counted from 1) where it is wrong.
bool read_decimal(std::string_view text, bool is_strict, OCINumber &number, std::string &reason);

// Reads digits with at most one period among them and an exponent from the start of `text`.
// `length` becomes how many bytes they are, and a magnitude of 1E126 or more infinity. Returns
// false with the reason and the place where it is wrong, counted from 0.
bool read_magnitude(std::string_view text, size_t &length, OCINumber &number, std::string &reason,
                    size_t &wrong_at);

// " at column N" of the byte with this index.
std::string at_column(size_t index);

// Takes zero digits away from both ends.
void normalize(OCINumber &number);

}  // namespace number_tool
