// Sequences of calls on the same records and handles: a call changes its result and its error
// handle, and nothing else; handles that are not alive are refused.
#include <memory>

#include "support.h"

using namespace fuzz;

namespace {

struct Environment {
    OCIEnv *env = nullptr;
    bool is_live = false;
};

struct Handle {
    void *handle = nullptr;
    unsigned parent = 0;
    bool is_live = false;
    int code = 0;  // of its last error
};

struct World {
    OCINumber records[4];
    Environment environments[2];
    Handle handles[4];

    ~World() {
        set_log(false);
        for (unsigned i = 0; i < 2; ++i) free_environment(i);
    }

    OCIError *error(unsigned i) {
        return handles[i].is_live ? static_cast<OCIError *>(handles[i].handle) : nullptr;
    }

    void create_environment(unsigned i) {
        if (environments[i].is_live) return;
        void *extra = nullptr;
        REQUIRE(OCIEnvCreate(&environments[i].env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr,
                             i * 40, &extra) == OCI_SUCCESS);
        if (i > 0) std::memset(extra, 0x77, i * 40);
        environments[i].is_live = true;
    }
    void free_environment(unsigned i) {
        Environment &e = environments[i];
        REQUIRE(OCIHandleFree(e.env, OCI_HTYPE_ENV) ==
                (e.is_live ? OCI_SUCCESS : OCI_INVALID_HANDLE));
        e.is_live = false;
        for (Handle &h : handles) h.is_live &= h.parent != i;
    }
    void create_handle(unsigned i, unsigned parent) {
        Handle &h = handles[i];
        if (h.is_live) return;
        void *made = nullptr;
        const sword status =
            OCIHandleAlloc(environments[parent].env, &made, OCI_HTYPE_ERROR, 0, nullptr);
        REQUIRE(status == (environments[parent].is_live ? OCI_SUCCESS : OCI_INVALID_HANDLE));
        REQUIRE((made != nullptr) == (status == OCI_SUCCESS));
        if (made != nullptr) h = {made, parent, true, 0};
    }
    void free_handle(unsigned i) {
        Handle &h = handles[i];
        REQUIRE(OCIHandleFree(h.handle, OCI_HTYPE_ENV) == OCI_INVALID_HANDLE);
        REQUIRE(OCIHandleFree(h.handle, OCI_HTYPE_ERROR) ==
                (h.is_live ? OCI_SUCCESS : OCI_INVALID_HANDLE));
        h.is_live = false;
    }

    // The error that stands in the handle, by the room for its message.
    void read_error(unsigned i, ub4 room) {
        Handle &h = handles[i];
        std::vector<OraText> message(room, unused);
        sb4 code = -7;
        const sword status =
            OCIErrorGet(h.handle, 1, nullptr, &code, message.data(), room, OCI_HTYPE_ERROR);
        if (!h.is_live) {
            REQUIRE(status == OCI_INVALID_HANDLE && code == -7);
            return;
        }
        REQUIRE(status == OCI_SUCCESS || status == OCI_NO_DATA || status == OCI_ERROR);
        if (h.code != 0) REQUIRE(status != OCI_NO_DATA && code == h.code);
        if (status == OCI_SUCCESS && room > 0) {
            REQUIRE(std::memchr(message.data(), 0, room) != nullptr);
        }
        REQUIRE(OCIErrorGet(h.handle, 2, nullptr, &code, nullptr, 0, OCI_HTYPE_ERROR) ==
                OCI_NO_DATA);
    }

    // Calls with one of the handles; the record `result` alone may change, none for -1.
    template <class Call>
    sword call(unsigned handle, int result, Call make) {
        const std::array<OCINumber, 4> before = std::to_array(records);
        OCIError *const err = error(handle);
        const sword status = make(err);
        for (unsigned i = 0; i < 4; ++i) {
            if (static_cast<int>(i) != result || status != OCI_SUCCESS)
                REQUIRE(records[i] == before[i]);
        }
        if (err == nullptr) {
            REQUIRE(status == OCI_INVALID_HANDLE);
        } else {
            Handle &h = handles[handle];
            if (status == OCI_SUCCESS) REQUIRE(err->err_code == h.code);
            h.code = err->err_code;
            REQUIRE(h.code == 0 || err->err_message[0] != 0);
        }
        return status;
    }
};

// The integer comes back where it was written.
void convert_integer(World &world, unsigned handle, unsigned record, ub8 bits, unsigned choice) {
    const uword length = 1u << choice % 4;
    const uword flag = choice & 4 ? OCI_NUMBER_SIGNED : OCI_NUMBER_UNSIGNED;
    const char *const from = low_part(bits, length);
    OCINumber *const n = &world.records[record];
    const sword status = world.call(handle, static_cast<int>(record), [&](OCIError *err) {
        return OCINumberFromInt(err, from, length, flag, n);
    });
    if (status != OCI_SUCCESS) return;
    ub8 back = 0;
    REQUIRE(world.call(handle, -1, [&](OCIError *err) {
        return OCINumberToInt(err, n, length, flag, low_part(back, length));
    }) == OCI_SUCCESS);
    REQUIRE(std::memcmp(low_part(back, length), from, length) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr;  // where print_number writes
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed) {
    return mutate(data, size, max_size, seed, 0, 4);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    World world;
    for (OCINumber &n : world.records) n = source.take<OCINumber>();
    world.create_environment(0);
    world.create_handle(0, 0);
    for (int steps = 0; steps < 100 && !source.rest().empty(); ++steps) {
        const unsigned step = source.take<ub1>(), choice = source.take<ub1>();
        const unsigned a = choice % 4, b = choice / 4 % 4, r = choice / 16 % 4, h = choice / 64;
        switch (step) {
            case 255: set_log(choice % 2); continue;
            case 254: world.create_environment(a % 2); continue;
            case 253: world.free_environment(a % 2); continue;
            case 252: world.create_handle(a, b % 2); continue;
            case 251: world.free_handle(a); continue;
            case 250: world.read_error(a, choice); continue;
            case 249:
                OCINumberSetZero(world.error(h), &world.records[r]);
                REQUIRE(value_bytes(world.records[r]) == (Bytes{1, 128}));
                continue;
            case 248: OCINumberSetPi(world.error(h), &world.records[r]); continue;
            case 247: REQUIRE(print_number(&world.records[r]) == 0); continue;
            case 246: convert_integer(world, h, r, source.take<ub8>(), choice % 8); continue;
            default: break;
        }
        const Function &f = functions[step % std::size(functions)];
        const auto count = f.has_count() ? source.take<sb2>() : sb2{0};
        alignas(8) OCINumber integer;
        const int result = !f.gives_number ? -1 : static_cast<int>(f.result == 0 ? a : r);
        world.call(h, result, [&](OCIError *err) {
            return f.call(err, &world.records[a], &world.records[b], count,
                          f.gives_number ? &world.records[r] : &integer);
        });
    }
    return 0;
}
