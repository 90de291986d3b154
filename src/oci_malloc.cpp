#include "oci_malloc.h"

#include <cstdlib>

#include "oci_log.h"

extern "C" void *qzci_malloc(size_t size, const char *tag) {
    void *p = std::malloc(size);
    QZOCI_LOG_TRACE("malloc %p size %zu tag %s", p, size, tag);
    return p;
}

extern "C" void qzci_free(void *p) {
    QZOCI_LOG_TRACE("free %p", p);
    std::free(p);
}
