"""The tool's outputs, messages and exit statuses.

    cli_test.py PATH_OF_OCINUMBER SOURCE_FOLDER

Random values come from a fixed seed; CLI_TEST_SEED sets another.
"""
import decimal
import os
import random
import subprocess
import sys
import tempfile
import unittest

TOOL, SOURCE = sys.argv.pop(1), sys.argv.pop(1)
SEED = int(os.environ.get("CLI_TEST_SEED", "1"))
MAX_LINE = 1 << 20


def run(*arguments, data=b"", **options):
    """Exit status, standard output and standard error."""
    if "stdin" not in options:
        options["input"] = data
    options.setdefault("stdout", subprocess.PIPE)
    done = subprocess.run([TOOL, *arguments], stderr=subprocess.PIPE, timeout=120, **options)
    return done.returncode, done.stdout, done.stderr


def number_bytes(text):
    """The bytes of a decimal text of at most 38 digits, from the format's rules."""
    negative = text.startswith("-")
    whole, _, fraction = text.lstrip("-").partition(".")
    whole = "0" * (len(whole) % 2) + whole
    fraction += "0" * (len(fraction) % 2)
    digits = [int((whole + fraction)[i:i + 2]) for i in range(0, len(whole + fraction), 2)]
    exponent = len(whole) // 2 - 1
    while digits and digits[0] == 0:
        digits, exponent = digits[1:], exponent - 1
    while digits and digits[-1] == 0:
        digits.pop()
    if not digits:
        return bytes([1, 128])
    if not negative:
        body = [193 + exponent] + [d + 1 for d in digits]
    else:
        body = [62 - exponent] + [101 - d for d in digits] + [102] * (len(digits) < 20)
    return bytes([len(body)] + body)


def random_texts(count, seed=SEED):
    """Canonical texts of up to 38 digits, with a point anywhere."""
    source = random.Random(seed)
    texts = []
    for _ in range(count):
        digits = str(source.getrandbits(source.randrange(1, 127)))
        point = source.randrange(-3, len(digits) + 1)
        whole = digits[:point] if point > 0 else "0"
        fraction = (digits[point:] if point > 0 else "0" * -point + digits).rstrip("0")
        text = whole + ("." + fraction if fraction else "")
        texts.append("-" + text if source.getrandbits(1) and text != "0" else text)
    return texts


class Operations(unittest.TestCase):
    def test_results(self):
        for arguments, expected in [
            (["round", "12.5", "-12.5", "~"], "13\n-13\n~\n"),
            (["round", "--places", "-1", "-15"], "-20\n"),
            (["trunc", "--places", "1", "-99.99"], "-99.9\n"),
            (["prec", "--digits", "4", "123.456"], "123.5\n"),
            (["shift", "--by", "-2", "4711"], "47.11\n"),
            (["shift", "--by", "126", "-1"], "-~\n"),
            (["abs", "-1.5", "-~"], "1.5\n~\n"),
            (["neg", "--from", "hex", "--to", "dump", "02C102"], "Len=3: 62,100,102\n"),
        ]:
            self.assertEqual(run(*arguments), (0, expected.encode(), b""), arguments)

    def test_streams_and_refusals(self):
        done = run("round", "--places", "1", data=b"1.25\nx\n-0.05\n")
        self.assertEqual(done[:2], (1, b"1.3\n-0.1\n"))
        self.assertEqual(done[2], b'ocinumber: -:2: "x": unexpected "x" at column 1\n')
        for wrong in [["prec", "1"], ["shift", "1"], ["round", "--places", "x", "1"]]:
            self.assertEqual(run(*wrong)[0], 2, wrong)


