/* Columns as Arrow arrays, by the Arrow C data interface: without Arrow's library,
 * and without copying a value.
 *
 * Compiles alone as C99 and as C++. The two structs are the interface's own; a program
 * that has them from another header may include both, in any order. */
#ifndef OCI_NUMBER_ARROW_H
#define OCI_NUMBER_ARROW_H

#include "oci_number_column.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

struct ArrowSchema {
    const char *format;
    const char *name;
    const char *metadata;
    int64_t flags;
    int64_t n_children;
    struct ArrowSchema **children;
    struct ArrowSchema *dictionary;
    void (*release)(struct ArrowSchema *);
    void *private_data;
};

struct ArrowArray {
    int64_t length;
    int64_t null_count;
    int64_t offset;
    int64_t n_buffers;
    int64_t n_children;
    const void **buffers;
    struct ArrowArray **children;
    struct ArrowArray *dictionary;
    void (*release)(struct ArrowArray *);
    void *private_data;
};

#endif

/* The Arrow types of the forms:
 *
 *   fixed-size binary of 22 bytes "w:22"   OCI_NUMBER_RECORDS with a stride of 22
 *   binary "z", large binary "Z"           OCI_NUMBER_BYTES_32, OCI_NUMBER_BYTES_64
 *   int64 "l", float64 "g"                 OCI_NUMBER_INT64, OCI_NUMBER_DOUBLE
 *   decimal "d:P,S", "d:P,S,256"           OCI_NUMBER_DECIMAL128, OCI_NUMBER_DECIMAL256
 *   utf8 "u", large utf8 "U"               OCI_NUMBER_TEXT_32, OCI_NUMBER_TEXT_64
 *   of an output only: int8 "c"            OCI_NUMBER_ORDER
 *   of an output only: "w:22"              OCI_NUMBER_KEYS */

/* Describes the rows of an array as a column to be read. The array stays its owner's, who
 * releases it when the column is no longer needed; the schema may be released at once.
 * Buffers are taken to be as long as the array says.
 * Returns OCI_NUMBER_DONE; OCI_NUMBER_BAD_CALL, with `*column` unchanged, for a null
 * pointer, a released struct, a type that is none of these, or an array that is not of its
 * type. */
OCI_NUMBER_API oci_number_reason oci_number_arrow_import(const struct ArrowSchema *schema,
                                                         const struct ArrowArray *array,
                                                         oci_number_column *column);

/* The owner of a column's memory as long as an exported schema or array lives. The caller sets
 * `release` (may be null) and `context`; the other fields are private. */
typedef struct oci_number_arrow_owner {
    void (*release)(void *context);
    void *context;
    const void *buffers[3];
    char format[24];
    int alive;
} oci_number_arrow_owner;

/* Makes a schema and an array of a column, an output that is done for instance. `nulls` is the
 * number of null rows, or -1 when it is not known. The memory of the column, and `owner`, must
 * live until `owner->release(owner->context)` is called, which is when both structs were
 * released, in either order and by any thread; it may free `owner`.
 * Returns OCI_NUMBER_DONE; OCI_NUMBER_BAD_CALL, with nothing written, for a null pointer, a
 * column without Arrow type, more than INT64_MAX rows, and a bitmap whose first bit is not
 * that of a byte (`validity_offset` is no multiple of 8). */
OCI_NUMBER_API oci_number_reason oci_number_arrow_export(const oci_number_column *column, sb8 nulls,
                                                         oci_number_arrow_owner *owner,
                                                         struct ArrowSchema *schema,
                                                         struct ArrowArray *array);

#ifdef __cplusplus
}
#endif

#endif
