#!/usr/bin/env python3
"""Times the decoding of a Parquet column in Spark, by one and by two threads.

    python/bench_spark.py [ROWS]        default 2000000

Beside the step of oci_number.spark stands the route by text: rows decoded to text, which Spark
casts. Prints a Markdown table, in thousand rows a second, of the best of three runs.
"""

import os
import sys
import tempfile
import time

import numpy as np
import oci_number
import pyarrow as pa
import pyarrow.parquet as pq
from oci_number import spark
from pyspark.sql import SparkSession

ROWS = int(sys.argv[1]) if len(sys.argv) > 1 else 2_000_000
ROUTES = {
    "decimal(38,10)": lambda frame: frame.transform(spark.decode("amount", "decimal(38,10)")),
    "text, cast to decimal(38,10)": lambda frame: frame.transform(
        spark.decode("amount", "string")).selectExpr("cast(amount as decimal(38,10)) amount"),
}


def main() -> None:
    os.environ["PYSPARK_PYTHON"] = sys.executable
    folder = tempfile.TemporaryDirectory()
    integers = np.random.default_rng(5).integers(-(10**15), 10**15, ROWS)
    numbers = oci_number.mul(oci_number.encode(integers), oci_number.Number("0.0001"))
    table = pa.table({"amount": pa.array(oci_number.decode(numbers, to="binary"))})
    pq.write_table(table, folder.name + "/rows.parquet", row_group_size=250_000, compression="none")
    rates: dict[str, list[float]] = {route: [] for route in ROUTES}
    sums = set()
    for threads in 1, 2:
        builder = SparkSession.builder.master(f"local[{threads}]")
        session = builder.config("spark.ui.enabled", "false").config(
            "spark.sql.files.maxPartitionBytes", "4m").getOrCreate()
        session.sparkContext.setLogLevel("OFF")
        for route, step in ROUTES.items():
            times = []
            for _ in range(3):
                start = time.perf_counter()
                frame = step(session.read.parquet(folder.name + "/rows.parquet"))
                sums.add(frame.selectExpr("sum(amount)").first()[0])
                times.append(time.perf_counter() - start)
            rates[route].append(ROWS / min(times) / 1000)
        session.stop()
    assert len(sums) == 1
    print("| route | one thread | two threads |\n|---|---:|---:|")
    for route, (one, two) in rates.items():
        print(f"| {route} | {one:.0f} | {two:.0f} |")


if __name__ == "__main__":
    main()