class Expressions(unittest.TestCase):
    def test_values(self):
        # Irrational values to 39 or 40 digits, from Python's decimal module.
        decimal.getcontext().prec = 60
        two, ten = decimal.Decimal(2), decimal.Decimal(10)
        for text, value in [("sqrt(2)", two.sqrt()), ("exp(1)", decimal.Decimal(1).exp()),
                            ("ln(10)", ten.ln()), ("2^0.5", two.sqrt()), ("1/3", 1 / two / 3 * 2)]:
            places = decimal.Decimal(10) ** (-40 if value < 1 else -38)
            rounded = value.quantize(places, decimal.ROUND_HALF_UP)
            self.assertEqual(run("calc", text)[1].decode().strip(), f"{rounded:f}".rstrip("0"))
        for text, value in [("1+2*3", "7"), ("(1+2)*3", "9"), ("-2^2", "-4"), ("2^-1", "0.5"),
                            ("2^3^2", "512"), ("7%-3", "1"), ("-7 % 3", "-1"), ("1e-3*3", "0.003"),
                            (" 1.5E+2 - .5 ", "149.5"), ("log(10, 1000)", "3"), ("- -1", "1"),
                            ("round(pi, 4)", "3.1416"), ("atan2(0,1)", "0"), ("1e200", "~"),
                            ("shift(4711,-2)", "47.11"), ("mod(7,3)+power(2,10)", "1025")]:
            self.assertEqual(run("calc", text), (0, value.encode() + b"\n", b""), text)

    def test_errors_point_at_the_column(self):
        for text, reason in [("1+*2", 'unexpected "*" at column 3'),
                             ("(1+2", '")" is missing at column 5'),
                             ("foo(1)", 'unknown name "foo" at column 1'),
                             ("2 3", 'unexpected "3" at column 3'),
                             ("1e", "digits of an exponent are missing at column 3"),
                             ("3*(1/0)", "OCI-22056: value [1] is divided by zero at column 5"),
                             ("round(1, 1.5)", "the second argument must be an integer of 32 bits "
                                               "at column 10"),
                             ("(" * 300, "nested too deeply at column 201")]:
            status, out, message = run("calc", text)
            self.assertEqual((status, out), (1, b""), text)
            self.assertTrue(message.decode().endswith(": " + reason + "\n"), message)


