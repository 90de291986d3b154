// The functions and operators of expressions.
#pragma once

#include <string>
#include <string_view>

#include "library_error.h"

namespace number_tool {

struct Function {
    std::string_view name;
    // As the help shows them, the optional ones in brackets; empty for an operator.
    std::string_view arguments;
    unsigned min_arguments, max_arguments;
    // Leaves the result in values[0].
    bool (*compute)(const LibraryError &error, OCINumber *values, unsigned count);
    // Why there is no result of finite arguments.
    std::string_view refusal;
    bool blames_last = false;  // the refusal is about the last argument
};

const Function *find_function(std::string_view name);

// A function's operators: "+", "<=", and "neg" for the sign.
const Function *find_operator(std::string_view name);

// Computes the function of `count` values, which stand at `values`, and leaves the result in the
// first. Returns false with the reason.
bool apply(const Function &function, const LibraryError &error, OCINumber *values, unsigned count,
           std::string &reason);

// The functions and constants, for help texts.
std::string function_names();

}  // namespace number_tool
