#include "oci_handle.h"

#include <cstdint>
#include <cstring>

#include "oci_malloc.h"

namespace {

// Guards both free lists and the lists of error handles in the environments.
pthread_mutex_t handles_lock = PTHREAD_MUTEX_INITIALIZER;
OCIEnv *free_envs = nullptr;
OCIError *free_errors = nullptr;

class HandlesGuard {
public:
    HandlesGuard() { pthread_mutex_lock(&handles_lock); }
    ~HandlesGuard() { pthread_mutex_unlock(&handles_lock); }
    HandlesGuard(const HandlesGuard &) = delete;
    HandlesGuard &operator=(const HandlesGuard &) = delete;
};

bool is_live(const void *handle, ub1 type) {
    return handle != nullptr && *static_cast<const ub1 *>(handle) == type;
}

// Takes a record from the free list or, when it is empty, from the allocator.
template <class Handle, Handle *Handle::*next>
Handle *take(Handle *&free_list, const char *tag) {
    Handle *handle = free_list;
    if (handle != nullptr) {
        free_list = handle->*next;
    } else {
        handle = static_cast<Handle *>(qzci_malloc(sizeof(Handle), tag));
    }
    if (handle != nullptr) std::memset(handle, 0, sizeof *handle);
    return handle;
}

// Allocates the program's extra memory, when it asks for some.
bool take_user_memory(size_t size, void **usrmempp, void *&memory) {
    if (size == 0 || usrmempp == nullptr) return true;
    memory = qzci_malloc(size, "user memory");
    return memory != nullptr;
}

void give_user_memory(size_t size, void **usrmempp, void *memory) {
    if (size != 0 && usrmempp != nullptr) *usrmempp = memory;
}

void release(OCIEnv *env) {
    qzci_free(env->user_memory);
    env->type = 0;
    env->next_free = free_envs;
    free_envs = env;
}

void release(OCIError *error) {
    qzci_free(error->user_memory);
    pthread_mutex_destroy(&error->lock);
    error->type = 0;
    error->next = free_errors;
    free_errors = error;
}

void unlink_from_env(OCIError *error) {
    (error->prev != nullptr ? error->prev->next : error->env->errors) = error->next;
    if (error->next != nullptr) error->next->prev = error->prev;
}

}  // namespace

extern "C" sword OCIEnvCreate(OCIEnv **envp, ub4, void *, void *(*)(void *, size_t),
                              void *(*)(void *, void *, size_t), void (*)(void *, void *),
                              size_t xtramem_sz, void **usrmempp) {
    if (envp == nullptr) return OCI_INVALID_HANDLE;
    const HandlesGuard guard;
    OCIEnv *env = take<OCIEnv, &OCIEnv::next_free>(free_envs, "OCIEnv");
    if (env == nullptr) return OCI_ERROR;
    if (!take_user_memory(xtramem_sz, usrmempp, env->user_memory)) {
        release(env);
        return OCI_ERROR;
    }
    env->type = OCI_HTYPE_ENV;
    give_user_memory(xtramem_sz, usrmempp, env->user_memory);
    *envp = env;
    return OCI_SUCCESS;
}

extern "C" sword OCIHandleAlloc(const void *parenth, void **hndlpp, const ub4 type,
                                const size_t xtramem_sz, void **usrmempp) {
    const HandlesGuard guard;
    if (!is_live(parenth, OCI_HTYPE_ENV) || hndlpp == nullptr || type != OCI_HTYPE_ERROR) {
        return OCI_INVALID_HANDLE;
    }
    OCIError *error = take<OCIError, &OCIError::next>(free_errors, "OCIError");
    if (error == nullptr) return OCI_ERROR;
    pthread_mutex_init(&error->lock, nullptr);
    if (!take_user_memory(xtramem_sz, usrmempp, error->user_memory)) {
        release(error);
        return OCI_ERROR;
    }
    error->type = OCI_HTYPE_ERROR;
    // The interface passes the parent as const; its list of children is ours.
    error->env = static_cast<OCIEnv *>(const_cast<void *>(parenth));
    error->next = error->env->errors;
    if (error->next != nullptr) error->next->prev = error;
    error->env->errors = error;
    give_user_memory(xtramem_sz, usrmempp, error->user_memory);
    *hndlpp = error;
    return OCI_SUCCESS;
}

extern "C" sword OCIHandleFree(void *hndlp, const ub4 type) {
    const HandlesGuard guard;
    if (type == OCI_HTYPE_ERROR && is_live(hndlp, OCI_HTYPE_ERROR)) {
        auto *error = static_cast<OCIError *>(hndlp);
        unlink_from_env(error);
        release(error);
        return OCI_SUCCESS;
    }
    if (type == OCI_HTYPE_ENV && is_live(hndlp, OCI_HTYPE_ENV)) {
        auto *env = static_cast<OCIEnv *>(hndlp);
        while (OCIError *error = env->errors) {
            env->errors = error->next;
            release(error);
        }
        release(env);
        return OCI_SUCCESS;
    }
    return OCI_INVALID_HANDLE;
}

extern "C" sword OCIErrorGet(void *hndlp, ub4 recordno, OraText *sqlstate, sb4 *errcodep,
                             OraText *bufp, ub4 bufsiz, ub4 type) {
    if (type != OCI_HTYPE_ERROR || !is_live(hndlp, OCI_HTYPE_ERROR) || errcodep == nullptr) {
        return OCI_INVALID_HANDLE;
    }
    const auto *error = static_cast<const OCIError *>(hndlp);
    if (recordno != 1 || error->err_code == 0) return OCI_NO_DATA;
    if (sqlstate != nullptr) std::memcpy(sqlstate, error->sql_state, sizeof error->sql_state);
    *errcodep = error->err_code;
    if (bufp == nullptr || bufsiz == 0) return OCI_SUCCESS;
    const size_t length =
        strnlen(reinterpret_cast<const char *>(error->err_message), err_message_size - 1);
    const size_t copied = length < bufsiz ? length : bufsiz - 1;
    std::memcpy(bufp, error->err_message, copied);
    bufp[copied] = '\0';
    return copied == length ? OCI_SUCCESS : OCI_ERROR;
}
