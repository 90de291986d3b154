/* The number interface: OCINumber values, the functions on them, and the two
 * handles that they need.
 *
 * Compiles alone as C99 and as C++. A first program:
 *
 *   #include <oci.h>
 *   #include <stdio.h>
 *
 *   int main(void) {
 *       OCIEnv *env;
 *       OCIError *err;
 *       OCINumber n;
 *       int value = -123, back;
 *       if (OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL)) return 1;
 *       if (OCIHandleAlloc(env, (void **)&err, OCI_HTYPE_ERROR, 0, NULL)) return 1;
 *       if (OCINumberFromInt(err, &value, sizeof value, OCI_NUMBER_SIGNED, &n)) return 1;
 *       if (OCINumberToInt(err, &n, sizeof back, OCI_NUMBER_SIGNED, &back)) return 1;
 *       printf("%d\n", back);
 *       OCIHandleFree(env, OCI_HTYPE_ENV);
 *       return 0;
 *   }
 *
 * CONVENTIONS, for every OCINumber function
 *
 * Arguments are checked in the order of the parameters; they are numbered from
 * 1, the error handle being argument 1. The first failure ends the call.
 *
 *   err null          OCI_INVALID_HANDLE; nothing is written. Null is all that is
 *                     tested: a failure writes into any other pointer.
 *   a null pointer    OCI_ERROR, error 21560 naming the argument.
 *   a number whose    OCI_ERROR, error 22060 naming the argument: the length
 *   length byte is    byte is 0 (an uninitialised number) or above 21. It is
 *   not 1 to 21       tested right after the number's own null test.
 *
 * No other byte of a number is validated. Whatever its bytes hold, no function
 * reads or writes beyond its 22 bytes.
 *
 * A result is written only when the status is OCI_SUCCESS. A failure writes the
 * error number and message into `err` (OCIErrorGet reads them); a success
 * leaves there what was there before. A message has the form "OCI-21560: text";
 * some end with a line feed. The number 602 stands for failures without a
 * number of the interface; their messages have no prefix.
 *
 * Calls and results are traced in the log at level DEBUG, most failures at ERROR
 * (OCINumberToText logs its own mostly at DEBUG); see oci_number_log.h.
 *
 * Threads: the functions keep no state and take no lock. Any number of threads
 * may call them at once, each with an error handle and result of its own.
 * Results do not depend on the locale, errno, or what the floating-point unit is
 * set to: rounding mode, flushing of denormals, precision. */
#ifndef OCI_H
#define OCI_H

#include <stddef.h>

#include "oratypes.h"

/* The version that a program is compiled with, in numbers and as text. Versions of the same
 * major number, 0 too, are compatible: a program that was built with one runs with every later
 * one, and compiles with it. */
#define OCI_NUMBER_VERSION_MAJOR 0
#define OCI_NUMBER_VERSION_MINOR 1
#define OCI_NUMBER_VERSION_PATCH 0
#define OCI_NUMBER_QUOTED(number) #number
#define OCI_NUMBER_DOTTED(major, minor, patch) \
    OCI_NUMBER_QUOTED(major) "." OCI_NUMBER_QUOTED(minor) "." OCI_NUMBER_QUOTED(patch)
