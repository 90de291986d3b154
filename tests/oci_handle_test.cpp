#include "oci_handle.h"

#include "support/numbers.h"

namespace {

OCIEnv *new_env() {
    OCIEnv *env = nullptr;
    EXPECT_EQ(OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr), 0);
    return env;
}

OCIError *new_error(OCIEnv *env) {
    void *error = nullptr;
    EXPECT_EQ(OCIHandleAlloc(env, &error, OCI_HTYPE_ERROR, 0, nullptr), OCI_SUCCESS);
    return static_cast<OCIError *>(error);
}

TEST(Handle, TypeByteTellsFreedAndForeign) {
    OCIEnv *env = new_env();
    OCIError *freed = new_error(env), *left = new_error(env);
    sb4 code = 0;
    EXPECT_EQ(OCIHandleFree(freed, OCI_HTYPE_ERROR), OCI_SUCCESS);
    EXPECT_EQ(OCIHandleFree(freed, OCI_HTYPE_ERROR), OCI_INVALID_HANDLE);
    EXPECT_EQ(OCIErrorGet(freed, 1, nullptr, &code, nullptr, 0, OCI_HTYPE_ERROR),
              OCI_INVALID_HANDLE);
    EXPECT_EQ(OCIHandleFree(left, OCI_HTYPE_ENV), OCI_INVALID_HANDLE);
    EXPECT_EQ(OCIHandleFree(env, OCI_HTYPE_ERROR), OCI_INVALID_HANDLE);
    EXPECT_EQ(OCIHandleFree(nullptr, OCI_HTYPE_ENV), OCI_INVALID_HANDLE);
    // The environment takes its remaining error handles with it.
    EXPECT_EQ(OCIHandleFree(env, OCI_HTYPE_ENV), OCI_SUCCESS);
    EXPECT_EQ(OCIHandleFree(env, OCI_HTYPE_ENV), OCI_INVALID_HANDLE);
    EXPECT_EQ(OCIHandleFree(left, OCI_HTYPE_ERROR), OCI_INVALID_HANDLE);
}

// Whatever the order, the environment's list holds what is left.
TEST(Handle, ErrorsFreedInAnyOrder) {
    size_t order[] = {0, 1, 2};
    do {
        OCIEnv *env = new_env();
        OCIError *const errors[] = {new_error(env), new_error(env), new_error(env)};
        for (int left = 2; left >= 0; --left) {
            OCIHandleFree(errors[order[left]], OCI_HTYPE_ERROR);
            int found = 0;
            OCIError *prev = nullptr;
            for (OCIError *e = env->errors; e != nullptr && found < 3; e = e->next, ++found) {
                ASSERT_EQ(e->prev, prev);
                prev = e;
            }
            ASSERT_EQ(found, left);
        }
        OCIHandleFree(env, OCI_HTYPE_ENV);
    } while (std::next_permutation(order, order + 3));
}

TEST(Handle, RefusedAllocations) {
    OCIEnv *env = new_env();
    OCIError *error = new_error(env);
    void *handle = env, *memory = env;
    const auto alloc = [&](void *parent, ub4 type, size_t size) {
        return OCIHandleAlloc(parent, &handle, type, size, &memory);
    };
    EXPECT_EQ(OCIEnvCreate(nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr),
              OCI_INVALID_HANDLE);
    for (ub4 type : {0u, 1u, 3u, 4u, 9u, 72u}) {
        EXPECT_EQ(alloc(env, type, 0), OCI_INVALID_HANDLE);
        if (type != OCI_HTYPE_ENV) EXPECT_EQ(OCIHandleFree(env, type), OCI_INVALID_HANDLE);
    }
    EXPECT_EQ(alloc(nullptr, OCI_HTYPE_ERROR, 0), OCI_INVALID_HANDLE);
    EXPECT_EQ(alloc(error, OCI_HTYPE_ERROR, 0), OCI_INVALID_HANDLE);
    EXPECT_EQ(OCIHandleAlloc(env, nullptr, OCI_HTYPE_ERROR, 0, nullptr), OCI_INVALID_HANDLE);
    // Memory of the program's own comes and goes with the handle; a handle for which
    // there is none goes back: a new one at first, then one that was freed.
    heap.fail = true;
    EXPECT_EQ(OCIEnvCreate(&env, 0, nullptr, nullptr, nullptr, nullptr, 8, &memory), OCI_ERROR);
    EXPECT_EQ(alloc(env, OCI_HTYPE_ERROR, 8), OCI_ERROR);
    OCIHandleFree(error, OCI_HTYPE_ERROR);
    EXPECT_EQ(alloc(env, OCI_HTYPE_ERROR, 8), OCI_ERROR);
    heap.fail = false;
    EXPECT_EQ(handle, env);
    EXPECT_EQ(memory, env);
    const int live = heap.live;
    ASSERT_EQ(alloc(env, OCI_HTYPE_ERROR, 100), OCI_SUCCESS);
    std::memset(memory, 1, 100);
    OCIHandleFree(env, OCI_HTYPE_ENV);
    EXPECT_EQ(heap.live, live + 1);  // the handle that waits
}

