"""The tool's outputs, messages and exit statuses.

    cli_test.py PATH_OF_OCINUMBER SOURCE_FOLDER

Random values come from a fixed seed; CLI_TEST_SEED sets another.
"""
import os
import random
import re
import shlex
import subprocess
import sys
import tempfile
import unittest
from decimal import ROUND_HALF_UP, Context, Decimal, localcontext

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


def rows(name):
    """The rows of a table of tests/data, split as a shell does, with repetitions written out."""
    with open(os.path.join(SOURCE, "tests/data", name), encoding="utf-8") as lines:
        for line in lines:
            line = re.sub(r"\((\w+|\()\)\{(\d+)\}", lambda m: m[1] * int(m[2]), line)
            if row := shlex.split(line, comments=True):
                yield row


class Tables(unittest.TestCase):
    def test_calls(self):
        for row in rows("cli.txt"):
            mark = next(i for i, word in enumerate(row) if word in ("=>", "!!", "??"))
            arguments, expected = row[:mark], row[mark + 1:]
            with self.subTest(arguments):
                status, out, err = run(*arguments)
                if row[mark] == "??":
                    self.assertEqual((status, out, err[:11]), (2, b"", b"ocinumber: "))
                elif row[mark] == "=>":
                    lines = "".join(line + "\n" for line in expected)
                    self.assertEqual((status, out.decode(), err), (0, lines, b""))
                else:
                    shown = arguments[-1]
                    shown = re.sub(r"[^ -~]", lambda m: f"\\x{ord(m[0]):02X}", shown)
                    shown = f'"{shown}"' if len(shown) <= 60 else f'"{shown[:60]}"...'
                    message = f"ocinumber: argument 1: {shown}: {expected[0]}\n"
                    self.assertEqual((status, out, err.decode()), (1, b"", message))

    def test_streams(self):
        def plain(word):
            return re.sub(r"\\[ntr0]", lambda m: {"n": "\n", "t": "\t", "r": "\r", "0": "\0"}[m[0][1]],
                          word).encode()

        with tempfile.TemporaryDirectory() as folder:
            for row in rows("cli_streams.txt"):
                data, expected = row.index("<<"), row.index("=>")
                for name in "in.txt", "in.csv":
                    with open(os.path.join(folder, name), "wb") as file:
                        file.write(plain(row[data + 1]))
                for jobs in [], ["--jobs=2"]:
                    with self.subTest(row[:data] + jobs):
                        status, out, err = run(*row[:data], *jobs, data=plain(row[data + 1]), cwd=folder)
                        self.assertEqual(err.decode().splitlines(),
                                         ["ocinumber: " + m for m in row[expected + 3:]])
                        self.assertEqual((status, out),
                                         (int(row[expected + 2]), plain(row[expected + 1])))

    def test_wrong_calls(self):
        for arguments, message in (
                (["encdoe"], 'unknown command "encdoe"; did you mean "encode"?'),
                (["\x1b[1m"], 'unknown command "\\x1B[1m"; --help lists the commands'),
                (["calc", "-pi"], "The following argument was not expected: -p; "
                                  "values that look like options go behind --"),
                (["prec", "--digits", "", "1"], '--digits: "" is no decimal integer of 32 bits'),
                (["decode", "--from", "\x01"], '--from: "\\x01" is not hex|list|raw|base64|digits|sortable'),
                (["format", "-m", "FM", "1"],
                 "--model: no number has a text under a model without digits")):
            with self.subTest(arguments):
                self.assertEqual(run(*arguments), (2, b"", f"ocinumber: {message}\n".encode()))

    def test_inspect(self):
        for value, status, *fault in rows("cli_inspect.txt"):
            with self.subTest(value):
                got, out, err = run("inspect", value)
                self.assertEqual((got, err), (int(status), b""))
                lines = out.decode().splitlines()
                if fault[:1] == ["value"]:
                    self.assertEqual(lines[-1].split()[-1], fault[1])
                    continue
                marked = [line for line in lines if "<-" in line]
                self.assertEqual([line.split()[:2] for line in marked],
                                 [["byte", byte] for byte in fault[:1]])
                if fault:
                    self.assertIn(fault[1], marked[0])
                # What is malformed is no number for the other commands.
                self.assertEqual(run("decode", value)[0], int(status))
        self.assertEqual(run("inspect", "--from", "hex", "0180")[1].split()[-1], b"0")

    def test_help(self):
        commands = re.findall(r"^  (\w+)  ", run("--help")[1].decode(), re.M)
        self.assertGreater(len(commands), 15)
        for arguments in (["--help"], ["--version"], *([name, "--help"] for name in commands)):
            status, out, err = run(*arguments)
            self.assertEqual((status, err), (0, b""), arguments)
            self.assertIn(b"ocinumber ", out)
            self.assertEqual(b"Examples:" in out, len(arguments) == 2)
            self.assertLess(max(map(len, out.splitlines())), 80, arguments)
            if len(arguments) == 2:
                self.assertEqual(run("help", arguments[0])[1], out)


