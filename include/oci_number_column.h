/* Columns: whole arrays of numbers in one call.
 *
 * Compiles alone as C99 and as C++. A first program, the exact sum of a column:
 *
 *   #include <oci_number_column.h>
 *
 *   oci_number_reason total(const OCINumber *numbers, size_t count, OCINumber *result) {
 *       oci_number_column column = {.form = OCI_NUMBER_RECORDS, .length = count,
 *                                   .data = (void *)numbers, .stride = sizeof *numbers};
 *       oci_number_sum sum;
 *       oci_number_reason reason;
 *       oci_number_sum_start(&sum);
 *       reason = oci_number_sum_add(&sum, &column, OCI_NUMBER_STOP, NULL);
 *       return reason ? reason : oci_number_sum_value(&sum, result);
 *   }
 *
 * CONVENTIONS, for every function here
 *
 * What a row becomes is what the function of oci.h for one number makes of it, to
 * the bit; each function below names it. Nothing is traced and nothing allocated.
 * The functions keep no state: any number of threads may call them, with outputs
 * that are apart (oci_number_column_slice tells where to cut).
 *
 * A row that has no result is refused: an infinity as an integer, too many digits
 * for a decimal, bytes that are no number. It is null in the output, or, with
 * OCI_NUMBER_STOP, ends the call: the rows before it are done then, those from it
 * on are unspecified. Rows that are null in an input are null in the output and
 * are not looked at.
 *
 * Null rows of an output: their bits in its bitmap are 0; they hold zero bytes in
 * forms of a fixed size, nothing in those with offsets, and a length byte of 0 in
 * prefixed records. An output without bitmap does not tell them from others.
 *
 * Nothing is read or written beyond what a column describes, whatever its bytes,
 * lengths and offsets hold. Data, offsets and results need no alignment. */
#ifndef OCI_NUMBER_COLUMN_H
#define OCI_NUMBER_COLUMN_H

#include <stddef.h>

#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Columns ------------------------------------------------------------ */

/* How the rows of a column lie in memory. The first four hold numbers. */
typedef enum oci_number_form {
    /* OCINumber records, `stride` bytes from one to the next: 22 or more, or 0 for
     * one number that is every row. */
    OCI_NUMBER_RECORDS = 1,
    /* Length byte, then as many bytes: one record behind the other, for null rows,
     * too. */
    OCI_NUMBER_PREFIXED = 2,
    /* The bytes behind the length byte, from offset to offset: `length` + 1 signed
     * integers of 32 or of 64 bits, in the machine's byte order. */
    OCI_NUMBER_BYTES_32 = 3,
    OCI_NUMBER_BYTES_64 = 4,
    /* sb8 and double, one behind the other. */
    OCI_NUMBER_INT64 = 5,
    OCI_NUMBER_DOUBLE = 6,
    /* Integers of 128 and 256 bits in two's complement, least significant byte
     * first: the value times 10^`scale`, below 10^`precision`. */
    OCI_NUMBER_DECIMAL128 = 7,
    OCI_NUMBER_DECIMAL256 = 8,
    /* Decimal text in ASCII, from offset to offset as above. */
    OCI_NUMBER_TEXT_32 = 9,
    OCI_NUMBER_TEXT_64 = 10,
    /* 22 bytes whose order, by memcmp, is the order of the values: 1, then the bytes
     * behind the length byte of the normal form, then zero bytes; for null rows 22
     * zero bytes, so that they come first. An output only. */
    OCI_NUMBER_KEYS = 11,
    /* sb1: -1, 0 or 1. The output of a comparison. */
    OCI_NUMBER_ORDER = 12
} oci_number_form;

/* A column of an input, whose memory is only read, or of an output. Fields that its
 * form does not name are not looked at; leave them 0. */
typedef struct oci_number_column {
    oci_number_form form;
    sb4 precision; /* of decimals: 1 to 38, to 76 for 256 bits */
    sb4 scale;     /* of decimals: -128 to 128 */
    size_t length; /* rows */
    void *data;    /* may be null without rows, and see oci_number_column_convert */
    void *offsets; /* of bytes and text */
    size_t size;   /* bytes at `data`, of prefixed records, bytes and text */
    size_t stride; /* of records */
    /* Bit number `validity_offset` + i, counted from the lowest of the first byte, is 1
     * when row i has a value, 0 when it is null. Null: every row has one. Other bits
     * are left as they are. */
    ub1 *validity;
    size_t validity_offset;
} oci_number_column;

