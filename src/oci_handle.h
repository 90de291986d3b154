// The handle records.
#pragma once

#include <pthread.h>

#include <cstddef>

#include "oci.h"

inline constexpr size_t err_message_size = 3073;

// The first byte of every handle tells its type. A freed handle keeps its memory, with the
// type byte 0, until 256 more of the type were freed: so a handle that is used or freed
// again soon is recognised by a plain read.
struct OCIEnv {
    ub1 type;
    OCIError *errors;  // the live error handles under this environment
    OCIEnv *next;      // in the list of the free ones
    void *user_memory;
};

struct OCIError {
    ub1 type;
    pthread_mutex_t lock;  // for the handle's other users; number functions do not take it
    OCIError *prev;        // list of the environment's error handles, or of the free ones
    OCIError *next;
    OCIEnv *env;
    void *user_memory;
    int err_code;
    OraText err_message[err_message_size];
    OraText sql_state[6];
    ub4 row_offset;
    boolean is_recoverable;
    char client_ip[46];
    ub2 client_port;
};

static_assert(offsetof(OCIEnv, type) == 0 && offsetof(OCIError, type) == 0);
