// Expressions over the library's functions.
//
//   comparison = sum [ ("<" | "<=" | ">" | ">=" | "==" | "!=") sum ]
//   sum      = product { ("+" | "-") product }
//   product  = sign { ("*" | "/" | "%") sign }
//   sign     = "-" sign | power
//   power    = value [ "^" sign ]              right to left: 2^3^2 is 2^9
//   value    = number | "~" | "$" digits | name | name "(" list ")" | "(" comparison ")"
//   list     = comparison { "," comparison }
//   number   = decimal digits with at most one period [ "e" [ "+" | "-" ] digits ]
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fields.h"
#include "functions.h"
#include "library_error.h"

namespace number_tool {

using Variables = std::map<std::string, OCINumber, std::less<>>;

// Whether the text is a name that a variable may have.
bool is_free_name(std::string_view text);

// An expression, read once and computed for each line.
class Expression {
public:
    // Returns false with the reason and the column (counted from 1) where it is wrong.
    bool read(std::string_view text, const Variables &variables, const LibraryError &error,
              std::string &reason);

    // Whether it has a field of the line, "$2", in it.
    bool reads_columns() const { return reads_columns_; }

    // Computes the value; `line` has the fields that the expression reads.
    bool compute(const Fields *line, const LibraryError &error, OCINumber &result,
                 std::string &reason);

private:
    friend class ExpressionReader;

    // Steps work on a stack: a constant or a field is put on it, a function takes its arguments
    // from it and leaves the result.
    struct Step {
        const Function *function = nullptr;
        unsigned arguments = 0;
        OCINumber constant{};
        size_t field = 0;  // from 1; 0 for a constant
        size_t place = 0;  // in the text, for messages
    };

    bool put_field(const Step &step, const Fields *line, std::string &reason);

    std::vector<Step> steps_;
    bool reads_columns_ = false;
    std::vector<OCINumber> stack_;
    std::string scratch_;
};

}  // namespace number_tool