class Conversions(unittest.TestCase):
    def convert(self, data, *arguments):
        status, out, err = run(*arguments, data=data)
        self.assertEqual((status, err), (0, b""))
        return out

    def test_numbers(self):
        table = list(rows("cli_forms.txt"))
        texts, hexes, lists = ("".join(row[i] + "\n" for row in table).encode() for i in range(3))
        raws = b"".join(bytes.fromhex(row[1]).ljust(22, b"\0") for row in table)
        for form, data in ("hex", hexes), ("list", lists), ("raw", raws):
            with self.subTest(form):
                self.assertEqual(self.convert(texts, "encode", "--to", form), data)
                self.assertEqual(self.convert(data, "decode", "--from", form), texts)

    def test_random_values(self):
        texts = random_texts(500_000)
        data = "".join(text + "\n" for text in texts).encode()
        self.assertTrue(self.convert(self.convert(data, "encode"), "decode") == data, SEED)

    def test_sortable_bytes(self):
        texts = random_texts(20_000) + ["~", "-~", "0"]
        data = "".join(text + "\n" for text in texts).encode()
        keys = self.convert(data, "convert", "--to", "sortable").splitlines()
        ordered = b"".join(key + b"\n" for key in sorted(keys))
        infinities = {"~": Decimal("Infinity"), "-~": Decimal("-Infinity")}
        expected = sorted(texts, key=lambda text: infinities.get(text) or Decimal(text))
        got = self.convert(ordered, "convert", "--from", "sortable").decode().split()
        self.assertTrue(got == expected, SEED)

    def test_stats(self):
        # Beside Python's decimals of 300 digits, rounded to 20 base-100 digits: 39 decimal ones
        # when the first one is below 10, else 40.
        wide = Context(prec=300, rounding=ROUND_HALF_UP)

        def shown(value):
            digits = Context(prec=39 + value.adjusted() % 2, rounding=ROUND_HALF_UP)
            text = f"{digits.plus(value):f}"
            return text.rstrip("0").rstrip(".") if "." in text else text

        for count in 1, 2, 3, 100, 20_000:
            texts = random_texts(count, SEED + count)
            with localcontext(wide):
                values = [Decimal(text) for text in texts]
                mean = sum(values) / count
                variance = sum((value - mean) ** 2 for value in values) / max(count - 1, 1)
                expected = [str(count), "0", f"{min(values):f}", f"{max(values):f}",
                            f"{sum(values):f}", shown(mean),
                            shown(variance.sqrt()) if count > 1 else "none"]
            for jobs in "1", "2":
                with self.subTest((count, jobs, SEED)):
                    out = self.convert("\n".join(texts).encode(), "stats", "--jobs", jobs)
                    self.assertEqual([line.split("\t")[1] for line in out.decode().splitlines()], expected)

    def test_sample_file(self):
        encoded = self.convert(b"", "encode", "-f", os.path.join(SOURCE, "examples/amounts.txt"))
        self.assertEqual(self.convert(self.convert(encoded, "decode"), "encode"), encoded)


class Refusals(unittest.TestCase):
    def check(self, arguments, data, expected_out, messages, status=1):
        got, out, err = run(*arguments, data=data)
        self.assertEqual(err.decode().splitlines(), ["ocinumber: " + m for m in messages])
        self.assertEqual((got, out), (status, expected_out))

    def test_places(self):
        with tempfile.TemporaryDirectory() as folder:
            name = os.path.join(folder, "numbers.txt")
            with open(name, "wb") as file:
                file.write(b"1\r\n\n3")
            self.check(["encode", "x", "2", "-f", "none.txt", "-f", name, "-f", folder, "-f", "-"],
                       b"7\ny\n1\x002\n8", b"02C103\n02C102\n02C104\n02C108\n02C109\n",
                       ['argument 1: "x": unexpected "x" at column 1',
                        "none.txt: No such file or directory", f'{name}:2: "": no value',
                        f"{folder}: Is a directory", '-:2: "y": unexpected "y" at column 1',
                        '-:3: "1\\x002": unexpected "\\x00" at column 2',
                        "4 of 9 values refused"])
        records = bytes.fromhex("02C102").ljust(22, b"\0") + bytes(22) + b"\2\xC1"
        self.check(["decode", "--from", "raw"], records, b"1\n",
                   ["-: record 2 at byte 22: " + "00" * 22 +
                    ": length byte is 0: the number is not initialised",
                    "-: record 3 at byte 44: 02C1: record ends after 2 of 22 bytes",
                    "2 of 3 values refused"])

    def test_long_lines(self):
        zeros = b"0" * (MAX_LINE - 1)
        shown = '"' + "0" * 60 + '"...'
        for tail, name in (b"\n", "with a line end"), (b"", "without"):
            with self.subTest(name):
                self.check(["encode"], zeros + b"1\n" + zeros + b"11\n5\n" + zeros * 9 + tail,
                           b"02C102\n02C106\n",
                           [f"-:{line}: {shown}: line is longer than 1048576 bytes"
                            for line in (2, 4)] + ["2 of 4 values refused"])


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

    def test_closed_streams_after_refusals(self):
        # Nobody reads the messages, or nobody reads the results: both end the tool, with status 1.
        endless = subprocess.Popen(["yes", "x"], stdout=subprocess.PIPE)
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run([TOOL, "encode"], stdin=endless.stdout, stdout=subprocess.PIPE,
                              stderr=writer, timeout=60)
        endless.stdout.close()
        endless.wait()
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        status, _, err = run("encode", data=b"x\n" + b"1\n" * 100000, stdout=writer)
        self.assertEqual((status, err), (1, b'ocinumber: -:1: "x": unexpected "x" at column 1\n'))
        os.close(writer)

    def test_input_is_the_output(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(b"-1\n")
            file.flush()
            message = f"ocinumber: {file.name}: the input is the output\n".encode()
            with open(file.name, "ab") as out:
                self.assertEqual(run("abs", "-f", file.name, stdout=out), (1, None, message))
            with open(file.name, "rb") as copy:
                self.assertEqual(copy.read(), b"-1\n")

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
