// The extension module, and how failures become Python's exceptions.
#include "core.h"

NB_MODULE(_core, module) {
    module.doc() = "What the package is made of; import oci_number instead.";
    module.attr("version") = OCI_NUMBER_VERSION;
    // What modules still hold when the interpreter ends is no fault.
    nb::set_leak_warnings(false);
    nb::register_exception_translator([](const std::exception_ptr &failure, void *) {
        try {
            std::rethrow_exception(failure);
        } catch (const oci::error &error) {
            PyObject *type = PyExc_ValueError;
            if (error.code() == oci::errc::divide_by_zero) type = PyExc_ZeroDivisionError;
            if (error.code() == oci::errc::overflow) type = PyExc_OverflowError;
            PyErr_SetString(type, error.what());
        }
    });
    bind_number(module);
    bind_column(module);
}
