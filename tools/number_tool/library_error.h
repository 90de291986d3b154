// The library's error handle, for the commands that call its functions.
#pragma once

#include <new>
#include <string>

#include "oci.h"

namespace number_tool {

class LibraryError {
public:
    LibraryError() {
        void *handle = nullptr;
        if (OCIEnvCreate(&env_, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) != 0 ||
            OCIHandleAlloc(env_, &handle, OCI_HTYPE_ERROR, 0, nullptr) != 0) {
            throw std::bad_alloc();
        }
        handle_ = static_cast<OCIError *>(handle);
    }
    LibraryError(const LibraryError &) = delete;
    LibraryError &operator=(const LibraryError &) = delete;
    ~LibraryError() { OCIHandleFree(env_, OCI_HTYPE_ENV); }

    OCIError *handle() const { return handle_; }

    // Number and message of the last failure; the message without its line end.
    int code() const { return read(nullptr, 0); }
    std::string message() const {
        OraText text[OCI_ERROR_MAXMSG_SIZE2 + 1];
        read(text, sizeof text);
        std::string message = reinterpret_cast<char *>(text);
        while (message.ends_with('\n')) message.pop_back();
        return message;
    }

private:
    int read(OraText *text, ub4 size) const {
        sb4 code = 0;
        OCIErrorGet(handle_, 1, nullptr, &code, text, size, OCI_HTYPE_ERROR);
        return code;
    }

    OCIEnv *env_ = nullptr;
    OCIError *handle_ = nullptr;
};

}  // namespace number_tool
