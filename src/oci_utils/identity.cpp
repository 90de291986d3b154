// Who speaks: the version, the prefixes of error messages, the calling thread.
#include "oci.h"
#include "oci_utils/oci_utils.h"

extern "C" const char *oci_number_version(void) { return OCI_NUMBER_VERSION; }

extern "C" const char *qzci_oci_prefix(void) { return "OCI"; }

extern "C" const char *qzci_ora_prefix(void) { return "ORA"; }

extern "C" pthread_t qz_thread_self(void) { return pthread_self(); }
