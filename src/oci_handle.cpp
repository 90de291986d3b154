#include "oci_handle.h"

#include <cstdint>
#include <cstring>

#include "oci_malloc.h"

namespace {

// Guards both free lists and the lists of error handles in the environments. The
// allocator is called without it, as it logs, and the log may run the program's
// own sink.
pthread_mutex_t handles_lock = PTHREAD_MUTEX_INITIALIZER;

// Freed handles wait here with their type byte 0, so that a second free is recognised; the
// oldest is the first to be taken over or to leave.
template <class Handle>
struct FreeList {
    static constexpr unsigned kept = 256;
    Handle *oldest = nullptr;
    Handle *newest = nullptr;
    unsigned count = 0;

    void put(Handle *handle) {
        handle->next = nullptr;
        (count++ == 0 ? oldest : newest->next) = handle;
        newest = handle;
    }
    Handle *take_oldest() {
        Handle *handle = oldest;
        oldest = handle->next;
        --count;
        return handle;
    }
};
FreeList<OCIEnv> free_envs;
FreeList<OCIError> free_errors;

// A child process starts with the lock free and the lists whole.
__attribute__((constructor)) void start() {
    pthread_atfork([] { pthread_mutex_lock(&handles_lock); },
                   [] { pthread_mutex_unlock(&handles_lock); },
                   [] { pthread_mutex_unlock(&handles_lock); });
}

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

// A record to take over, or null while too few others were freed after it.
template <class Handle>
Handle *take_free(FreeList<Handle> &free_list) {
    const HandlesGuard guard;
    return free_list.count < free_list.kept ? nullptr : free_list.take_oldest();
}

// Puts a record that is in no list, and holds no user memory, on the free list.
template <class Handle>
void give_back(Handle *handle, FreeList<Handle> &free_list) {
    Handle *left = nullptr;
    {
        const HandlesGuard guard;
        free_list.put(handle);
        if (free_list.count > free_list.kept) left = free_list.take_oldest();
    }
    if (left != nullptr) qzci_free(left);
}

template <class Handle>
void free_all(FreeList<Handle> &free_list) {
    while (free_list.count > 0) qzci_free(free_list.take_oldest());
}

// An unloaded library takes the memory of freed handles with it: after the log has ended, so
// that these are no lines of it.
__attribute__((destructor(101))) void stop() {
    const HandlesGuard guard;
    free_all(free_envs);
    free_all(free_errors);
}

// A cleared record, from the free list or the allocator, with the program's
// extra memory when it asks for some; null when there is no memory.
template <class Handle>
Handle *take(FreeList<Handle> &free_list, const char *tag, size_t xtramem_sz, void **usrmempp) {
    Handle *handle = take_free(free_list);
    if (handle == nullptr) handle = static_cast<Handle *>(qzci_malloc(sizeof(Handle), tag));
    if (handle == nullptr) return nullptr;
    std::memset(handle, 0, sizeof *handle);
    if (xtramem_sz != 0 && usrmempp != nullptr) {
        handle->user_memory = qzci_malloc(xtramem_sz, "user memory");
        if (handle->user_memory == nullptr) {
            give_back(handle, free_list);
            return nullptr;
        }
    }
    return handle;
}

// Hands the extra memory to the program, with the handle.
template <class Handle>
void give_user_memory(const Handle *handle, void **usrmempp) {
    if (handle->user_memory != nullptr) *usrmempp = handle->user_memory;
}

void release(OCIEnv *env) {
    qzci_free(env->user_memory);
    give_back(env, free_envs);
}

void release(OCIError *error) {
    qzci_free(error->user_memory);
    pthread_mutex_destroy(&error->lock);
    give_back(error, free_errors);
}

void link_to_env(OCIError *error, OCIEnv *env) {
    error->env = env;
    error->next = env->errors;
    if (error->next != nullptr) error->next->prev = error;
    env->errors = error;
}

void unlink_from_env(OCIError *error) {
    (error->prev != nullptr ? error->prev->next : error->env->errors) = error->next;
    if (error->next != nullptr) error->next->prev = error->prev;
}

// Makes a live handle of the type free, or returns null. An environment's error
// handles become free with it and are left in its list.
OCIError *retire_error(void *hndlp) {
    const HandlesGuard guard;
    if (!is_live(hndlp, OCI_HTYPE_ERROR)) return nullptr;
    auto *error = static_cast<OCIError *>(hndlp);
    unlink_from_env(error);
    error->type = 0;
    return error;
}
OCIEnv *retire_env(void *hndlp) {
    const HandlesGuard guard;
    if (!is_live(hndlp, OCI_HTYPE_ENV)) return nullptr;
    auto *env = static_cast<OCIEnv *>(hndlp);
    for (OCIError *error = env->errors; error != nullptr; error = error->next) error->type = 0;
    env->type = 0;
    return env;
}

}  // namespace

extern "C" sword OCIEnvCreate(OCIEnv **envp, ub4, void *, void *(*)(void *, size_t),
                              void *(*)(void *, void *, size_t), void (*)(void *, void *),
                              size_t xtramem_sz, void **usrmempp) {
    if (envp == nullptr) return OCI_INVALID_HANDLE;
    OCIEnv *env = take(free_envs, "OCIEnv", xtramem_sz, usrmempp);
    if (env == nullptr) return OCI_ERROR;
    env->type = OCI_HTYPE_ENV;
    give_user_memory(env, usrmempp);
    *envp = env;
    return OCI_SUCCESS;
}

extern "C" sword OCIHandleAlloc(const void *parenth, void **hndlpp, const ub4 type,
                                const size_t xtramem_sz, void **usrmempp) {
    if (!is_live(parenth, OCI_HTYPE_ENV) || hndlpp == nullptr || type != OCI_HTYPE_ERROR) {
        return OCI_INVALID_HANDLE;
    }
    OCIError *error = take(free_errors, "OCIError", xtramem_sz, usrmempp);
    if (error == nullptr) return OCI_ERROR;
    pthread_mutex_init(&error->lock, nullptr);
    error->type = OCI_HTYPE_ERROR;
    {
        const HandlesGuard guard;
        // The interface passes the parent as const; its list of children is ours.
        link_to_env(error, static_cast<OCIEnv *>(const_cast<void *>(parenth)));
    }
    give_user_memory(error, usrmempp);
    *hndlpp = error;
    return OCI_SUCCESS;
}

extern "C" sword OCIHandleFree(void *hndlp, const ub4 type) {
    if (type == OCI_HTYPE_ERROR) {
        OCIError *error = retire_error(hndlp);
        if (error == nullptr) return OCI_INVALID_HANDLE;
        release(error);
        return OCI_SUCCESS;
    }
    if (type == OCI_HTYPE_ENV) {
        OCIEnv *env = retire_env(hndlp);
        if (env == nullptr) return OCI_INVALID_HANDLE;
        for (OCIError *error = env->errors; error != nullptr;) {
            OCIError *const next = error->next;
            release(error);
            error = next;
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
    if (bufp == nullptr) return OCI_SUCCESS;
    if (bufsiz == 0) return OCI_ERROR;
    const size_t length =
        strnlen(reinterpret_cast<const char *>(error->err_message), err_message_size - 1);
    const size_t copied = length < bufsiz ? length : bufsiz - 1;
    std::memcpy(bufp, error->err_message, copied);
    bufp[copied] = '\0';
    return copied == length ? OCI_SUCCESS : OCI_ERROR;
}
