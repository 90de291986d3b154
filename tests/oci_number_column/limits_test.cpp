// What columns take: room, lengths and offsets that lie, calls that are refused.
#include <set>
#include <thread>

#include "oci_number_column/columns.h"

namespace {

const OCINumber twelve = number({2, 193, 13});

// Offsets and records that go anywhere but where the data is.
TEST(ColumnLimits, LyingLengths) {
    Random random = seeded();
    for (long round = random_cases(300); round > 0; --round) {
        const size_t count = 1 + random() % 100, size = random() % 60;
        const auto form = number_forms[1 + random() % 3];
        TestColumn from(form, count, size);
        auto *const data = static_cast<ub1 *>(from.column.data);
        for (size_t i = 0; i < size; ++i)
            data[i] = static_cast<ub1>(random() % 8 ? random() % 30 : random());
        for (size_t i = 0; i <= count; ++i) {
            sb8 offset = static_cast<sb8>(random() % (size + 1));
            if (random() % 4 == 0) offset = static_cast<sb8>(random()) >> random() % 60;
            std::memcpy(static_cast<char *>(from.column.offsets) + (is_wide(form) ? 8 : 4) * i,
                        &offset, is_wide(form) ? 8 : 4);
        }
        from.column.validity = nullptr;
        TestColumn to(OCI_NUMBER_DOUBLE, count, 8 * count),
            text(OCI_NUMBER_TEXT_64, count, 128 * count);
        oci_number_tally tally;
        EXPECT_EQ(oci_number_column_convert(&from.column, &to.column, OCI_NUMBER_NULL, &tally),
                  OCI_NUMBER_DONE);
        EXPECT_EQ(tally.values + tally.refused, count);
        EXPECT_EQ(oci_number_column_convert(&from.column, &text.column, OCI_NUMBER_NULL, &tally),
                  OCI_NUMBER_DONE);
        text.column.size = random() % (tally.size + 1);
        EXPECT_EQ(oci_number_column_convert(&text.column, &to.column, OCI_NUMBER_NULL, &tally),
                  OCI_NUMBER_BAD_CALL);
        TestColumn back(OCI_NUMBER_RECORDS, count, 22 * count);
        EXPECT_EQ(oci_number_column_convert(&text.column, &back.column, OCI_NUMBER_NULL, &tally),
                  OCI_NUMBER_DONE);
    }
}

// A record cut short, and those behind it, have no bytes.
TEST(ColumnLimits, RecordsThatAreCut) {
    TestColumn from = column_of(OCI_NUMBER_PREFIXED, {twelve, twelve, twelve}, {true, true, true});
    from.column.size = 5;
    TestColumn to(OCI_NUMBER_INT64, 3, 24);
    oci_number_tally tally;
    EXPECT_EQ(oci_number_column_convert(&from.column, &to.column, OCI_NUMBER_NULL, &tally),
              OCI_NUMBER_DONE);
    EXPECT_EQ(tally.values, 1u);
    EXPECT_EQ(tally.first_refused, 1u);
    EXPECT_EQ(tally.reason, OCI_NUMBER_BAD_LENGTH);
}

TEST(ColumnLimits, RoomForBytesAndText) {
    Random random = seeded();
    for (const auto form : {OCI_NUMBER_PREFIXED, OCI_NUMBER_BYTES_32, OCI_NUMBER_BYTES_64,
                            OCI_NUMBER_TEXT_32, OCI_NUMBER_TEXT_64}) {
        SCOPED_TRACE(form);
        Rows rows;
        for (int i = 0; i < 100; ++i) rows.push_back(number(random_value(random, 5, 3).bytes()));
        const TestColumn from = column_of(OCI_NUMBER_RECORDS, rows, Present(100, true));
        oci_number_column measured = {};
        measured.form = form;
        measured.length = rows.size();
        oci_number_tally tally;
        ASSERT_EQ(oci_number_column_convert(&from.column, &measured, OCI_NUMBER_STOP, &tally),
                  OCI_NUMBER_DONE);
        const size_t size = tally.size;
        const TestColumn enough(form, rows.size(), size), less(form, rows.size(), size - 1);
        EXPECT_EQ(oci_number_column_convert(&from.column, &enough.column, OCI_NUMBER_STOP, &tally),
                  OCI_NUMBER_DONE);
        EXPECT_EQ(tally.size, size);
        EXPECT_EQ(oci_number_column_convert(&from.column, &less.column, OCI_NUMBER_NULL, &tally),
                  OCI_NUMBER_NO_ROOM);
        EXPECT_EQ(tally.first_refused, 99u);
        EXPECT_EQ(tally.values, 99u);
        EXPECT_LT(tally.size, size);
    }
}

TEST(ColumnLimits, RefusesCalls) {
    Rows rows(2, twelve);
    OCINumber out[2];
    const oci_number_column good = {
        OCI_NUMBER_RECORDS, 0, 0, 2, rows.data(), nullptr, 0, 22, nullptr, 0};
    oci_number_column to = good;
    to.data = out;
    const auto converts = [](const oci_number_column &from, const oci_number_column &into,
                             uword options = OCI_NUMBER_NULL) {
        oci_number_tally tally;
        const auto reason = oci_number_column_convert(&from, &into, options, &tally);
        EXPECT_EQ(tally.reason, reason);
        EXPECT_EQ(tally.values, reason == OCI_NUMBER_DONE ? 2u : 0u);
        return reason == OCI_NUMBER_DONE;
    };
    const auto with = [](oci_number_column column, auto change) {
        change(column);
        return column;
    };
    using Column = oci_number_column;
    EXPECT_TRUE(converts(good, to));
    EXPECT_FALSE(converts(good, to, 2));
    EXPECT_FALSE(converts(good, with(to, [](Column &c) { c.length = 3; })));
    EXPECT_FALSE(converts(good, with(to, [](Column &c) { c.stride = 0; })));
    EXPECT_FALSE(converts(good, with(to, [](Column &c) { c.stride = 21; })));
    EXPECT_FALSE(converts(good, with(to, [](Column &c) { c.data = nullptr; })));
    EXPECT_FALSE(converts(good, with(to, [](Column &c) { c.form = OCI_NUMBER_ORDER; })));
    EXPECT_FALSE(
        converts(good, with(to, [](Column &c) { c.form = static_cast<oci_number_form>(0); })));
    EXPECT_FALSE(
        converts(good, with(to, [](Column &c) { c.form = static_cast<oci_number_form>(13); })));
    EXPECT_FALSE(converts(good, with(to, [](Column &c) { c.form = OCI_NUMBER_BYTES_32; })));
    EXPECT_TRUE(converts(with(good, [](Column &c) { c.stride = 0; }), to));
    EXPECT_FALSE(converts(with(good, [](Column &c) { c.stride = 1; }), to));
    EXPECT_FALSE(converts(with(good, [](Column &c) { c.data = nullptr; }), to));
    EXPECT_FALSE(converts(with(good, [](Column &c) { c.form = OCI_NUMBER_KEYS; }), to));
    EXPECT_FALSE(converts(with(good, [](Column &c) { c.form = OCI_NUMBER_BYTES_64; }), to));
    EXPECT_FALSE(converts(with(good, [](Column &c) { c.form = OCI_NUMBER_INT64; }),
                          with(to, [](Column &c) { c.form = OCI_NUMBER_DOUBLE; })));
    for (const auto &[precision, scale] : {std::pair{0, 0}, {39, 0}, {38, 129}, {38, -129}}) {
        EXPECT_FALSE(converts(good, with(to, [p = precision, s = scale](Column &c) {
                                  c.form = OCI_NUMBER_DECIMAL128;
                                  c.precision = p;
                                  c.scale = s;
                              })));
    }
    EXPECT_EQ(oci_number_column_convert(nullptr, &to, 0, nullptr), OCI_NUMBER_BAD_CALL);
    EXPECT_EQ(oci_number_column_convert(&good, nullptr, 0, nullptr), OCI_NUMBER_BAD_CALL);

    const auto calculates = [&](int operation, const Column *b, oci_number_form form) {
        const Column into = with(to, [form](Column &c) { c.form = form; });
        return oci_number_column_calculate(static_cast<oci_number_operation>(operation), &good, b,
                                           0, &into, OCI_NUMBER_NULL, nullptr) == OCI_NUMBER_DONE;
    };
    EXPECT_TRUE(calculates(OCI_NUMBER_ADD, &good, OCI_NUMBER_RECORDS));
    EXPECT_TRUE(calculates(OCI_NUMBER_NEG, nullptr, OCI_NUMBER_RECORDS));
    EXPECT_FALSE(calculates(OCI_NUMBER_ADD, nullptr, OCI_NUMBER_RECORDS));
    EXPECT_FALSE(calculates(OCI_NUMBER_NEG, &good, OCI_NUMBER_RECORDS));
    EXPECT_FALSE(calculates(OCI_NUMBER_ADD, &good, OCI_NUMBER_DOUBLE));
    EXPECT_FALSE(calculates(OCI_NUMBER_CMP, &good, OCI_NUMBER_RECORDS));
    EXPECT_FALSE(calculates(0, nullptr, OCI_NUMBER_RECORDS));
    EXPECT_FALSE(calculates(14, &good, OCI_NUMBER_RECORDS));

    Column part;
    EXPECT_EQ(oci_number_column_slice(&good, 1, 2, &part), OCI_NUMBER_BAD_CALL);
    EXPECT_EQ(oci_number_column_slice(&good, 3, 0, &part), OCI_NUMBER_BAD_CALL);
    EXPECT_EQ(oci_number_column_slice(&good, 2, 0, &part), OCI_NUMBER_DONE);
    EXPECT_STREQ(oci_number_reason_text(OCI_NUMBER_INFINITE), "an infinity");
    EXPECT_STREQ(oci_number_reason_text(static_cast<oci_number_reason>(15)), "unknown");
}

TEST(ColumnLimits, EmptyColumns) {
    oci_number_column from = {}, to = {};
    from.form = OCI_NUMBER_BYTES_32;
    to.form = OCI_NUMBER_DOUBLE;
    EXPECT_EQ(oci_number_column_convert(&from, &to, OCI_NUMBER_STOP, nullptr), OCI_NUMBER_DONE);
    TestColumn text(OCI_NUMBER_TEXT_32, 0, 0);
    EXPECT_EQ(oci_number_column_convert(&from, &text.column, OCI_NUMBER_STOP, nullptr),
              OCI_NUMBER_DONE);
    EXPECT_EQ(text.offset(0), 0u);
}

// Records that are written over themselves, by threads that have a part each.
TEST(ColumnLimits, PartsInPlace) {
    Random random = seeded();
    const size_t count = 1000;
    const RandomRows rows(random, count, false);
    TestColumn column = column_of(OCI_NUMBER_RECORDS, rows.rows, rows.present);
    std::vector<std::thread> threads;
    for (size_t start = 0; start < count; start += 200) {
        threads.emplace_back([&column, start] {
            oci_number_column part;
            oci_number_column_slice(&column.column, start, 200, &part);
            oci_number_column_calculate(OCI_NUMBER_ADD, &part, &part, 0, &part, OCI_NUMBER_NULL,
                                        nullptr);
        });
    }
    for (auto &thread : threads) thread.join();
    const std::vector<Bytes> results = column.numbers();
    for (size_t i = 0; i < count; ++i) {
        ErrorHandle err;
        OCINumber sum;
        const OCINumber &n = rows.rows[i];
        const bool adds = rows.present[i] && OCINumberAdd(err, &n, &n, &sum) == OCI_SUCCESS;
        ASSERT_EQ(column.is_present(i), adds);
        ASSERT_EQ(results[i], adds ? value_bytes(sum) : Bytes{0});
    }
    take_log();
}

TEST(ColumnLimits, ReasonsHaveWords) {
    std::set<std::string> words;
    for (int reason = OCI_NUMBER_DONE; reason <= OCI_NUMBER_NO_VALUE; ++reason) {
        words.insert(oci_number_reason_text(static_cast<oci_number_reason>(reason)));
    }
    EXPECT_EQ(words.size(), OCI_NUMBER_NO_VALUE + 1u);
    EXPECT_FALSE(words.contains("unknown"));
}

}  // namespace