class Conversions(unittest.TestCase):
    # Text, hex and dump of the same number.
    NUMBERS = [
        ("0", "0180", "Len=1: 128"),
        ("1", "02C102", "Len=2: 193,2"),
        ("100", "02C202", "Len=2: 194,2"),
        ("123", "03C20218", "Len=3: 194,2,24"),
        ("0.5", "02C033", "Len=2: 192,51"),
        ("-0.5", "033F3366", "Len=3: 63,51,102"),
        ("-123", "043D644E66", "Len=4: 61,100,78,102"),
        ("1" + "0" * 125, "02FF0B", "Len=2: 255,11"),
        ("-1" + "0" * 125, "03005B66", "Len=3: 0,91,102"),
        ("0." + "0" * 127 + "1", "028102", "Len=2: 129,2"),
        ("~", "02FF65", "Len=2: 255,101"),
        ("-~", "0100", "Len=1: 0"),
    ]

    def test_numbers(self):
        texts, hexes, dumps = ("".join(row[i] + "\n" for row in self.NUMBERS).encode()
                               for i in range(3))
        raws = b"".join(bytes.fromhex(row[1]).ljust(22, b"\0") for row in self.NUMBERS)
        for form, data in ("hex", hexes), ("dump", dumps), ("raw", raws):
            with self.subTest(form):
                self.assertEqual(run("encode", "--to", form, data=texts), (0, data, b""))
                self.assertEqual(run("decode", "--from", form, data=data), (0, texts, b""))

    def test_accepted_spellings(self):
        for arguments, expected in [
            (["encode", "-.5", "-0", " -12.50", "5.", " ~", "-~"],
             "033F3366 0180 043E593366 02C106 02FF65 0100"),
            (["encode", "-1", "--to", "dump", "--", "1"], "Len=3:62,100,102 Len=2:193,2"),
            (["encode", "9" * 41], "02D50B"),  # rounded to 1E41
            (["encode", "0." + "0" * 128 + "4"], "0180"),
            (["decode", "03c20218", " 03 C2 02 18 ", "03C20201", "03C20218" + "AB" * 18],
             "123 123 100 123"),
            (["decode", "--from", "dump", "Typ=2 Len=3: 194,2,24", "Len=3:194, 2 ,24"], "123 123"),
        ]:
            with self.subTest(arguments):
                status, out, err = run(*arguments)
                self.assertEqual((status, err), (0, b""))
                self.assertEqual(out.decode().replace(": ", ":").split(), expected.split())

    def test_models(self):
        for arguments, expected in [
            (["format", "--model", "9990.99", "123.456", "-0.5"], "  123.46\n   -0.50\n"),
            (["format", "-m", "fm9990.99", "--from", "hex", "03C20218"], "123.\n"),
            (["format", "--model", "TM9", "-.25"], "-.25\n"),
            (["parse", "--model", "999.99", " -12.50", "0.1"], "-12.5\n0.1\n"),
            (["parse", "--to", "hex", "-m", "099", "012"], "02C10D\n"),
        ]:
            with self.subTest(arguments):
                self.assertEqual(run(*arguments), (0, expected.encode(), b""))
        texts = [text for text in random_texts(100_000) if len(text.partition(".")[2]) <= 20]
        data = "".join(text + "\n" for text in texts).encode()
        status, formatted, err = run("format", "--model", "9" * 37 + "0." + "9" * 20, data=data)
        self.assertEqual((status, err), (0, b""))
        # The padding zeros of the fractions do not count.
        self.assertEqual(run("parse", "--model", "9" * 38 + "." + "9" * 20, data=formatted),
                         (0, data, b""))

    def test_random_values(self):
        texts = random_texts(1_000_000)
        data = ("\n".join(texts) + "\n").encode()
        status, encoded, err = run("encode", data=data)
        self.assertEqual((status, err), (0, b""))
        self.assertTrue(run("decode", data=encoded) == (0, data, b""), f"seed {SEED}")
        for text, line in zip(texts[:20000], encoded.decode().split()):
            self.assertEqual(line, number_bytes(text).hex().upper(), text)

    def test_sample_file(self):
        status, out, err = run("encode", "--file", os.path.join(SOURCE, "examples/amounts.txt"))
        self.assertEqual((status, err), (0, b""))
        canonical = run("decode", data=out)[1]
        self.assertEqual(run("encode", data=canonical)[1], out)


class Inspect(unittest.TestCase):
    def test_rows(self):
        self.assertEqual(run("inspect", "-123.45")[1].decode().splitlines(), [
            '"-123.45"',
            "  byte  0  05    5  length: 5 more bytes",
            "  byte  1  3D   61  negative, exponent 1: the first digit counts 100^1",
            "  byte  2  64  100  digit 01 x 100^1",
            "  byte  3  4E   78  digit 23 x 100^0",
            "  byte  4  38   56  digit 45 x 100^-1",
            "  byte  5  66  102  ending byte",
            "  value    -123.45"])

    def test_detection(self):
        for value, expected in [("0180", "180"), ("01 80", "0"), ("03C20218", "123"),
                                ("Len=3: 194,2,24", "123"), (" Typ=2 Len=1: 0", "-~"), ("~", "~")]:
            status, out, _ = run("inspect", value)
            self.assertEqual((status, out.decode().split()[-1]), (0, expected), value)
        self.assertEqual(run("inspect", "--from", "hex", "0180")[1].split()[-1], b"0")

    def test_faults(self):
        negative_20 = "153E" + "64" * 19
        for value, malformed, byte, fault in [
            ("00 80", 1, "0", "length byte is 0"),
            ("16 C1", 1, "0", "length byte 22 is above 21"),
            ("03 C2 02", 1, "3", "1 byte missing"),
            ("02 C2 02 18 19", 1, "3", "2 bytes left over"),
            ("01 C1", 1, "1", "exponent byte 193 without digits"),
            ("02 80 02", 1, "1", "exponent byte 128 is zero's"),
            ("02 3E 66", 1, "2", "no digit byte"),
            ("02 C1 00", 1, "2", "digit byte 0 is outside 1 to 100"),
            ("03 C1 65 02", 1, "2", "digit byte 101 is outside 1 to 100"),
            ("03 3E 01 66", 1, "2", "digit byte 1 is outside 2 to 101"),
            ("04 3E 66 64 66", 1, "2", "ending byte 102 before the end"),
            ("02 3E 64", 1, "3", "ending byte 102 of a negative value is missing"),
            ("03 C1 02 66", 1, "3", "ending byte 102 in a positive value"),
            ("03 C1 01 02", 0, "2", "leading zero digit"),
            ("03 C2 02 01", 0, "3", "trailing zero digit"),
            (negative_20 + "64", 0, None, None),
            (negative_20 + "66", 0, None, None),
        ]:
            with self.subTest(value):
                status, out, err = run("inspect", value)
                self.assertEqual((status, err), (malformed, b""))
                rows = [row for row in out.decode().splitlines() if "<-" in row]
                if fault is None:
                    self.assertEqual(rows, [])
                else:
                    self.assertEqual(len(rows), 1)
                    self.assertEqual(rows[0].split()[:2], ["byte", byte])
                    self.assertIn(fault, rows[0])
                # What is malformed is no number for the other commands.
                self.assertEqual(run("decode", value)[0], malformed)


