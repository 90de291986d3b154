// The dispatchers of the functions that the calc engine computes.
#pragma once

#include "oci.h"

namespace oci_number {

// Whole calls, frame included. `index` chooses the engine's function; `check_zero` refuses a
// divisor of zero. A one-parameter index is checked.
sword OCINumberTwoParamMathCall(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                OCINumber *result, ub4 index, boolean check_zero);
sword OCINumberOneParamMathCall(OCIError *err, const OCINumber *number, OCINumber *result,
                                ub4 index);

}  // namespace oci_number
