// Expressions over the library's functions.
//
//   sum      = product { ("+" | "-") product }
//   product  = sign { ("*" | "/" | "%") sign }
//   sign     = "-" sign | power
//   power    = value [ "^" sign ]              right to left: 2^3^2 is 2^9
//   value    = number | name | name "(" sum { "," sum } ")" | "(" sum ")"
//   number   = decimal digits with at most one period [ "e" [ "+" | "-" ] digits ]
#pragma once

#include <string>
#include <string_view>

#include "library_error.h"

namespace number_tool {

// Computes the value of an expression. Returns false with the reason and the
// column (counted from 1) where it went wrong.
bool evaluate(std::string_view expression, const LibraryError &err, OCINumber &result,
              std::string &reason);

// The functions and constants, for help texts: a line each.
std::string expression_names();

}  // namespace number_tool
