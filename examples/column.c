/* A column of records to doubles, in C: one call converts the amounts of all records, wherever
 * they lie; statistics do not need their last digit. */
#include <math.h>
#include <oci.h>
#include <stdio.h>
#include <string.h>

struct payment {
    ub4 account;
    char purpose[12];
    OCINumber amount;
};

enum { count = 6 };

static int fill(OCIError *err, struct payment *payments) {
    static const char *const amounts[count] = {"120.5", "-35.25", "0.1", "1999.99", "64", "7.75"};
    static const char model[] = "99999.99";
    size_t i;
    for (i = 0; i < count; ++i) {
        payments[i].account = (ub4)(1000 + i);
        strcpy(payments[i].purpose, "rent");
        if (OCINumberFromText(err, (const OraText *)amounts[i], (ub4)strlen(amounts[i]),
                              (const OraText *)model, (ub4)strlen(model), NULL, 0,
                              &payments[i].amount) != OCI_SUCCESS) {
            return 0;
        }
    }
    return 1;
}

/* Converts and prints; tells which record ended the conversion, if one did. */
static void report(OCIError *err, const struct payment *payments) {
    const OCINumber *column[count];
    double values[count], sum = 0, low = INFINITY, high = -INFINITY;
    size_t i;
    sword status;
    for (i = 0; i < count; ++i) {
        column[i] = &payments[i].amount;
        values[i] = NAN; /* what the call does not reach stays so */
    }
    status = OCINumberToRealArray(err, column, count, sizeof values[0], values);
    for (i = 0; i < count && !isnan(values[i]); ++i) {
        sum += values[i];
        low = fmin(low, values[i]);
        high = fmax(high, values[i]);
    }
    printf("%u payments: sum %.2f, mean %.3f, from %.2f to %.2f\n", (unsigned)i, sum,
           sum / (double)i, low, high);
    if (status != OCI_SUCCESS) {
        /* Bytes that hold no number leave no message, other failures do. */
        OraText message[OCI_ERROR_MAXMSG_SIZE2 + 1] = "the bytes hold no number";
        sb4 code = 0;
        OCIErrorGet(err, 1, NULL, &code, message, sizeof message, OCI_HTYPE_ERROR);
        printf("account %u: %s\n", (unsigned)payments[i].account, (const char *)message);
    }
}

int main(void) {
    OCIEnv *env;
    void *err;
    struct payment payments[count];
    if (OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL) != OCI_SUCCESS ||
        OCIHandleAlloc(env, &err, OCI_HTYPE_ERROR, 0, NULL) != OCI_SUCCESS ||
        !fill(err, payments)) {
        return 1;
    }
    report(err, payments);
    memset(&payments[3].amount, 0, sizeof payments[3].amount); /* a record that nobody filled */
    report(err, payments);
    return OCIHandleFree(env, OCI_HTYPE_ENV);
}