#define OCI_NUMBER_VERSION \
    OCI_NUMBER_DOTTED(OCI_NUMBER_VERSION_MAJOR, OCI_NUMBER_VERSION_MINOR, OCI_NUMBER_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/* The version that a program runs with, as text: "0.1.0". A constant; any thread may ask. */
OCI_NUMBER_API const char *oci_number_version(void);

/* ---- Numbers ------------------------------------------------------------ */

#define OCI_NUMBER_SIZE 22

/* A signed decimal value of up to 40 significant digits, or an infinity.
 *
 *   byte 0            length byte: how many bytes of the value follow, 1 to 21
 *   byte 1            exponent byte: 193 + E, or 62 - E for a negative value,
 *                     where 100^E is the weight of the first digit byte
 *   byte 2 and on     digit bytes, base 100: digit + 1, or 101 - digit for a
 *                     negative value
 *   after these       the ending byte 102, for a negative value with fewer
 *                     than 20 digit bytes; the length byte counts it
 *
 * Zero is 1, 128; positive infinity 2, 255, 101; negative infinity 1, 0. Bytes
 * beyond the length byte's count are not part of the value. */
typedef struct OCINumber {
    ub1 OCINumberPart[OCI_NUMBER_SIZE];
} OCINumber;

/* Statuses. */
#define OCI_SUCCESS 0
#define OCI_NO_DATA 100
#define OCI_ERROR (-1)
#define OCI_INVALID_HANDLE (-2)

/* Sign flags of the integer conversions. */
#define OCI_NUMBER_UNSIGNED 0
#define OCI_NUMBER_SIGNED 2

/* ---- Handles ------------------------------------------------------------ */

/* The four functions here recognise a handle that is not alive by its first byte:
 * one of another type, and one that was freed as long as no more than 255 others of
 * its type were freed after it. Later its memory is another handle's, or the
 * program's: a second free then may free a handle of somebody else. Pointers to
 * anything else are not recognised. Outside the contract, and a data race, is a
 * handle (an environment as parent, too) that one thread frees and another uses
 * without knowing of it. */

/* The environment: parent of the error handles. */
typedef struct OCIEnv OCIEnv;

/* Takes the error number and message of a failed call. Concurrent calls must
 * not share one. */
typedef struct OCIError OCIError;

#define OCI_DEFAULT 0 /* mode of OCIEnvCreate */

#define OCI_HTYPE_ENV 1   /* handle type of an OCIEnv */
#define OCI_HTYPE_ERROR 2 /* handle type of an OCIError */

/* Longest message in an error handle in bytes, without its terminator. */
#define OCI_ERROR_MAXMSG_SIZE2 3072

/* Creates an environment handle and stores it at `envp`.
 * `mode` and the four memory arguments of the interface (`ctxp`, `malocfp`,
 * `ralocfp`, `mfreefp`) are accepted and not used. When `xtramem_sz` is not 0
 * and `usrmempp` not null, `*usrmempp` receives that many bytes of the
 * program's own, which live as long as the handle.
 * Returns OCI_SUCCESS; OCI_INVALID_HANDLE when `envp` is null; OCI_ERROR when
 * there is no memory (`*envp` is then unchanged). Safe from any thread. */
OCI_NUMBER_API sword OCIEnvCreate(OCIEnv **envp, ub4 mode, void *ctxp,
                                  void *(*malocfp)(void *ctxp, size_t size),
                                  void *(*ralocfp)(void *ctxp, void *memptr, size_t newsize),
                                  void (*mfreefp)(void *ctxp, void *memptr), size_t xtramem_sz,
                                  void **usrmempp);

/* Creates a handle of `type` under the environment `parenth` and stores it at
 * `hndlpp`. Only OCI_HTYPE_ERROR can be allocated. `xtramem_sz` and `usrmempp`
 * are as in OCIEnvCreate.
 * Returns OCI_SUCCESS; OCI_INVALID_HANDLE when `parenth` is not a live
 * environment, `hndlpp` is null or `type` is another; OCI_ERROR when there is
 * no memory. `*hndlpp` is written only on success. Safe from any thread. */
OCI_NUMBER_API sword OCIHandleAlloc(const void *parenth, void **hndlpp, const ub4 type,
                                    const size_t xtramem_sz, void **usrmempp);

/* Frees a handle of `type`: OCI_HTYPE_ERROR, or OCI_HTYPE_ENV with all error
 * handles under it.
 * Returns OCI_SUCCESS; OCI_INVALID_HANDLE when `hndlp` is null or is not a live
 * handle of that type, or `type` is another. Safe from any thread. */
OCI_NUMBER_API sword OCIHandleFree(void *hndlp, const ub4 type);

/* Reads the last error from the error handle `hndlp`.
 * `recordno` counts from 1; a handle holds one record. `sqlstate` may be null;
 * otherwise it receives the terminated SQL state (6 bytes), which the number
 * functions leave empty. `*errcodep` receives the error number. `bufp` (may be
 * null) receives the terminated message, at most `bufsiz` bytes with it.
 * `type` must be OCI_HTYPE_ERROR.
 * Returns OCI_SUCCESS; OCI_NO_DATA when there is no such record; OCI_ERROR when
 * the message was cut to fit; OCI_INVALID_HANDLE when `hndlp` is not a live
 * error handle, `errcodep` is null or `type` is another. */
OCI_NUMBER_API sword OCIErrorGet(void *hndlp, ub4 recordno, OraText *sqlstate, sb4 *errcodep,
                                 OraText *bufp, ub4 bufsiz, ub4 type);

/* ---- Inspection, comparison, copy, constants ---------------------------- */

/* Stores 1 in `*result` when `number` is zero, else 0; an infinity is not zero.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberIsZero(OCIError *err, const OCINumber *number, boolean *result);

/* Stores 1 in `*result` when `number` has no fraction, else 0; an infinity is
 * not an integer.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2). A length byte of 1 with an
 * exponent byte other than 0 and 128 is OCI_ERROR with a line in the log and
 * nothing in `err`. */
OCI_NUMBER_API sword OCINumberIsInt(OCIError *err, const OCINumber *number, boolean *result);

/* Stores -1, 0 or 1 in `*result`, the sign of `number`; infinities have signs.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberSign(OCIError *err, const OCINumber *number, sword *result);

/* Stores in `*result` a negative value when `number1` is below `number2`, a
 * positive one when it is above, 0 when both are equal. Only the sign carries
 * meaning. The bytes are compared: equal values are found equal when they are
 * stored alike, as all values in normal form are (first and last digit byte not
 * zero). OCINumberFromInt writes 100 with a zero digit byte at its end; in that
 * form it compares above the normal form of 100.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3). */
OCI_NUMBER_API sword OCINumberCmp(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  sword *result);

/* Copies all 22 bytes of `from` to `to`, which may be the same record.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberAssign(OCIError *err, const OCINumber *from, OCINumber *to);

/* Sets `number` to zero; only its first two bytes are written.
 * A null `err` is logged and the number still written. Error: 21560 (argument
 * 2), when `err` is not null. */
OCI_NUMBER_API void OCINumberSetZero(OCIError *err, OCINumber *number);

/* Sets `number` to pi, rounded to 38 decimal places; writes all 22 bytes.
 * A null `err` is logged and the number still written. Error: 21560 (argument
 * 2), when `err` is not null. */
OCI_NUMBER_API void OCINumberSetPi(OCIError *err, OCINumber *number);

/* ---- Sign and decimal shift --------------------------------------------- */

/* Stores the magnitude of `number` in `result`, which may be the same record.
 * Either infinity gives positive infinity.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberAbs(OCIError *err, const OCINumber *number, OCINumber *result);

/* Stores the negation of `number` in `result`, which may be the same record. The
 * infinities turn into each other; zero has no sign.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberNeg(OCIError *err, const OCINumber *number, OCINumber *result);

/* Stores `number` times 10^`nDig` in `result`, which may be the same record.
 * `nDig` may be negative and is never refused. The product is exact but in one
 * case: an odd `nDig` moves 40 decimal digits across 20 digit bytes, and what a
 * 21st would hold is rounded half away from zero. An even `nDig` keeps the digit
 * bytes as they are, an odd one leaves no zero digit bytes at the end.
 * A magnitude of 10^126 or more becomes the infinity of that sign, one below
 * 10^-128 zero, both with OCI_SUCCESS. Zero and the infinities stay.
 * Errors: 21560 (argument 2, 4), 22060 (argument 2).
 *
 *   OCINumberShift(err, &n, -2, &n);    1 becomes 0.01 */
OCI_NUMBER_API sword OCINumberShift(OCIError *err, const OCINumber *number, const sword nDig,
                                    OCINumber *result);

/* ---- Increment and decrement -------------------------------------------- */

/* Adds 1 to `number` in place when it is at least 1 and below 10^40; the result
 * is in normal form, and one that needs more than 20 digit bytes (a value with a
 * fraction that grows by a digit byte) is rounded half away from zero. Every
 * other value, zero, negative values and the infinities included, becomes 1.
 * Errors: 21560, 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberInc(OCIError *err, OCINumber *number);

/* Subtracts 1 from `number` in place when it is at least 1 and below 10^40; the
 * result is in normal form. Every other value, negative values and the
 * infinities included, becomes zero.
 * Errors: 21560, 22060 (argument 2). */
OCI_NUMBER_API sword OCINumberDec(OCIError *err, OCINumber *number);

/* ---- Precision, rounding, truncation ------------------------------------ */

/* These three store `number`, cut at a decimal position, in `result`, which may
 * be the same record. Rounding is half away from zero: 12.5 becomes 13, -12.5
 * becomes -13. The count is never refused: a cut behind the last digit gives a
 * copy of all 22 bytes, one above the first digit zero. A value that a carry
 * takes to 10^126 becomes the infinity of its sign.
 *
 * The infinities are cut as the digit bytes that they are stored as: negative
 * infinity stays for every position from 10^126 down, positive infinity likewise
 * (truncated at 10^126 it becomes zero); a cut further up gives zero.
 *
 * One negative value is unlike its positive mirror: OCINumberPrec and
 * OCINumberRound return a negative value of 20 digit bytes unchanged when the cut
 * falls on its last digit byte. Rounded to 37 places,
 *    12.34567890123456789012345678901234567895 becomes
 *    12.3456789012345678901234567890123456790, but
 *   -12.34567890123456789012345678901234567895 stays.
 *
 * Errors: 21560 (argument 2, 4), 22060 (argument 2). */

/* Rounds to `nDigs` significant decimal digits; 0 leaves the place above the
 * first digit (5 becomes 10, 4 zero), a negative `nDigs` gives zero. */
OCI_NUMBER_API sword OCINumberPrec(OCIError *err, const OCINumber *number, sword nDigs,
                                   OCINumber *result);

/* Rounds to `dcplace` decimal places; a negative `dcplace` rounds to tens (-1),
 * hundreds (-2) and so on. A negative value of 20 digit bytes stays, as above, when
 * the cut falls on its last. */
OCI_NUMBER_API sword OCINumberRound(OCIError *err, const OCINumber *number, sword dcplace,
                                    OCINumber *result);

/* Keeps `dcplace` decimal places, or whole tens, hundreds and so on for a
 * negative `dcplace`, and drops the rest. */
OCI_NUMBER_API sword OCINumberTrunc(OCIError *err, const OCINumber *number, sword dcplace,
                                    OCINumber *result);

/* ---- Integers ----------------------------------------------------------- */

/* Stores the integer part of `number` (truncated toward zero) at `rsl` as an
 * integer of `rsl_length` bytes (1, 2, 4 or 8) in the machine's byte order,
 * signed when `rsl_flag` is OCI_NUMBER_SIGNED, unsigned when it is
 * OCI_NUMBER_UNSIGNED. `rsl` need not be aligned.
 * Errors, in the order of the tests (all with OCI_ERROR):
 *   602    `number` or `rsl` null, or another `rsl_flag`
 *   22053  an infinity
 *   1458   the number has no text of 44 characters or fewer, which happens for
 *          values with more digits before or after the point than that (1E-50,
 *          1E60), or it is not a well-formed number (a length byte of 0 or
 *          above 21 included)
 *   602    a negative number (-0.5 too) into an unsigned integer
 *   22053  outside -9223372036854775808 .. 18446744073709551615
 *   22057  another `rsl_length`
 *   602    outside the range of the result
 *
 *   ub2 port;
 *   OCINumberToInt(err, &n, sizeof port, OCI_NUMBER_UNSIGNED, &port); */
OCI_NUMBER_API sword OCINumberToInt(OCIError *err, const OCINumber *number, uword rsl_length,
                                    uword rsl_flag, void *rsl);

/* Stores in `number` the exact value of the integer of `inum_length` bytes
 * (1, 2, 4 or 8) at `inum`, signed or unsigned by `inum_s_flag`. `inum` need not
 * be aligned. Zero digit pairs at the end are kept as digit bytes (100 becomes
 * 3, 194, 2, 1); bytes beyond the value are left as they were.
 * Errors: 21560 (argument 2; 3 when `inum_length` is 0; 4 for another
 * `inum_s_flag`; 5), 22057 for another `inum_length`. */
OCI_NUMBER_API sword OCINumberFromInt(OCIError *err, const void *inum, uword inum_length,
                                      uword inum_s_flag, OCINumber *number);

/* ---- Calculation -------------------------------------------------------- */

/* For finite operands every result is the exact mathematical value, rounded
 * once, half away from zero, to the 20 base-100 digits that a number holds: 39
 * or 40 decimal digits, as the pairs are aligned on the decimal point. Results
 * are in normal form. A magnitude of 10^126 or more after rounding is the
 * infinity of that sign, one below 10^-128 is zero; both are successes.
 *
 * Operands are taken at their value, in normal form or not (but for the domain of
 * OCINumberArcSin and OCINumberArcCos, see there). `result` may be an
 * operand; it is written after the last operand was read, and only on success
 * (all 22 bytes may be, whatever the length of the value).
 *
 * Errors of every function here, besides those it names:
 *   21560  a null pointer (each function lists the arguments)
 *   22060  a number whose length byte is not 1 to 21
 *   602    the calculation refused its operands: bytes that are no digits, and
 *          the operands named below. The message is "OCINumberAdd call
 *          QZCICalcFunc error" with the function's name and the failed step.
 *
 *   OCINumberDiv(err, &one, &three, &third);
 *   OCINumberMul(err, &third, &three, &almost_one);  0.999..., 40 digits
 */

/* number1 + number2 and number1 - number2.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3), 602 for a difference
 * of infinities. */
OCI_NUMBER_API sword OCINumberAdd(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  OCINumber *result);
OCI_NUMBER_API sword OCINumberSub(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  OCINumber *result);

/* number1 times number2.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3), 602 for zero times an
 * infinity. */
OCI_NUMBER_API sword OCINumberMul(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  OCINumber *result);

/* number1 divided by number2. A finite number divided by an infinity is zero.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3), 22056 for a zero
 * number2 (the message quotes number1; no line in the log), 602 for a quotient
 * of infinities. */
OCI_NUMBER_API sword OCINumberDiv(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  OCINumber *result);

/* The remainder of number1 divided by number2: number1 - t * number2 with the
 * quotient truncated to the integer t. It has the sign of number1 and is exact
 * for any operands. Modulo an infinity, number1 is the remainder.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3), 22056 for a zero
 * number2 (as OCINumberDiv), 602 for an infinite number1. */
OCI_NUMBER_API sword OCINumberMod(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  OCINumber *result);

/* `base` to the power `number`; exact where the result can be represented.
 * Anything to the power zero is 1.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3), 602 for a negative
 * base with an exponent that is no integer and for zero to a negative power. */
OCI_NUMBER_API sword OCINumberPower(OCIError *err, const OCINumber *base, const OCINumber *number,
                                    OCINumber *result);

/* `base` to the power `exp`, any integer.
 * Errors: 21560 (argument 2, 4), 22060 (argument 2), 602 for zero to a negative
 * power ("OCINumberIntPower call QZCICalcFunc error"). */
OCI_NUMBER_API sword OCINumberIntPower(OCIError *err, const OCINumber *base, const sword exp,
                                       OCINumber *result);

/* The logarithm of `number` to the base `base`: base 10 of 1000 is 3. To the
 * base 1 it is positive infinity for numbers from 1 on, else negative infinity.
 * Both must be positive; they may be infinite, but not both.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3; also for zero and
 * below), 602 (the messages name OCINumberLn and the failed step). */
OCI_NUMBER_API sword OCINumberLog(OCIError *err, const OCINumber *base, const OCINumber *number,
                                  OCINumber *result);

/* e to the power `number`, and the natural logarithm.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2; OCINumberLn also for zero),
 * 602 for the logarithm of a negative number. */
OCI_NUMBER_API sword OCINumberExp(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberLn(OCIError *err, const OCINumber *number, OCINumber *result);

/* The square root.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2; also for a negative number). */
OCI_NUMBER_API sword OCINumberSqrt(OCIError *err, const OCINumber *number, OCINumber *result);

/* The nearest integer not below `number`, and not above it.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2), 602. */
OCI_NUMBER_API sword OCINumberCeil(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberFloor(OCIError *err, const OCINumber *number, OCINumber *result);

/* Trigonometric functions of an angle in radians, of any size.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2), 602 for an infinity. */
OCI_NUMBER_API sword OCINumberSin(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberCos(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberTan(OCIError *err, const OCINumber *number, OCINumber *result);

/* Arc functions, in radians: arc sine and arc tangent in [-pi/2, pi/2], arc
 * cosine in [0, pi].
 * Errors: 21560 (argument 2, 3), 22060 (argument 2; OCINumberArcSin and
 * OCINumberArcCos also for a number above 1 or below -1 by OCINumberCmp, which 1
 * with a zero digit behind it is), 602. */
OCI_NUMBER_API sword OCINumberArcSin(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberArcCos(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberArcTan(OCIError *err, const OCINumber *number, OCINumber *result);

/* The angle, in (-pi, pi], of the point with the ordinate `number1` and the
 * abscissa `number2`, which is refused when it is zero.
 * Errors: 21560 (argument 2, 3, 4), 22060 (argument 2, 3; also for a zero
 * number2), 602. */
OCI_NUMBER_API sword OCINumberArcTan2(OCIError *err, const OCINumber *number1,
                                      const OCINumber *number2, OCINumber *result);

/* Hyperbolic functions.
 * Errors: 21560 (argument 2, 3), 22060 (argument 2), 602. */
OCI_NUMBER_API sword OCINumberHypSin(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberHypCos(OCIError *err, const OCINumber *number, OCINumber *result);
OCI_NUMBER_API sword OCINumberHypTan(OCIError *err, const OCINumber *number, OCINumber *result);

/* ---- Debug printers ----------------------------------------------------- */

/* Their names are anybody's: a program that has functions of its own by these names
 * defines OCI_NUMBER_NO_PRINTERS before it includes this header. The program's own
 * are then called, with either library. */
#ifndef OCI_NUMBER_NO_PRINTERS

/* The calc engine's working record, private to the library. */
typedef struct QZCICalcNumber QZCICalcNumber;

/* Prints the record's value to standard output as a line "buffer is 1.5", without a
 * value for a record whose fields hold none. `number` is not null. Returns 0. */
OCI_NUMBER_API sword print_calc_number(QZCICalcNumber *number);

/* Prints the length byte and the bytes of the number, the length byte among
 * them, to standard output: "Len=2: 2, 193, 2" for 1. A length byte above 21
 * prints all 22 bytes. `number` is not null. Returns 0. */
OCI_NUMBER_API sword print_number(OCINumber *number);

#endif

/* ---- Reals -------------------------------------------------------------- */

/* `rsl_length` and `rnum_length` are the size in bytes of the C type: 4 (float),
 * 8 (double) or 16 (long double, in the 80-bit extended or the quadruple format;
 * where it is of another, 16 is refused as any other size is). The reals need not be
 * aligned. */

/* Stores `number` at `rsl`: rounded half away from zero to 6 (float), 15
 * (double) or 18 (long double) digits behind the decimal point, then to the
 * nearest long double (double where 16 is refused), and that to the nearest float or
 * double, ties to even. A
 * fixed count of digits behind the point means that small magnitudes keep fewer
 * significant digits: 0.000123456789 becomes the float 0.000123, 1E-20 zero (of
 * its sign). An infinity becomes the largest float of its sign, or 1e126 of its
 * sign in the two wider types.
 * Errors: 21560 (argument 2; 4; 3 for another `rsl_length`), 602 for a magnitude
 * beyond the float's range. A number without a decimal text of 128 characters or
 * fewer (some values below 1E-86), or one that is not well formed (a length byte
 * of 0 or above 21 included), is OCI_ERROR with a line in the log and nothing in
 * `err`.
 *
 *   double value;
 *   OCINumberToReal(err, &n, sizeof value, &value); */
OCI_NUMBER_API sword OCINumberToReal(OCIError *err, const OCINumber *number, uword rsl_length,
                                     void *rsl);

/* Stores the `elems` numbers that `number` points to at `rsl`, one after the
 * other, each as OCINumberToReal does. Stops at the first number that fails, with
 * its status and error; the elements before it are stored, it and those behind it
 * are not.
 * Errors: 21560 (argument 2; 3 when `elems` is 0; 4 when `rsl_length` is 0; 5),
 * and those of OCINumberToReal. */
OCI_NUMBER_API sword OCINumberToRealArray(OCIError *err, const OCINumber **number, uword elems,
                                          uword rsl_length, void *rsl);

/* Stores in `number` the real of `rnum_length` bytes at `rnum`, with 6 (float),
 * 15 (double) or 18 (long double) significant digits: the value is rounded to two
 * digits more as printf rounds, to nearest, ties to even; then these two are
 * dropped, rounding half away from zero by the first of them. So 0.1 gives exactly
 * 0.1. Infinities become infinities, and so do magnitudes of 10^126 and more;
 * magnitudes below 10^-128 become zero. Needs a few bytes of memory during the
 * call.
 * Errors: 21560 (argument 2; 4; 3 for another `rnum_length`), 602 when there is
 * no memory. A NaN is OCI_ERROR with nothing in `err`; so is a bit pattern that
 * the 80-bit format has no value for (one of exponent 0 with its units bit set is
 * read as the processor reads it, and as small as any is zero). */
OCI_NUMBER_API sword OCINumberFromReal(OCIError *err, const void *rnum, uword rnum_length,
                                       OCINumber *number);

/* ---- Text --------------------------------------------------------------- */

/* Texts and format models are counted in bytes and need no terminator.
 * `nls_params` must be null and `nls_p_length` 0: language parameters are
 * refused. */

/* Writes `number` to `buf` under the format model `fmt`:
 *
 *   TM, TM9       all its digits, without sign position: 123.45, -.25
 *   9 and 0,      a body of 1 to 63 positions, at most one period among them.
 *   one period    The text has a place for the sign and one for each position. A
 *                 "9" in front of the first digit is a blank, a "0" and all
 *                 behind it are digits. As many digits follow the period as
 *                 positions do; the rest is rounded half away from zero.
 *   FM and body   the same without the blanks, and without padding zeros in the
 *                 last "9" positions behind the period
 *
 * "TM" and "FM" may be written in either case.
 * `*buf_size` is the capacity of `buf` in bytes, and on success the length of the
 * text. A terminator follows the text when there is room for it; it is not
 * counted. Both are written only on success.
 * Errors, in the order of the tests (all with OCI_ERROR):
 *   21560  `buf_size` null or `*buf_size` 0 (argument 7), `buf` (8), `number` (2)
 *   22065  `fmt` null or empty
 *   602    language parameters
 *   22065  an infinity, or a first digit byte of 0 or 1
 *   22061  the model is not one of these forms
 *   602    the number has no text of 128 characters or fewer, or is not well
 *          formed (a length byte of 0 or above 21 included)
 *   22065  more integer digits than positions for them
 *   22059  the text, without a terminator, is longer than `*buf_size`
 *
 *   OraText text[32];
 *   ub4 size = sizeof text;
 *   OCINumberToText(err, &n, (const OraText *)"FM9990.99", 9, NULL, 0, &size, text); */
OCI_NUMBER_API sword OCINumberToText(OCIError *err, const OCINumber *number, const OraText *fmt,
                                     ub4 fmt_length, const OraText *nls_params, ub4 nls_p_length,
                                     ub4 *buf_size, OraText *buf);

/* Reads the text `str` into `number`: leading blanks, an optional "-", digits
 * with at most one period. More than 20 base-100 digits are rounded half away
 * from zero; a magnitude below 10^-128 is zero.
 * The format model `fmt` holds positions "9" and "0" and at most one period, and
 * constrains the text: it has at most as many integer digits as the model has
 * integer positions; positions in front may be left out when they are "9". When
 * none is left out, the text has at most as many fraction digits as the model,
 * zeros at its end not counted, and no period when the model has none.
 * Errors, in the order of the tests (all with OCI_ERROR):
 *   21560  `str` null (argument 2), `str_length` 0 (3)
 *   22062  `fmt` null
 *   21560  `number` null (8)
 *   22061  the model holds another character or a second period
 *   602    language parameters
 *   22062  the text is not a number, does not match the model, or stands for a
 *          magnitude of 10^126 or more
 *
 *   OCINumberFromText(err, (const OraText *)"-12.5", 5, (const OraText *)"99.9", 4,
 *                     NULL, 0, &n); */
OCI_NUMBER_API sword OCINumberFromText(OCIError *err, const OraText *str, ub4 str_length,
                                       const OraText *fmt, ub4 fmt_length,
                                       const OraText *nls_params, ub4 nls_p_length,
                                       OCINumber *number);

#ifdef __cplusplus
}
#endif

#endif
