/* A program of somebody else: C99, and C++ by way of consumer.cpp. */
#include <oci.h>
#include <oci_number_log.h>
#include <stdio.h>
#include <string.h>

static int lines;

static void count_errors(void *context, int level, const char *file, long line, const char *text,
                         size_t length) {
    (void)file;
    (void)line;
    if (level == LOG_LEVEL_ERROR && strlen(text) == length) ++*(int *)context;
}

#define CHECK(condition)                                            \
    do {                                                            \
        if (!(condition)) {                                         \
            fprintf(stderr, "line %d: %s\n", __LINE__, #condition); \
            return 1;                                               \
        }                                                           \
    } while (0)

int main(void) {
    OCIEnv *env = NULL;
    void *handle = NULL;
    OCIError *err;
    OCINumber one, minus_two;
    int small = 1, order = 0;
    long long big = -2;
    sb4 code = 0;
    OraText message[OCI_ERROR_MAXMSG_SIZE2];

    CHECK(OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL) == OCI_SUCCESS);
    CHECK(OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, NULL) == OCI_SUCCESS);
    err = (OCIError *)handle;
    CHECK(OCINumberFromInt(err, &small, sizeof small, OCI_NUMBER_SIGNED, &one) == OCI_SUCCESS);
    CHECK(memcmp(&one, "\x02\xC1\x02", 3) == 0);
    CHECK(OCINumberFromInt(err, &big, sizeof big, OCI_NUMBER_SIGNED, &minus_two) == OCI_SUCCESS);
    CHECK(OCINumberCmp(err, &minus_two, &one, &order) == OCI_SUCCESS && order < 0);

    qzoci_log_set_sink(count_errors, &lines);
    qzoci_log_set_level(LOG_LEVEL_ERROR);
    one.OCINumberPart[0] = 0;
    CHECK(OCINumberCmp(err, &minus_two, &one, &order) == OCI_ERROR);
    CHECK(OCIErrorGet(err, 1, NULL, &code, message, sizeof message, OCI_HTYPE_ERROR) ==
          OCI_SUCCESS);
    CHECK(code == 22060 && strncmp((const char *)message, "OCI-22060: ", 11) == 0);
    CHECK(lines == 1);
    CHECK(OCIHandleFree(env, OCI_HTYPE_ENV) == OCI_SUCCESS);
    return 0;
}
