/* Calls the library and prints what came of it, a line for each call. */
#include <oci.h>
#include <stdio.h>

int main(void) {
    OCIEnv *env = NULL;
    void *handle = NULL;
    OCINumber n, sum;
    const double reals[] = {0.1, -1e100, 12345.678};
    sword status = OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL);
    printf("OCIEnvCreate %d\n", status);
    if (status != OCI_SUCCESS) return 0;
    status = OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, NULL);
    printf("OCIHandleAlloc %d\n", status);
    OCIError *const err = handle;
    OCINumberSetPi(err, &sum);
    for (int i = 0; err != NULL && i < 3; ++i) {
        OraText text[64] = "";
        ub4 size = sizeof text;
        sb4 code = 0;
        status = OCINumberFromReal(err, &reals[i], sizeof reals[i], &n);
        if (status != OCI_SUCCESS) OCIErrorGet(err, 1, NULL, &code, NULL, 0, OCI_HTYPE_ERROR);
        printf("OCINumberFromReal %d %d\n", status, (int)code);
        if (status == OCI_SUCCESS) OCINumberAdd(err, &sum, &n, &sum);
        /* A message and a line of the log that do not fit the buffers that are at hand. */
        static OraText model[2000];
        for (size_t k = 0; k < sizeof model; ++k) model[k] = (OraText)('a' + i);
        status = OCINumberToText(err, &sum, model, sizeof model, NULL, 0, &size, text);
        OCIErrorGet(err, 1, NULL, &code, NULL, 0, OCI_HTYPE_ERROR);
        printf("OCINumberToText %d %d\n", status, (int)code);
    }
    printf("OCIHandleFree %d\n", OCIHandleFree(env, OCI_HTYPE_ENV));
    return 0;
}
