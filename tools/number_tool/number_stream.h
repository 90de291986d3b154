// A stream of numbers: read in one form, changed by a function, written in another.
#pragma once

#include <functional>
#include <string>

#include "forms.h"
#include "options.h"
#include "stream.h"

namespace number_tool {

// Computes a number from a number; returns false with the reason when there is none.
using NumberFunction =
    std::function<bool(const OCINumber &number, OCINumber &result, std::string &reason)>;

struct NumberStream {
    StreamOptions stream;
    Reading from;
    Form to = Form::text;

    // Each thread makes its own function; an empty one leaves the numbers as they are.
    Summary run(const std::function<NumberFunction()> &make_function, Output &out);
};

}  // namespace number_tool
