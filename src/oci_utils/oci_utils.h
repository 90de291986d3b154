// Utility services: the decimal text codec, text scanners, error prefixes and
// the thread's identity. All are safe to call from any thread.
#pragma once

#include <pthread.h>

#include "oci.h"
#include "oci_utils/natural.h"
#include "oci_utils/real_bits.h"

extern "C" {

// Writes the canonical decimal text of `number` to `buf`: "-" for a negative
// value, integer digits ("0" when there are none), and "." with fraction digits
// without trailing zeros when there is a fraction. No terminator.
// `*size` is the capacity of `buf` in bytes, and the text's length on success.
// Returns 0, or -1 with `buf` and `*size` untouched when the text does not fit,
// for an infinity, and for bytes that hold no number: a length byte of 0 or
// above 21, no digit bytes, or a digit byte out of range.
sword getStrFromNumber(const OCINumber *number, OraText *buf, ub2 *size);

// Reads the `len` bytes at `str`: leading blanks, an optional "-", digits with
// at most one "." among them and at least one digit. Stores the value in normal
// form; only its meaningful bytes are written. More than 20 base-100 digits are
// rounded once, half away from zero; after that a magnitude below 10^-128 is
// zero.
// Returns 0, or -1 with `*number` untouched for any other text and for a
// magnitude of 10^126 or more.
sword getNumberFromStr(OCINumber *number, ub1 *str, ub4 len);

// Parses an optional sign and decimal digits from `nptr`, no further than
// `*endptr`, stopping at the first other character; `*endptr` is not changed.
// `*error` becomes 0 for a result of 0 or more, -1 for a negative one, 33 when
// there is no digit and 34 outside -9223372036854775808 .. 18446744073709551615
// (the result is 0 then). A result above 9223372036854775807 comes back as its
// unsigned bit pattern.
long long my_strtoll10(const char *nptr, char **endptr, int *error);

// Parses decimal text from `start` up to `end`: an optional "-", digits with at
// most one "." among them, at least one digit, at most 1024 digits from the first
// that is not zero, and at most 1024 behind the ".". Returns the nearest long
// double, ties to even, and sets `*error` to 0; for any other text, and a value outside the
// normal reals of a long double that is as narrow as double, returns 0 and sets `*error` to 1.
long double qz_atold(const char *start, const char *end, int *error);

// Stores the long double nearest to value * 10^exponent, ties to even and normalized, for `value`
// not 0 and an exponent from -128 to 130. Returns false, with nothing stored, for the few values so
// close to the midpoint of two that a product of 128 bits does not tell; qz_atold does, of their
// text.
bool qz_nearest_long_double(natural::ub16 value, int exponent, real_bits::Binary *result);

// Writes to `digits` the first `count` (1 to 20) significant decimal digits of
// mantissa * 2^exponent, rounded to nearest, ties to even, and returns the decimal
// exponent of the first: 7.5 has the digits "750" and the exponent 0. `mantissa`
// is not 0; the value lies in the range of a long double.
int qz_decimal_digits(real_bits::Mantissa mantissa, int exponent, unsigned count, char *digits);

// Prefixes of the interface's error messages.
const char *qzci_oci_prefix(void);
const char *qzci_ora_prefix(void);

// The calling thread's id, as the call traces print it.
pthread_t qz_thread_self(void);

}  // extern "C"