/* Most bytes that a row of an output takes. */
#define OCI_NUMBER_MAX_VALUE 21
#define OCI_NUMBER_MAX_RECORD 22
#define OCI_NUMBER_MAX_TEXT 128

/* ---- Refusals ----------------------------------------------------------- */

/* Why a row was refused, or a call ended. */
typedef enum oci_number_reason {
    OCI_NUMBER_DONE = 0,
    OCI_NUMBER_BAD_CALL = 1,        /* the arguments are not what the function takes */
    OCI_NUMBER_NO_ROOM = 2,         /* the output's data, or its 32-bit offsets, are full */
    OCI_NUMBER_BAD_LENGTH = 3,      /* not 1 to 21 bytes, or more than the column has */
    OCI_NUMBER_BAD_DIGITS = 4,      /* bytes that are no number */
    OCI_NUMBER_INFINITE = 5,        /* an infinity */
    OCI_NUMBER_OUT_OF_RANGE = 6,    /* too large for the result */
    OCI_NUMBER_TOO_MANY_PLACES = 7, /* more places behind the point than the scale has */
    OCI_NUMBER_TEXT_TOO_LONG = 8,   /* its decimal text is longer than the conversion takes */
    OCI_NUMBER_NOT_A_NUMBER = 9,    /* a double that is none */
    OCI_NUMBER_BAD_TEXT = 10,       /* text that is no number */
    OCI_NUMBER_ZERO_DIVISOR = 11,
    OCI_NUMBER_NO_VALUE = 12 /* a calculation without value: inf - inf */
} oci_number_reason;

/* The reason as words, for messages: "an infinity". A constant; any thread may ask. */
OCI_NUMBER_API const char *oci_number_reason_text(oci_number_reason reason);

/* Options of a call. */
#define OCI_NUMBER_NULL 0 /* a refused row is null */
#define OCI_NUMBER_STOP 1 /* a refused row ends the call */

/* What became of the rows. */
typedef struct oci_number_tally {
    size_t values;            /* rows with a result */
    size_t refused;           /* rows without, that are not null in an input */
    size_t first_refused;     /* the first of these; `length` when there is none */
    oci_number_reason reason; /* why that was refused */
    size_t size;              /* bytes of an output's data, of prefixed records, bytes and text */
} oci_number_tally;

/* ---- Parts -------------------------------------------------------------- */

/* Describes `length` rows of `column` from row `start` on in `part`. Two threads may
 * write two parts of one output when they are cut at a row whose number, with
 * `validity_offset`, is a multiple of 8: no byte of the bitmap belongs to both then.
 * A part of bytes or text is for reading.
 * Returns OCI_NUMBER_DONE; OCI_NUMBER_BAD_CALL, with `*part` unchanged, when the
 * column has no such rows, or of prefixed records unless `start` is 0. */
OCI_NUMBER_API oci_number_reason oci_number_column_slice(const oci_number_column *column,
                                                         size_t start, size_t length,
                                                         oci_number_column *part);

/* ---- Conversions -------------------------------------------------------- */

/* The functions from here on
 *   - take columns of the same length;
 *   - may write over an input where both are records in the same places, else their
 *     outputs must be apart from the inputs;
 *   - write a tally unless `tally` is null, also when they fail;
 *   - return OCI_NUMBER_DONE; or OCI_NUMBER_BAD_CALL, with nothing written but the
 *     tally; or OCI_NUMBER_NO_ROOM; or, with OCI_NUMBER_STOP, the reason of the first
 *     refused row. */