// A second free finds no new owner for 255 others, and no more wait than that.
TEST(Handle, FreedOnesWaitInTurn) {
    OCIEnv *const env = new_env();
    OCIError *const freed = new_error(env), *owner = nullptr;
    OCIHandleFree(freed, OCI_HTYPE_ERROR);
    int until_taken_over = 0;
    for (; owner != freed && until_taken_over < 1000; ++until_taken_over) {
        EXPECT_EQ(OCIHandleFree(freed, OCI_HTYPE_ERROR), OCI_INVALID_HANDLE);
        owner = new_error(env);
        EXPECT_EQ(OCIHandleFree(owner, OCI_HTYPE_ERROR), OCI_SUCCESS);
    }
    EXPECT_EQ(until_taken_over, 256);
    const int live = heap.live;
    for (int i = 0; i < 1000; ++i) new_error(env);
    OCIHandleFree(env, OCI_HTYPE_ENV);
    EXPECT_EQ(heap.live, live);
}

// The program's own memory comes with a size and a place for its address, and goes with the handle.
TEST(Handle, UserMemory) {
    for (const auto &[size, has_place] : {std::pair{size_t{8}, true}, {8, false}, {0, true}}) {
        OCIEnv *env = nullptr;
        void *memory = &heap;
        const int waiting = heap.live + 1;
        EXPECT_EQ(OCIEnvCreate(&env, 0, nullptr, nullptr, nullptr, nullptr, size,
                               has_place ? &memory : nullptr),
                  OCI_SUCCESS);
        const bool is_given = size > 0 && has_place;
        EXPECT_EQ(memory != &heap, is_given);
        EXPECT_EQ(heap.live, waiting + is_given);
        EXPECT_EQ(OCIHandleFree(env, OCI_HTYPE_ENV), OCI_SUCCESS);
        EXPECT_EQ(heap.live, waiting);
    }
}

TEST(Handle, ErrorGet) {
    OCIEnv *env = new_env();
    OCIError *error = new_error(env);
    sb4 code = 7;
    OraText message[100] = "unchanged", state[6] = "state";
    const auto get = [&](ub4 record, sb4 *to, ub4 size, ub4 type = OCI_HTYPE_ERROR) {
        return OCIErrorGet(error, record, state, to, message, size, type);
    };
    const auto shown = [&] { return std::string(reinterpret_cast<char *>(message)); };
    EXPECT_EQ(get(1, &code, 100), OCI_NO_DATA);
    const std::string long_message = "OCI-" + std::string(3068, 'x');
    error->err_code = 21560;
    std::memcpy(error->err_message, long_message.c_str(), err_message_size);
    for (const ub4 record : {0u, 2u}) EXPECT_EQ(get(record, &code, 100), OCI_NO_DATA);
    EXPECT_EQ(get(1, nullptr, 100), OCI_INVALID_HANDLE);
    EXPECT_EQ(get(1, &code, 100, OCI_HTYPE_ENV), OCI_INVALID_HANDLE);
    EXPECT_EQ(code, 7);
    EXPECT_EQ(shown(), "unchanged");
    EXPECT_EQ(get(1, &code, 100), OCI_ERROR);
    EXPECT_EQ(code, 21560);
    EXPECT_EQ(shown(), long_message.substr(0, 99));
    EXPECT_EQ(state[0], 0);
    EXPECT_EQ(get(1, &code, 0), OCI_ERROR);
    EXPECT_EQ(OCIErrorGet(error, 1, nullptr, &code, nullptr, 0, OCI_HTYPE_ERROR), OCI_SUCCESS);
    OraText whole[err_message_size];
    EXPECT_EQ(OCIErrorGet(error, 1, nullptr, &code, whole, sizeof whole, OCI_HTYPE_ERROR),
              OCI_SUCCESS);
    EXPECT_EQ(reinterpret_cast<char *>(whole), long_message);
    OCIHandleFree(env, OCI_HTYPE_ENV);
}

}  // namespace
