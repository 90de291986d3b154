/* A column of records in C: the exact total, the amounts as decimals with two places, and which of
 * them have more. */
#include <oci_number_column.h>
#include <stdio.h>

typedef struct Payment {
    int id;
    OCINumber amount;
} Payment;

/* 0.10, 100000000000000000000, -250.75, 1.005, -100000000000000000000 */
static Payment payments[] = {
    {1, {{2, 192, 11}}},       {2, {{2, 203, 2}}},       {3, {{5, 61, 99, 51, 26, 102}}},
    {4, {{4, 193, 2, 1, 51}}}, {5, {{3, 52, 100, 102}}},
};
enum { count = sizeof payments / sizeof payments[0] };

static void print_total(const oci_number_column *amounts) {
    oci_number_sum sum;
    oci_number_tally tally;
    OCINumber total;
    char text[OCI_NUMBER_MAX_TEXT];
    sb4 offsets[2];
    const oci_number_column from = {
        .form = OCI_NUMBER_RECORDS, .length = 1, .data = &total, .stride = sizeof total};
    const oci_number_column to = {.form = OCI_NUMBER_TEXT_32,
                                  .length = 1,
                                  .data = text,
                                  .size = sizeof text,
                                  .offsets = offsets};

    oci_number_sum_start(&sum);
    if (oci_number_sum_add(&sum, amounts, OCI_NUMBER_STOP, &tally)) return;
    if (oci_number_sum_value(&sum, &total)) return;
    if (oci_number_column_convert(&from, &to, OCI_NUMBER_STOP, NULL)) return;
    printf("%d payments, %.*s in total\n", (int)tally.values, (int)offsets[1], text);
}

/* Of 16 bytes, the least significant first. */
static sb8 low_half(const ub1 *units) {
    ub8 value = 0;
    for (int i = 8; i-- > 0;) value = value << 8 | units[i];
    return (sb8)value;
}

int main(void) {
    ub1 units[count][16];
    ub1 validity[1];
    oci_number_tally tally;
    const oci_number_column amounts = {.form = OCI_NUMBER_RECORDS,
                                       .length = count,
                                       .data = &payments[0].amount,
                                       .stride = sizeof payments[0]};
    const oci_number_column cents = {.form = OCI_NUMBER_DECIMAL128,
                                     .precision = 18,
                                     .scale = 2,
                                     .length = count,
                                     .data = units,
                                     .validity = validity};

    print_total(&amounts);
    if (oci_number_column_convert(&amounts, &cents, OCI_NUMBER_NULL, &tally)) return 1;
    printf("%d refused, the first in row %d: %s\n", (int)tally.refused, (int)tally.first_refused,
           oci_number_reason_text(tally.reason));
    for (int i = 0; i < count; ++i) {
        if (validity[0] >> i & 1) {
            printf("payment %d: %ld cents\n", payments[i].id, (long)low_half(units[i]));
        }
    }
    return 0;
}
