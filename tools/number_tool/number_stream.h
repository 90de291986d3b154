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

    Summary convert(Output &out);
    // Each thread makes its own function.
    Summary compute(const std::function<NumberFunction()> &make_function, Output &out);

private:
    Operation conversion() const;
    Operation computation(NumberFunction function) const;
};

}  // namespace number_tool
