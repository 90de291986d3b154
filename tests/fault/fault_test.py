"""The library and the tool when memory, files and descriptors fail them.

    fault_test.py OCINUMBER SHIM CALLS

Every allocation, read and write of a run fails in a run of its own. FAULT_STEP=1 takes every
allocation of the tool, where usually every 16th is enough.
"""
import errno
import os
import re
import resource
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor

TOOL, SHIM, CALLS = (sys.argv.pop(1) for _ in range(3))
STEP = int(os.environ.get("FAULT_STEP", "16"))


def run(*arguments, fault="", limit=None, environment=(), **options):
    """Exit status, standard output, standard error, and whether the fault was met."""
    with tempfile.TemporaryDirectory() as folder:
        mark = os.path.join(folder, "mark")
        env = {**os.environ, "LD_PRELOAD": SHIM, "FAULT": fault, "FAULT_MARK": mark,
               **dict(environment)}
        options.setdefault("stdout", subprocess.PIPE)
        done = subprocess.run(arguments, stderr=subprocess.PIPE, env=env, timeout=60,
                              preexec_fn=limit and (lambda: resource.setrlimit(*limit)), **options)
        return done.returncode, done.stdout, done.stderr, os.path.exists(mark)


def each_fault(call, how, first=1, step=1):
    """Faults in turn, until one is not met any more."""
    number = first
    while True:
        met = yield f"{call} {number} {how}"
        if not met:
            return
        number += step


