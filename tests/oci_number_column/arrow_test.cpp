// Columns as Arrow arrays: types, offsets, and who releases what when.
#include "oci_number_arrow.h"

#include "oci_number_column/columns.h"

namespace {

const OCINumber twelve = number({2, 193, 13});

int released;
void count_release(void *context) { ++*static_cast<int *>(context); }

struct Exported {
    oci_number_arrow_owner owner = {count_release, &released, {}, {}, 0};
    ArrowSchema schema;
    ArrowArray array;
    explicit Exported(const oci_number_column &column, sb8 nulls = -1) {
        released = 0;
        EXPECT_EQ(oci_number_arrow_export(&column, nulls, &owner, &schema, &array),
                  OCI_NUMBER_DONE);
    }
};

TEST(ColumnArrow, KnowsTheTypes) {
    const struct {
        oci_number_form form;
        sb4 precision, scale;
        std::string format;
        bool comes_back;
    } rows[] = {{OCI_NUMBER_RECORDS, 0, 0, "w:22", true},
                {OCI_NUMBER_BYTES_32, 0, 0, "z", true},
                {OCI_NUMBER_BYTES_64, 0, 0, "Z", true},
                {OCI_NUMBER_INT64, 0, 0, "l", true},
                {OCI_NUMBER_DOUBLE, 0, 0, "g", true},
                {OCI_NUMBER_TEXT_32, 0, 0, "u", true},
                {OCI_NUMBER_TEXT_64, 0, 0, "U", true},
                {OCI_NUMBER_DECIMAL128, 38, -10, "d:38,-10", true},
                {OCI_NUMBER_DECIMAL256, 76, 128, "d:76,128,256", true},
                {OCI_NUMBER_KEYS, 0, 0, "w:22", false},
                {OCI_NUMBER_ORDER, 0, 0, "c", false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.format);
        TestColumn column(row.form, 3, 3 * 32);
        column.column.precision = row.precision;
        column.column.scale = row.scale;
        Exported exported(column.column, 2);
        EXPECT_EQ(exported.schema.format, row.format);
        EXPECT_EQ(exported.array.null_count, 2);
        EXPECT_EQ(exported.array.length, 3);
        oci_number_column back = {};
        if (row.comes_back) {
            EXPECT_EQ(oci_number_arrow_import(&exported.schema, &exported.array, &back),
                      OCI_NUMBER_DONE);
            EXPECT_EQ(back.form, row.form);
            EXPECT_EQ(back.precision, row.precision);
            EXPECT_EQ(back.scale, row.scale);
            EXPECT_EQ(back.data, column.column.data);
            EXPECT_EQ(back.validity, column.column.validity);
        }
        exported.schema.release(&exported.schema);
        exported.array.release(&exported.array);
    }
    for (const char *format :
         {"", "i", "w:21", "d:38", "d:38,2,64", "d:38,2,128x", "d:,2", "+s", "d:39,2", "c"}) {
        TestColumn column(OCI_NUMBER_INT64, 1, 8);
        Exported exported(column.column);
        exported.schema.format = format;
        oci_number_column back = {};
        EXPECT_EQ(oci_number_arrow_import(&exported.schema, &exported.array, &back),
                  OCI_NUMBER_BAD_CALL)
            << format;
    }
}

// A part of an array is its rows from an offset on.
TEST(ColumnArrow, ReadsFromAnOffset) {
    for (const auto form : {OCI_NUMBER_RECORDS, OCI_NUMBER_BYTES_32, OCI_NUMBER_BYTES_64}) {
        Rows rows;
        Present present;
        for (int i = 0; i < 30; ++i) {
            rows.push_back(number(Decimal(std::to_string(i * i - 100)).bytes()));
            present.push_back(i % 5 != 0);
        }
        const TestColumn from = column_of(form, rows, present);
        Exported exported(from.column);
        exported.array.offset = 7;
        exported.array.length = 20;
        oci_number_column part;
        ASSERT_EQ(oci_number_arrow_import(&exported.schema, &exported.array, &part),
                  OCI_NUMBER_DONE);
        TestColumn to(OCI_NUMBER_INT64, 20, 160);
        ASSERT_EQ(oci_number_column_convert(&part, &to.column, OCI_NUMBER_STOP, nullptr),
                  OCI_NUMBER_DONE);
        for (size_t i = 0; i < 20; ++i) {
            sb8 value;
            std::memcpy(&value, to.at(8 * i), sizeof value);
            const auto row = static_cast<sb8>(i) + 7;
            EXPECT_EQ(to.is_present(i), row % 5 != 0);
            EXPECT_EQ(value, row % 5 != 0 ? row * row - 100 : 0);
        }
    }
}

TEST(ColumnArrow, ReleasesItsOwnerOnce) {
    const TestColumn column = column_of(OCI_NUMBER_RECORDS, {twelve}, {true});
    for (const bool schema_first : {true, false}) {
        Exported exported(column.column);
        // As a consumer does that takes the array over: it moves the struct.
        ArrowArray moved = exported.array;
        exported.array.release = nullptr;
        oci_number_column back;
        EXPECT_EQ(oci_number_arrow_import(&exported.schema, &exported.array, &back),
                  OCI_NUMBER_BAD_CALL);
        if (schema_first) exported.schema.release(&exported.schema);
        EXPECT_EQ(released, 0);
        moved.release(&moved);
        EXPECT_EQ(moved.release, nullptr);
        EXPECT_EQ(released, schema_first ? 1 : 0);
        if (!schema_first) exported.schema.release(&exported.schema);
        EXPECT_EQ(exported.schema.release, nullptr);
        EXPECT_EQ(released, 1);
    }
}

TEST(ColumnArrow, RefusesWhatArrowHasNot) {
    TestColumn column = column_of(OCI_NUMBER_RECORDS, {twelve, twelve}, {true, true}, 3);
    oci_number_arrow_owner owner = {};
    ArrowSchema schema;
    ArrowArray array;
    const auto exports = [&] {
        return oci_number_arrow_export(&column.column, -1, &owner, &schema, &array) ==
               OCI_NUMBER_DONE;
    };
    EXPECT_FALSE(exports());  // the third bit of a byte
    column.column.validity_offset = 0;
    EXPECT_TRUE(exports());
    column.column.stride = 23;
    EXPECT_FALSE(exports());
    column.column.form = OCI_NUMBER_PREFIXED;
    EXPECT_FALSE(exports());
}

}  // namespace