class Refusals(unittest.TestCase):
    def check(self, arguments, data, expected_out, messages, status=1):
        got, out, err = run(*arguments, data=data)
        self.assertEqual(err.decode().splitlines(), ["ocinumber: " + m for m in messages])
        self.assertEqual((got, out), (status, expected_out))

    def test_texts(self):
        for value, reason in [
            (b"", "no value"), (b"-", "no digit"), (b"   ", "no digit"), (b".", "no digit"),
            (b"1.2.3", "second period at column 4"), (b"1-2", 'unexpected "-" at column 2'),
            (b"+1", 'unexpected "+" at column 1'), (b"1e5", 'unexpected "e" at column 2'),
            (b"1 ", 'unexpected " " at column 2'), (b"nan", 'unexpected "n" at column 1'),
            (b"1\x002", 'unexpected "\\x00" at column 2'),
            (b"1" + b"0" * 126, "magnitude is 1E126 or more"),
        ]:
            shown = value.decode().replace("\0", "\\x00")
            shown = f'"{shown}"' if len(shown) <= 60 else f'"{shown[:60]}"...'
            self.check(["encode"], b"7\n" + value + b"\n8", b"02C108\n02C109\n",
                       [f"-:2: {shown}: {reason}"])

    def test_bytes(self):
        for form, value, reason in [
            ("hex", "", "no bytes"), ("hex", "02C", "second hex digit of a byte expected at column 4"),
            ("hex", "02G1", 'unexpected "G" at column 3'), ("hex", "0" * 46, "more than 22 bytes"),
            ("hex", "02C1", "1 byte missing: the length byte is 2"),
            ("dump", "3: 1", '"Len=" expected at column 1'), ("dump", "Len=1", '":" expected at column 6'),
            ("dump", "Typ=1 Len=1: 128", "type 1 is not a number's (2)"),
            ("dump", "Len=2: 193,", "number expected at column 12"),
            ("dump", "Len=2: 193,256", "number above 255 at column 12"),
            ("dump", "Len=2: 193 2", '"," expected at column 12'),
        ]:
            self.check(["decode", "--from", form, "--", value], b"", b"",
                       [f'argument 1: "{value}": {reason}'])

    def test_models(self):
        overflow = "OCI-22065: number to text translation for the given format causes overflow"
        for arguments, message in [
            (["format", "-m", "99", "100"], f'"100": {overflow}'),
            (["format", "-m", "99", "~"], f'"~": {overflow}'),
            (["format", "-m", "9", "1e5"], '"1e5": unexpected "e" at column 2'),
            (["parse", "-m", "99", "100"], '"100": no decimal text under the model "99"'),
            (["parse", "-m", "99", ""], '"": no value'),
        ]:
            with self.subTest(arguments):
                self.assertEqual(run(*arguments),
                                 (1, b"", f"ocinumber: argument 1: {message}\n".encode()))

    def test_places(self):
        with tempfile.TemporaryDirectory() as folder:
            name = os.path.join(folder, "numbers.txt")
            with open(name, "wb") as file:
                file.write(b"1\r\n\n3")
            self.check(["encode", "x", "2", "-f", "none.txt", "-f", name, "-f", folder, "-f", "-"],
                       b"y\n", b"02C103\n02C102\n02C104\n",
                       ['argument 1: "x": unexpected "x" at column 1',
                        "none.txt: No such file or directory", f'{name}:2: "": no value',
                        f"{folder}: Is a directory", '-:1: "y": unexpected "y" at column 1'])
        records = bytes.fromhex("02C102").ljust(22, b"\0") + bytes(22) + b"\2\xC1"
        self.check(["decode", "--from", "raw"], records, b"1\n",
                   ["-: record 2 at byte 22: " + "00" * 22 +
                    ": length byte is 0: the number is not initialised",
                    "-: record 3 at byte 44: 02C1: record ends after 2 of 22 bytes"])

    def test_long_lines(self):
        zeros = b"0" * (MAX_LINE - 1)
        shown = '"' + "0" * 60 + '"...'
        for tail, name in (b"\n", "with a line end"), (b"", "without"):
            with self.subTest(name):
                self.check(["encode"], zeros + b"1\n" + zeros + b"11\n5\n" + zeros * 9 + tail,
                           b"02C102\n02C106\n",
                           [f"-:{line}: {shown}: line is longer than 1048576 bytes"
                            for line in (2, 4)])

    def test_usage(self):
        for arguments in ([], ["encod"], ["encode", "-x"], ["encode", "--to", "text", "1"],
                          ["decode", "--from", "raw", "02C102"], ["encode", "--file"],
                          ["format", "1"], ["format", "-m", "S9", "1"], ["format", "-m", "", "1"],
                          ["parse", "-m", "FM9", "1"]):
            status, out, err = run(*arguments)
            self.assertEqual((status, out, err[:11]), (2, b"", b"ocinumber: "), arguments)
        for arguments in (["--help"], ["encode", "--help"], ["decode", "-h"], ["inspect", "--help"],
                          ["format", "--help"], ["parse", "--help"], ["--version"]):
            status, out, err = run(*arguments)
            self.assertEqual((status, err), (0, b""), arguments)
            self.assertIn(b"ocinumber ", out)
            self.assertEqual(b"Examples:" in out, len(arguments) == 2)


