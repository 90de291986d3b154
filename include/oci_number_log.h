/* Control of the library's log: level, destination, and a sink of your own.
 *
 * Every number function traces its call and its result at level DEBUG and most
 * failures at level ERROR. Nothing is written until a level is set, here or by
 * the environment at program start:
 *
 *   OCI_NUMBER_LOG_LEVEL   TRACE, DEBUG, INFO, WARN, ERROR, FATAL, SLOWSQL, OFF
 *                          (letters in either case) or the level's number
 *   OCI_NUMBER_LOG_FILE    path of a file to append to, created with mode 0600;
 *                          standard error when it is not set
 *
 * Both variables are ignored in a program that runs with raised privileges
 * (set-user-id and the like). A level or path that cannot be used is ignored.
 *
 * A line of the log:
 *
 *   2026-01-31T23:59:58.123456Z DEBUG [140223] src/oci_number/inspect.cpp:42 text
 *
 * with the time in UTC, the level, the calling thread (its pthread_t as a
 * decimal number), the place in the library and the text. A line is written by
 * one write to a file opened for appending, so lines of several threads and
 * processes do not mix. The ASCII control characters and the backslash appear in
 * the text as \n, \t, \r, \\ or \xHH, so every record is one line. What cannot
 * be written, on a full disk or beyond the limit of a file's size for instance, is
 * lost without a word or a signal; a line that was cut is ended before the next
 * one. A line waits until it is taken: behind a FIFO or terminal that nobody
 * reads every call that logs stands still.
 *
 * The file's descriptor is 3 or above. A program that closes it behind the
 * library's back loses its lines: before each, device and inode tell whether the
 * descriptor is still that of the log, so that the file which has the number by
 * then gets none of them (but for one that is put there in that very moment).
 *
 * When the program ends, or unloads the library, the file is closed and the log is
 * off; of handles, those that were not freed are all that an unloaded library leaves.
 *
 * All functions may be called at any time from any thread, also in a child after
 * a fork, but not from inside a sink, nor from a signal handler. A number
 * function that a signal handler calls while its thread writes a line does not wait
 * for that: its own lines are dropped. None of them changes errno unless its
 * description says so. */
#ifndef OCI_NUMBER_LOG_H
#define OCI_NUMBER_LOG_H

#include <stddef.h>

#include "oratypes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum log_level {
    LOG_LEVEL_TRACE = 1,
    LOG_LEVEL_DEBUG = 2,
    LOG_LEVEL_INFO = 3,
    LOG_LEVEL_WARN = 4,
    LOG_LEVEL_ERROR = 5,
    LOG_LEVEL_FATAL = 6,
    LOG_LEVEL_SLOWSQL = 7
} log_level;

/* Not a level of a line: as a threshold it silences the log. */
#define QZOCI_LOG_OFF 8

/* Sets the threshold: lines of this level and above are written. `level` is a
 * log_level or QZOCI_LOG_OFF (the state at start); any other value is ignored. */
OCI_NUMBER_API void qzoci_log_set_level(int level);

/* Returns the threshold: a log_level or QZOCI_LOG_OFF. */
OCI_NUMBER_API int qzoci_log_get_level(void);

/* Appends the log to the file at `path` (terminated), which is created with
 * mode 0600 when it does not exist; a null `path` means standard error. A file
 * that was set before is closed; a sink that was set before is removed.
 * Returns 0, or -1 with errno set when the file cannot be opened; the log's
 * destination is unchanged then. */
OCI_NUMBER_API sword qzoci_log_set_file(const char *path);

/* A sink of the program's own. `context` is the pointer given with the sink,
 * `level` a log_level, `file` and `line` the logging statement's place, and
 * `text` the escaped, NUL-terminated text of `length` bytes, without time stamp
 * or line end. The pointers are valid during the call only. The sink is
 * called on the thread that logs, by one thread at a time. It may call the
 * library, but not the functions of this header, and must return: no exception, no
 * longjmp. Lines that the library would log while the sink runs in the same thread
 * are dropped. */
typedef void (*qzoci_log_sink)(void *context, int level, const char *file, long line,
                               const char *text, size_t length);

/* Hands every line to `sink` in place of the file; a null `sink` returns to
 * the file. When the call returns, no thread is inside the former sink. */
OCI_NUMBER_API void qzoci_log_set_sink(qzoci_log_sink sink, void *context);

#ifdef __cplusplus
}
#endif

#endif
