/* What stands around the fragments of a page. */
#include <oci.h>
#include <stdio.h>
#include <string.h>

static OCIError *err;

static OCINumber number(const char *text) {
    char model[400];
    OCINumber n = {{2, 255, 101}};
    if (strcmp(text, "inf") == 0) return n;
    if (strcmp(text, "-inf") == 0) {
        OCINumberNeg(err, &n, &n);
        return n;
    }
    memset(model, '9', sizeof model);
    model[200] = '.';
    if (OCINumberFromText(err, (const OraText *)text, (ub4)strlen(text), (const OraText *)model,
                          sizeof model, NULL, 0, &n)) {
        printf("%s is refused\n", text);
    }
    return n;
}

/* Text as OCINumberToText writes it; bytes of what has none. */
static void show(const OCINumber *n) {
    OraText text[129];
    ub4 i, size = sizeof text;
    if (OCINumberToText(err, n, (const OraText *)"TM", 2, NULL, 0, &size, text) == OCI_SUCCESS) {
        printf("%.*s\n", (int)size, (const char *)text);
        return;
    }
    for (i = 0; i <= n->OCINumberPart[0]; ++i) printf("%d ", n->OCINumberPart[i]);
    printf("\n");
}

/* A status, and the error that the handle holds. */
static void told(sword status) {
    OraText message[OCI_ERROR_MAXMSG_SIZE2 + 1] = "";
    sb4 code = 0;
    if (status == OCI_ERROR) {
        OCIErrorGet(err, 1, NULL, &code, message, sizeof message, OCI_HTYPE_ERROR);
        message[strcspn((const char *)message, "\n")] = '\0';
    }
    printf("status %d, %d %s\n", (int)status, (int)code, (const char *)message);
}

int main(void) {
    OCIEnv *env;
    OCINumber n;
    (void)number, (void)show, (void)told;
    if (OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL)) return 1;
    if (OCIHandleAlloc(env, (void **)&err, OCI_HTYPE_ERROR, 0, NULL)) return 1;
    OCINumberSetZero(err, &n);
    /* here */
    return OCIHandleFree(env, OCI_HTYPE_ENV);
}
