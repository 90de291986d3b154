// Decimal text as people write it: blanks and tabs around, a sign, digits with at most one period,
// an exponent. "1.5", "+2", "-2.5E-3".
#pragma once

#include <string>
#include <string_view>

#include "oci.h"

namespace number_tool {

struct DecimalText {
    bool negative = false;
    std::string_view integer, fraction;  // digits
    long exponent = 0;                   // cut to what no digits make up for
};

// Takes the text apart. `strict` allows what the library's texts may have: blanks in front, "-" and
// no exponent. False with a reason, whose columns count from `column` on.
bool scan_decimal(std::string_view text, bool strict, size_t column, DecimalText &parts,
                  std::string &reason);

// The number of the text, rounded once. False when its magnitude is 1E126 or more.
bool number_of(const DecimalText &parts, OCINumber &number);

}  // namespace number_tool
