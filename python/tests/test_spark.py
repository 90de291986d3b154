"""Spark, in a local session of two threads."""

import doctest
import os
import signal
import sys
from decimal import Decimal

import numpy as np
import oci_number
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from test_documents import DOCS

pyspark = pytest.importorskip("pyspark.sql")
spark = pytest.importorskip("oci_number.spark")


@pytest.fixture(scope="module")
def session():
    os.environ["PYSPARK_PYTHON"] = sys.executable
    builder = pyspark.SparkSession.builder.master("local[2,3]")  # two threads, three attempts
    session = builder.config("spark.ui.enabled", "false").getOrCreate()
    session.sparkContext.setLogLevel("OFF")
    yield session
    session.stop()


def test_sum_of_two_million_rows(session, tmp_path):
    integers = np.random.default_rng(5).integers(-(10**15), 10**15, 2_000_000)
    numbers = oci_number.mul(oci_number.encode(integers), Decimal("0.0001"))
    amounts = pa.array(oci_number.decode(numbers, to="binary"))
    table = pa.table({"id": pa.array(range(len(amounts))), "amount": amounts})
    # Spark's Snappy takes a machine that has musl, too, for one that has nothing else.
    path = str(tmp_path / "rows.parquet")
    pq.write_table(table, path, row_group_size=500_000, compression="none")
    frame = session.read.parquet(path)
    decoded = frame.transform(spark.decode("amount", "decimal(38,10)"))
    assert decoded.schema["amount"].dataType == pyspark.types.DecimalType(38, 10)
    total, ids = decoded.selectExpr("sum(amount)", "sum(id)").first()
    assert total == Decimal(sum(integers.tolist())) * Decimal("0.0001")
    assert ids == sum(range(2_000_000))


def test_killed_tasks_change_nothing(session):
    def kill_first_attempt(batches):
        from pyspark import TaskContext
        yield next(batches)
        if TaskContext.get().attemptNumber() == 0:
            os.kill(os.getpid(), signal.SIGKILL)
        yield from batches

    integers = range(-1000, 30_000)
    amounts = pa.array(oci_number.encode(np.array(integers), to="binary")).to_pylist()
    frame = session.createDataFrame([(bytes(a),) for a in amounts], "n binary").repartition(4)
    killed = frame.mapInArrow(kill_first_attempt, frame.schema)
    decoded = killed.transform(spark.decode("n", "decimal(38,10)"))
    assert decoded.selectExpr("sum(n)", "count(n)").first()[:] == (sum(integers), len(integers))


def test_refused_rows(session):
    frame = session.createDataFrame([(b"\xc1\x02",), (b"\xc1\x65",), (None,)], "n binary")
    decoded = frame.coalesce(1).transform(spark.decode("n", pyspark.types.DoubleType(), "null"))
    assert [r.n for r in decoded.collect()] == [1.0, None, None]
    with pytest.raises(Exception, match=r"row \d: bytes that are no number \(c1 65\)"):
        frame.transform(spark.decode("n", "bigint")).collect()
    long = frame.limit(1).transform(spark.decode("n", "LONG"))
    assert long.schema.simpleString() == "struct<n:bigint>" and long.first().n == 1
    with pytest.raises(TypeError, match="date"):
        frame.transform(spark.decode("n", "date"))
    with pytest.raises(ValueError, match="no column m"):
        frame.transform(spark.decode("m", "bigint"))


def test_document(session, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    result = doctest.testfile(
        str(DOCS / "spark.md"), module_relative=False, globs={"session": session})
    assert result.attempted > 3 and result.failed == 0