class Faults(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        # Blocks enough for several reads and writes, and a value to refuse in each file.
        self.values = [b"%d.5\n" % i for i in range(120_000)]
        self.files = []
        for name in "one", "two":
            self.files.append(os.path.join(self.folder, name))
            self.write(self.files[-1], b"".join(self.values) + b"x\n")

    def write(self, name, data):
        with open(name, "wb") as file:
            file.write(data)

    def read(self, name):
        with open(name, "rb") as file:
            return file.read()

    def tool(self, command="abs", **options):
        files = [word for file in self.files for word in ("-f", file)]
        return run(TOOL, command, "--jobs=1", *files, **options)

    def try_each(self, call, how, check, **options):
        """Checks the run under each fault; returns how many were met."""
        faults = each_fault(call, how)
        fault = next(faults)
        count = 0
        while True:
            *result, met = self.tool(fault=fault, **options)
            with self.subTest(fault):
                check(*result)
            count += met
            try:
                fault = faults.send(met)
            except StopIteration:
                return count

    def test_interrupted_and_cut_short(self):
        expected = self.tool()[:3]
        self.assertEqual(expected[0], 1)
        for call, how in ("write", errno.EINTR), ("write", "cut"), ("read", errno.EINTR):
            count = self.try_each(call, how, lambda *got: self.assertEqual(got, expected))
            self.assertGreater(count, 5, call)

    def test_failing_writes(self):
        _, whole, messages, _ = self.tool()

        def check(status, out, err):
            self.assertEqual(status, 1)
            self.assertTrue(whole.startswith(out))
            lost = b"ocinumber: standard output: No space left on device\n"
            # A message that cannot be written is lost, and nothing else.
            if err.endswith(lost):
                self.assertTrue(messages.startswith(err[:-len(lost)]))
            else:
                self.assertEqual(out, whole)
                self.assertLess(len(err), len(messages) + (not err))

        *result, met = self.tool(fault=f"write 1 {errno.ENOSPC}")
        self.assertTrue(met)
        number = 1
        while met:
            check(*result)
            number += 1
            *result, met = self.tool(fault=f"write {number} {errno.ENOSPC}")
        self.assertGreater(number, 5)

    def test_failing_reads(self):
        whole = {line for line in self.tool()[1].splitlines()}

        def check(status, out, err):
            self.assertEqual(status, 1)
            self.assertLessEqual(set(out.splitlines()), whole)
            self.assertTrue(not out or out.endswith(b"\n"))

        self.assertGreater(self.try_each("read", errno.EIO, check), 5)
        for number, file in (1, self.files[0]), (3, self.files[0]):
            err = self.tool(fault=f"read {number} {errno.EIO}")[2]
            self.assertIn(f"ocinumber: {file}: Input/output error\n".encode(), err)

    def test_files_that_change(self):
        _, whole, messages, _ = self.tool()
        status, out, err, met = self.tool(fault="read 1 unlink",
                                          environment={"FAULT_FILE": self.files[1]})
        self.assertTrue(met)
        self.assertEqual((status, out), (1, whole[:len(whole) // 2]))
        self.assertIn(f"ocinumber: {self.files[1]}: No such file or directory\n".encode(), err)
        data = self.read(self.files[0])
        self.files = self.files[:1]
        for number in range(1, 6):
            self.write(self.files[0], data)
            status, out, _, met = self.tool(fault=f"read {number} shrink")
            self.assertTrue(met)
            # What was read before stays; the file's last line may be cut.
            self.assertTrue(whole.startswith(out[:-1]) and out.endswith(b"\n"))
            self.assertGreaterEqual(len(out), len(data) // 2 - 1)

    def test_limits(self):
        name = os.path.join(self.folder, "out")
        _, whole, _, _ = self.tool()
        with open(name, "wb") as out:
            got = self.tool(limit=(resource.RLIMIT_FSIZE, (100_000, 100_000)), stdout=out)
        self.assertEqual((got[0], got[2].splitlines()[-1]),
                         (1, b"ocinumber: standard output: File too large"))
        self.assertTrue(whole.startswith(self.read(name)))
        status, out, err, _ = self.tool(limit=(resource.RLIMIT_NOFILE, (4, 4)))
        self.assertIn((status, b"Too many open files" in err), ((1, True), (1, False), (2, True)))
        for size in 8, 16, 24, 32, 64:
            status, out, err, _ = self.tool(limit=(resource.RLIMIT_AS, (size << 20, size << 20)))
            if status in (0, 1):
                self.assertEqual(out, whole)
            elif status not in (127, -11, -6):  # the loader's own failures
                self.assertEqual((status, err), (2, b"ocinumber: out of memory\n"))

    def test_full_disk_and_closed_pipe(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.tool("stats", stdout=full)[0], 1)
        reader, writer = os.pipe()
        os.close(reader)
        self.assertIn(self.tool(stdout=writer)[0], (0, 1))
        os.close(writer)


class Memory(unittest.TestCase):
    def check(self, arguments, expected, how, number, data=b""):
        status, out, err, met = run(*arguments, fault=f"malloc {number} {how}", input=data)
        good = (status, out, err) == expected
        # The C++ runtime does without its reserve; what ends before main is the loader's word.
        last = b"ocinumber: out of memory\n"
        refused = (status == 2 and expected[1].startswith(out) and err.endswith(last) and
                   expected[2].startswith(err[:-len(last)]))
        loader = status == 127
        return met, good or refused or loader, (number, how, status, out, err)

    def test_tool(self):
        for arguments, data in (
                (["calc", "1+2*sin(3)"], b""),
                (["encode", "--jobs=2"], b"1\n-2.5\nx\n" + b"3\n" * 5000),
                (["stats", "-k2", "--csv", "--by=1"], b'a,1\n"b",2\na,3\n')):
            command = [TOOL, *arguments]
            expected = run(*command, input=data)[:3]
            with ThreadPoolExecutor(2) as workers:
                for how in "once", "on":
                    start = 1
                    while True:
                        numbers = range(start, start + 64 * STEP, STEP)
                        results = list(workers.map(
                            lambda n: self.check(command, expected, how, n, data), numbers))
                        for _, good, shown in results:
                            self.assertTrue(good, (arguments, shown))
                        if not results[-1][0]:
                            break
                        start += 64 * STEP

    def test_library(self):
        with tempfile.NamedTemporaryFile() as log:
            for level in "OFF", "TRACE":
                environment = {"OCI_NUMBER_LOG_FILE": log.name, "OCI_NUMBER_LOG_LEVEL": level}
                expected = run(CALLS, environment=environment)[1].splitlines()
                self.assertEqual(len(expected), 9)
                number, met = 0, True
                while met:
                    number += 1
                    status, out, _, met = run(CALLS, fault=f"malloc {number} once",
                                              environment=environment)
                    lines = out.splitlines()
                    self.assertEqual(status, 0)
                    refused = [line for line in lines if line not in expected]
                    self.assertLessEqual(len(refused), 1)
                    for line in refused:
                        self.assertIn(line, (b"OCIEnvCreate -1", b"OCIHandleAlloc -1",
                                             b"OCINumberFromReal -1 602"))
                self.assertGreater(number, 4)


class LogWrites(unittest.TestCase):
    def test_every_write(self):
        def logged(fault):
            with tempfile.NamedTemporaryFile() as log:
                environment = {"OCI_NUMBER_LOG_FILE": log.name, "OCI_NUMBER_LOG_LEVEL": "DEBUG"}
                status, out, err, met = run(CALLS, fault=fault, environment=environment)
                self.assertEqual((status, err), (0, b""))
                # Times, threads and addresses differ from run to run.
                text = re.sub(rb"0x[0-9a-f]+|\[\d+\]|thread \d+|^\S+Z", b"", log.read(),
                              flags=re.M)
                return out, text.split(b"\n"), met

        out, whole, _ = logged("")
        self.assertGreater(len(whole), 20)
        for how in errno.EINTR, errno.ENOSPC, "cut":
            for number in range(1, len(whole)):
                got, lines, met = logged(f"write {number} {how}")
                with self.subTest((number, how)):
                    self.assertEqual((got, met), (out, True))
                    expected = list(whole)
                    if how == errno.ENOSPC:
                        del expected[number - 1]
                    if how == "cut":
                        # Only the place where it ends is changed.
                        cut = lines[number - 1]
                        self.assertTrue(cut == b"" or len(cut) < len(whole[number - 1]) + 80)
                        expected[number - 1] = cut
                        if number == len(whole) - 1:
                            expected.pop()
                    self.assertEqual(lines, expected)


if __name__ == "__main__":
    unittest.main()
