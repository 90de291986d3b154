/* A program of somebody else: C99, and C++ by way of consumer.cpp. */
#include <oci.h>
#include <oci_number_log.h>
#include <stdio.h>
#include <string.h>

static void count_lines(void *context, int level, const char *file, long line, const char *text,
                        size_t length) {
    if (level == LOG_LEVEL_ERROR && *file && line > 0 && strlen(text) == length) ++*(int *)context;
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
    OCINumber number;
    int one = 1, lines = 0;
    sb4 code = 0;
    OraText message[OCI_ERROR_MAXMSG_SIZE2];

    CHECK(OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL) == OCI_SUCCESS);
    CHECK(OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, NULL) == OCI_SUCCESS);
    OCIError *err = (OCIError *)handle;
    CHECK(OCINumberFromInt(err, &one, sizeof one, OCI_NUMBER_SIGNED, &number) == OCI_SUCCESS);
    CHECK(memcmp(&number, "\x02\xC1\x02", 3) == 0);

    qzoci_log_set_sink(count_lines, &lines);
    qzoci_log_set_level(LOG_LEVEL_ERROR);
    CHECK(OCINumberSqrt(err, NULL, &number) == OCI_ERROR);
    CHECK(OCIErrorGet(err, 1, NULL, &code, message, sizeof message, OCI_HTYPE_ERROR) ==
          OCI_SUCCESS);
    CHECK(code == 21560 && strncmp((const char *)message, "OCI-21560: ", 11) == 0);
    CHECK(lines == 1);
    CHECK(OCIHandleFree(env, OCI_HTYPE_ENV) == OCI_SUCCESS);
    return 0;
}
