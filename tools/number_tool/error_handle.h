// An environment and its error handle, for commands that call the library.
#pragma once

#include <new>
#include <string>

#include "oci.h"

namespace number_tool {

class ErrorHandle {
public:
    ErrorHandle() {
        void *handle = nullptr;
        if (OCIEnvCreate(&env_, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
                OCI_SUCCESS ||
            OCIHandleAlloc(env_, &handle, OCI_HTYPE_ERROR, 0, nullptr) != OCI_SUCCESS) {
            throw std::bad_alloc();
        }
        err_ = static_cast<OCIError *>(handle);
    }
    ~ErrorHandle() { OCIHandleFree(env_, OCI_HTYPE_ENV); }
    ErrorHandle(const ErrorHandle &) = delete;
    ErrorHandle &operator=(const ErrorHandle &) = delete;

    OCIError *get() const { return err_; }

    // The number of the last failure.
    int code() const {
        sb4 code = 0;
        OCIErrorGet(err_, 1, nullptr, &code, nullptr, 0, OCI_HTYPE_ERROR);
        return code;
    }
    // Its message, without its line end.
    std::string message() const {
        OraText text[OCI_ERROR_MAXMSG_SIZE2 + 1] = "";
        sb4 code = 0;
        OCIErrorGet(err_, 1, nullptr, &code, text, sizeof text, OCI_HTYPE_ERROR);
        std::string result = reinterpret_cast<const char *>(text);
        while (result.ends_with('\n')) result.pop_back();
        return result;
    }

private:
    OCIEnv *env_ = nullptr;
    OCIError *err_ = nullptr;
};

}  // namespace number_tool
