/* Fixed-width types of OCI, as oci.h uses them.
 *
 * Compiles alone as C99 and as C++. No function is declared here. */
#ifndef ORATYPES_H
#define ORATYPES_H

#include <stdint.h>

typedef uint8_t ub1;
typedef uint16_t ub2;
typedef uint32_t ub4;
typedef uint64_t ub8;

typedef int8_t sb1;
typedef int16_t sb2;
typedef int32_t sb4;
typedef int64_t sb8;

typedef int sword;             /* status codes and small signed counts */
typedef unsigned int uword;    /* lengths and flags */
typedef int boolean;           /* 1 for true, 0 for false */
typedef unsigned char OraText; /* a byte of text, never assumed to be terminated */

/* Marks the functions that the shared library exports. */
#if defined(__GNUC__)
#define OCI_NUMBER_API __attribute__((visibility("default")))
#else
#define OCI_NUMBER_API
#endif

#endif
