// The log sink that every unit of the library writes to.
#pragma once

#include "oci_number_log.h"

// Formats `fmt` as printf does and writes one line when `level` is enabled.
// Filtered, it costs a relaxed load and a compare. Never fails as seen by the
// caller, leaves errno alone, and may be called from any thread.
extern "C" void qzoci_log_inner(log_level level, const char *file, const long line, const char *fmt,
                                ...) __attribute__((format(printf, 4, 5)));

// Logging statements: they add the place of the statement.
#define QZOCI_LOG_TRACE(...) qzoci_log_inner(LOG_LEVEL_TRACE, __FILE__, __LINE__, __VA_ARGS__)
#define QZOCI_LOG_DEBUG(...) qzoci_log_inner(LOG_LEVEL_DEBUG, __FILE__, __LINE__, __VA_ARGS__)
#define QZOCI_LOG_ERROR(...) qzoci_log_inner(LOG_LEVEL_ERROR, __FILE__, __LINE__, __VA_ARGS__)
