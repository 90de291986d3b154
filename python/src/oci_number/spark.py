"""Columns of numbers in Spark data frames, decoded in batches by Arrow.

    frame.transform(oci_number.spark.decode("amount", "decimal(38,10)"))

The package must be installed where the executors run.
"""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import Any, cast

import pyarrow as pa  # type: ignore[import-untyped]
from pyspark.sql import DataFrame
from pyspark.sql.types import StructField, StructType

from . import _columns


def decode(
    column: str, type: Any, on_error: _columns.OnError = "raise"
) -> Callable[[DataFrame], DataFrame]:
    """A step for DataFrame.transform that decodes a binary column in its place.

    type: "bigint", "double", "decimal(P,S)" or "string", or Spark's object for it.
    on_error: whether a row that has no such value fails the job, or becomes null. The row that a
    RowError names is counted in its batch.
    """
    name = type if isinstance(type, str) else type.simpleString()

    def transform(frame: DataFrame) -> DataFrame:
        target = cast(StructType, StructType.fromDDL(f"value {name}"))[0].dataType
        # The name that all of the type's names stand for, and refused here if it is none.
        to = target.simpleString()
        _columns._form(to)

        def batches(rows: Iterator[pa.RecordBatch]) -> Iterator[pa.RecordBatch]:
            for batch in rows:
                at = batch.schema.get_field_index(column)
                values = pa.array(_columns.decode(batch.column(at), to=to, on_error=on_error))
                yield batch.set_column(at, pa.field(column, values.type), values)

        fields = [StructField(column, target) if f.name == column else f for f in frame.schema]
        if all(f.name != column for f in frame.schema):
            raise ValueError(f"no column {column}")
        return frame.mapInArrow(batches, StructType(fields))

    return transform
