"""Shows OCINumber and oci::number as numbers in GDB: 123.45, ~ and -~ for the infinities.

GDB loads this file by itself with the shared library where it is installed; otherwise:
    (gdb) source oci_number-gdb.py

It reads the 22 bytes and calls nothing, so it works on core files, too.
"""
import decimal

import gdb
import gdb.printing

SIZE = 22
MAX_DIGITS = 20
ENDING_BYTE = 102
# Longer texts have an exponent.
WIDEST = 60


def number_text(data):
    """The decimal text of the bytes, or None when they hold no number."""
    length, exponent_byte = data[0], data[1]
    if not 1 <= length <= MAX_DIGITS + 1:
        return None
    value = bytes(data[1:length + 1])
    if value in (b"\x80", b"\x00", b"\xff\x65"):
        return {0x80: "0", 0x00: "-~", 0xff: "~"}[exponent_byte]
    negative = exponent_byte < 128
    if negative and value[-1] == ENDING_BYTE:
        value = value[:-1]
    digits = [101 - b if negative else b - 1 for b in value[1:]]
    if not digits or not all(0 <= d <= 99 for d in digits):
        return None
    first_exponent = 62 - exponent_byte if negative else exponent_byte - 193
    decimals = "".join("%02d" % d for d in digits)
    exponent = 2 * (first_exponent - len(digits) + 1)
    number = decimal.Decimal((int(negative), tuple(map(int, decimals)), exponent))
    # Zeros at the end say nothing; a context of 40 digits rounds none away.
    number = number.normalize(decimal.Context(prec=2 * MAX_DIGITS))
    plain = format(number, "f")
    return plain if len(plain) <= WIDEST else format(number, "E")


class NumberPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        record = self.value
        if record.type.strip_typedefs().tag != "OCINumber":
            record = record["bytes_"]
        data = [int(record["OCINumberPart"][i]) for i in range(SIZE)]
        text = number_text(data)
        if text is None:
            return "no number: " + " ".join("%02x" % b for b in data)
        return text


def make_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("oci_number")
    printers.add_printer("OCINumber", "^OCINumber$", NumberPrinter)
    printers.add_printer("oci::number", "^oci::number$", NumberPrinter)
    return printers


# The file of the library, or none when the file is sourced.
gdb.printing.register_pretty_printer(gdb.current_objfile(), make_printers(), replace=True)