class Streams(unittest.TestCase):
    def test_full_disk(self):
        with open("/dev/full", "wb") as full:
            for arguments in (["encode", "1"], ["--help"], ["encode"]):
                status, _, err = run(*arguments, data=b"1\n" * 100000, stdout=full)
                self.assertEqual((status, err), (1, b"ocinumber: standard output: "
                                                    b"No space left on device\n"))

    def test_closed_pipe(self):
        for data in b"1\n", b"1\n" * 100000:
            reader, writer = os.pipe()
            os.close(reader)
            self.assertEqual(run("encode", data=data, stdout=writer), (0, None, b""))
            os.close(writer)

    def test_conversation(self):
        with subprocess.Popen([TOOL, "encode"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as tool:
            for text, line in (b"1\n", b"02C102\n"), (b"123\n", b"03C20218\n"):
                tool.stdin.write(text)
                tool.stdin.flush()
                self.assertEqual(tool.stdout.readline(), line)
            tool.stdin.close()

    @unittest.skipIf(os.environ.get("CLI_TEST_SANITIZE"), "sanitizers need address space")
    def test_constant_memory(self):
        # 300 MB without a line end.
        command = f"ulimit -v 100000; head -c 300000000 /dev/zero | '{TOOL}' encode; echo $?"
        done = subprocess.run(["bash", "-c", command], capture_output=True, timeout=120)
        self.assertEqual(done.stdout, b"1\n")
        self.assertIn(b"line is longer than", done.stderr)


if __name__ == "__main__":
    unittest.main()
