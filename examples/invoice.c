/* An invoice with taxes, in C: quantities and prices come as text, each line is rounded to cents,
 * each tax once on its sum. Every call is checked; what failed is told by OCIErrorGet. */
#include <oci.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static OCIError *err;

struct item {
    const char *name, *quantity, *price; /* as somebody typed them */
    int tax;                             /* in percent */
};

static const struct item items[] = {
    {"Oak board, 2.40 m", "7", "23.95", 19},
    {"Screws, box of 200", "3", "8.49", 19},
    {"Linseed oil, litre", "2.5", "11.8", 19},
    {"Joinery, a handbook", "1", "34.90", 7},
    {"Delivery", "1", "12,00", 19},
};
static const int taxes[] = {19, 7};

/* Prints the last error; returns whether the call succeeded. */
static int succeeded(sword status, const char *what) {
    OraText message[OCI_ERROR_MAXMSG_SIZE2 + 1];
    sb4 code = 0;
    if (status == OCI_SUCCESS) return 1;
    if (status == OCI_ERROR &&
        OCIErrorGet(err, 1, NULL, &code, message, sizeof message, OCI_HTYPE_ERROR) == OCI_SUCCESS) {
        message[strcspn((const char *)message, "\n")] = '\0';
        printf("%s: error %d, %s\n", what, (int)code, (const char *)message);
    } else {
        printf("%s: status %d\n", what, (int)status);
    }
    return 0;
}

/* For calls that can fail by a mistake in this program only. */
static void must(sword status, const char *what) {
    if (!succeeded(status, what)) exit(1);
}

static int read_number(const char *text, OCINumber *number) {
    static const char model[] = "999999999.9999";
    return succeeded(OCINumberFromText(err, (const OraText *)text, (ub4)strlen(text),
                                       (const OraText *)model, (ub4)strlen(model), NULL, 0, number),
                     text);
}

static void from_int(int value, OCINumber *number) {
    must(OCINumberFromInt(err, &value, sizeof value, OCI_NUMBER_SIGNED, number), "FromInt");
}

static void print_line(const char *name, const OCINumber *amount) {
    static const char model[] = "99999990.00";
    OraText text[32];
    ub4 size = sizeof text;
    must(OCINumberToText(err, amount, (const OraText *)model, (ub4)strlen(model), NULL, 0, &size,
                         text),
         "ToText");
    printf("%-28s%.*s\n", name, (int)size, (const char *)text);
}

int main(void) {
    OCIEnv *env;
    void *handle;
    OCINumber net[2], total, quantity, price, amount, rate;
    char name[40];
    size_t i, t;

    if (OCIEnvCreate(&env, OCI_DEFAULT, NULL, NULL, NULL, NULL, 0, NULL) != OCI_SUCCESS ||
        OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, NULL) != OCI_SUCCESS) {
        fputs("no memory\n", stderr);
        return 1;
    }
    err = handle;

    OCINumberSetZero(err, &total);
    for (t = 0; t < 2; ++t) OCINumberSetZero(err, &net[t]);
    for (i = 0; i < sizeof items / sizeof items[0]; ++i) {
        if (!read_number(items[i].quantity, &quantity) || !read_number(items[i].price, &price)) {
            printf("%-28s    left out\n", items[i].name);
            continue;
        }
        must(OCINumberMul(err, &quantity, &price, &amount), "Mul");
        must(OCINumberRound(err, &amount, 2, &amount), "Round");
        print_line(items[i].name, &amount);
        for (t = 0; t < 2; ++t) {
            if (taxes[t] == items[i].tax) must(OCINumberAdd(err, &net[t], &amount, &net[t]), "Add");
        }
    }
    for (t = 0; t < 2; ++t) {
        from_int(taxes[t], &rate);
        must(OCINumberShift(err, &rate, -2, &rate), "Shift");
        must(OCINumberMul(err, &net[t], &rate, &amount), "Mul");
        must(OCINumberRound(err, &amount, 2, &amount), "Round");
        snprintf(name, sizeof name, "Tax, %d %%", taxes[t]);
        print_line(name, &amount);
        must(OCINumberAdd(err, &total, &net[t], &total), "Add");
        must(OCINumberAdd(err, &total, &amount, &total), "Add");
    }
    print_line("To be paid", &total);
    return OCIHandleFree(env, OCI_HTYPE_ENV);
}
