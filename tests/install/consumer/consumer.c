/* A program of somebody else: C99, and C++ by way of consumer.cpp. */
#define OCI_NUMBER_NO_PRINTERS
#include <oci.h>
#include <oci_number_log.h>
#include <stdio.h>
#include <string.h>

#define CHECK(condition)                                            \
    do {                                                            \
        if (!(condition)) {                                         \
            fprintf(stderr, "line %d: %s\n", __LINE__, #condition); \
            return 1;                                               \
        }                                                           \
    } while (0)

/* The program's own; the library has functions of these names, the last public. */
#ifdef __cplusplus
extern "C" {
#endif
int getNumberFromStr(void);
int my_strtoll10(void);
const char *print_number(void);
int getNumberFromStr(void) { return -1; }
int my_strtoll10(void) { return -1; }
const char *print_number(void) { return "mine"; }
#ifdef __cplusplus
}
#endif

int main(void) {
    CHECK(strcmp(oci_number_version(), OCI_NUMBER_VERSION) == 0);
    OCIEnv *env = NULL;
    void *handle = NULL;
    OCINumber number;
    int one = 1;
    sb4 code = 0;
    OraText message[OCI_ERROR_MAXMSG_SIZE2];

    CHECK(OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL) == OCI_SUCCESS);
    CHECK(OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, NULL) == OCI_SUCCESS);
    OCIError *err = (OCIError *)handle;
    CHECK(OCINumberFromInt(err, &one, sizeof one, OCI_NUMBER_SIGNED, &number) == OCI_SUCCESS);
    CHECK(memcmp(&number, "\x02\xC1\x02", 3) == 0);
    CHECK(OCINumberFromText(err, (const OraText *)"42", 2, (const OraText *)"99", 2, NULL, 0,
                            &number) == OCI_SUCCESS);
    CHECK(memcmp(&number, "\x02\xC1\x2B", 3) == 0);
    CHECK(OCINumberToInt(err, &number, sizeof one, OCI_NUMBER_SIGNED, &one) == OCI_SUCCESS);
    CHECK(one == 42);
    CHECK(strcmp(print_number(), "mine") == 0);

    CHECK(qzoci_log_get_level() == QZOCI_LOG_OFF);
    CHECK(OCINumberSqrt(err, NULL, &number) == OCI_ERROR);
    CHECK(OCIErrorGet(err, 1, NULL, &code, message, sizeof message, OCI_HTYPE_ERROR) ==
          OCI_SUCCESS);
    CHECK(code == 21560 && strncmp((const char *)message, "OCI-21560: ", 11) == 0);
    CHECK(OCIHandleFree(env, OCI_HTYPE_ENV) == OCI_SUCCESS);
    return 0;
}