/* Converts rows. One of the two columns holds numbers:
 *
 *   numbers to INT64      OCINumberToInt, 8 bytes, signed: the integer part
 *              DOUBLE     OCINumberToReal, 8 bytes; an infinity is 1e126 of its sign
 *              DECIMAL    the exact value, or a refusal: OCI_NUMBER_TOO_MANY_PLACES,
 *                         OCI_NUMBER_OUT_OF_RANGE, OCI_NUMBER_INFINITE
 *              TEXT       OCINumberToText, "TM9"
 *              KEYS       see there
 *              numbers    OCINumberAssign; the bytes behind the value become 0
 *   INT64      to numbers OCINumberFromInt, 8 bytes, signed: 100 is 3, 194, 2, 1
 *   DOUBLE                OCINumberFromReal, 8 bytes: 15 significant digits
 *   DECIMAL               the value, rounded half away from zero to the 20 base-100
 *                         digits of a number
 *   TEXT                  OCINumberFromText, under a model of enough positions
 *
 * Prefixed records, bytes and text are written as far as `to->size` goes; offsets
 * begin with 0. With a null `to->data` none of these but the offsets is written, and
 * these only where they are not null: `tally->size` tells the room that they take.
 *
 *   reason = oci_number_column_convert(&numbers, &doubles, OCI_NUMBER_NULL, &tally); */
OCI_NUMBER_API oci_number_reason oci_number_column_convert(const oci_number_column *from,
                                                           const oci_number_column *to,
                                                           uword options, oci_number_tally *tally);

/* ---- Calculation -------------------------------------------------------- */

typedef enum oci_number_operation {
    /* Of one column. */
    OCI_NUMBER_ABS = 1,
    OCI_NUMBER_NEG = 2,
    OCI_NUMBER_ROUND = 3, /* to `places` */
    OCI_NUMBER_TRUNC = 4, /* to `places` */
    OCI_NUMBER_CEIL = 5,
    OCI_NUMBER_FLOOR = 6,
    OCI_NUMBER_SQRT = 7,
    /* Of two. */
    OCI_NUMBER_ADD = 8,
    OCI_NUMBER_SUB = 9,
    OCI_NUMBER_MUL = 10,
    OCI_NUMBER_DIV = 11,
    OCI_NUMBER_MOD = 12,
    OCI_NUMBER_CMP = 13
} oci_number_operation;

/* Stores in each row of `to` what OCINumberAbs and so on make of the row of `a`, or of
 * those of `a` and `b`; `b` is null for an operation of one column. All hold numbers,
 * but the output of OCI_NUMBER_CMP is of the form OCI_NUMBER_ORDER: the sign of
 * what OCINumberCmp gives. A constant is a column of records with a stride of 0. */
OCI_NUMBER_API oci_number_reason oci_number_column_calculate(
    oci_number_operation operation, const oci_number_column *a, const oci_number_column *b,
    sword places, const oci_number_column *to, uword options, oci_number_tally *tally);

/* ---- Aggregates --------------------------------------------------------- */

/* An exact sum of any number of columns. Fixed point: what was added, and in which
 * order, leaves no trace in the result. Its fields are private. A sum may be copied,
 * and several threads' sums merged. */
typedef struct oci_number_sum {
    sb8 limb[40];
    ub4 infinity;
} oci_number_sum;

/* Sets the sum of nothing, zero. */
OCI_NUMBER_API void oci_number_sum_start(oci_number_sum *sum);

/* Adds the numbers of a column; `tally->values` counts them. The infinity of the other
 * sign than one that was added before is refused: OCI_NUMBER_NO_VALUE. When the
 * call fails, the rows before the refused one were added. */
OCI_NUMBER_API oci_number_reason oci_number_sum_add(oci_number_sum *sum,
                                                    const oci_number_column *from, uword options,
                                                    oci_number_tally *tally);

/* Adds another sum. OCI_NUMBER_NO_VALUE, with `sum` unchanged, when they hold infinities
 * of both signs; OCI_NUMBER_BAD_CALL for a null pointer. */
OCI_NUMBER_API oci_number_reason oci_number_sum_merge(oci_number_sum *sum,
                                                      const oci_number_sum *other);

/* Stores the sum in `result`, rounded once, half away from zero, to 20 base-100 digits;
 * 10^126 and more is the infinity of that sign. OCI_NUMBER_BAD_CALL for a null
 * pointer. */
OCI_NUMBER_API oci_number_reason oci_number_sum_value(const oci_number_sum *sum, OCINumber *result);

/* Stores the least and the greatest number of a column, by OCINumberCmp; either pointer
 * may be null. They are unchanged when there is none, `tally->values` 0, and when the
 * call fails. Bytes that are no number are refused. */
OCI_NUMBER_API oci_number_reason oci_number_column_extremes(const oci_number_column *from,
                                                            OCINumber *least, OCINumber *greatest,
                                                            uword options, oci_number_tally *tally);

#ifdef __cplusplus
}
#endif

#endif
