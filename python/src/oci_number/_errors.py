"""What a refused row is reported by."""


def _shown(value: bytes, is_text: bool) -> str:
    # A row that is no number may be of any length.
    start = value[:40]
    rest = f"... of {len(value)} bytes" if len(value) > len(start) else ""
    return (repr(start) if is_text else start.hex(" ")) + rest


class RowError(ValueError):
    """A row without result, in a call with on_error="raise".

    row: its number, from 0; reason: why it was refused; operands: the bytes of the row in each
    column of the call; bytes: those in the first.
    """

    row: int
    reason: str
    operands: tuple[bytes, ...]

    def __init__(
        self, row: int, reason: str, operands: tuple[bytes, ...], is_text: bool = False
    ) -> None:
        super().__init__(row, reason, operands, is_text)
        self.row = row
        self.reason = reason
        self.operands = operands

    @property
    def bytes(self) -> bytes:
        """The bytes of the row in the first column."""
        return self.operands[0]

    def __str__(self) -> str:
        shown = [_shown(o, self.args[3]) for o in self.operands]
        return f"row {self.row}: {self.reason} ({' and '.join(shown)})"
