"""The tool among other programs: on a terminal, under signals, in parallel pipes.

    surroundings_test.py PATH_OF_OCINUMBER
"""
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

TOOL = sys.argv.pop(1)
PATH = os.path.dirname(TOOL) + ":" + os.environ["PATH"]
SANITIZED = bool(os.environ.get("CLI_TEST_SANITIZE"))


class Terminal(unittest.TestCase):
    """A session of tmux, in which commands are typed and the screen is read."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.tmux("-f", "/dev/null", "new-session", "-d", "-x", "100", "-y", "40",
                  f"env PATH='{PATH}' PS1='$ ' bash --norc --noprofile")
        self.addCleanup(self.tmux, "kill-server")
        self.screen("$")

    def tmux(self, *arguments):
        environment = {name: value for name, value in os.environ.items() if name != "TMUX"}
        return subprocess.run(["tmux", "-S", os.path.join(self.folder, "socket"), *arguments],
                              check=True, capture_output=True, text=True, env=environment).stdout

    def type(self, line):
        self.tmux("send-keys", "clear; " + line, "Enter")

    def screen(self, *wanted, colours=False):
        """The screen, once it shows what is wanted."""
        until = time.monotonic() + 60
        while True:
            shown = self.tmux("capture-pane", "-p", *(["-e"] if colours else []))
            if all(text in shown for text in wanted):
                return shown
            self.assertLess(time.monotonic(), until, shown)
            time.sleep(0.02)

    def test_colours(self):
        self.type("ocinumber inspect 1.5; echo end=$?")
        self.assertIn("\x1b[", self.screen("value", "end=0", colours=True).split("byte")[1])
        self.type("NO_COLOR=1 ocinumber inspect 2.5; echo end=$?")
        self.assertNotIn("\x1b[", self.screen('"2.5"', "end=0", colours=True).split("byte")[1])

    def test_progress(self):
        # A pipe's end is not known, a file's is: two seconds' work, of which 90 % is at once there.
        self.type("(yes 1 | head -n 900000; sleep 2; yes 1 | head -n 100000; sleep 2) |"
                  " ocinumber encode >/dev/null; echo end=$?")
        self.screen("million values, ", "million/s")
        self.assertNotIn("million", self.screen("end=0"))
        amounts = os.path.join(self.folder, "amounts")
        self.type(f"yes 0.7 | head -n 3000000 >{amounts};"
                  f" ocinumber calc 'sin(cos(exp($1)))' {amounts} >/dev/null; echo end=$?")
        self.screen("million/s, ", " %, ", " s left")
        self.assertNotIn("million", self.screen("end=0"))
        self.type("(yes 1 | head -n 900000; sleep 2; echo 1) | ocinumber encode --no-progress"
                  " >/dev/null; echo end=$?")
        self.assertNotIn("million", self.screen("end=0"))

    def test_messages_among_results(self):
        self.type("printf '1\\nx\\n2\\n' | ocinumber neg; echo end=$?")
        lines = self.screen("end=1").splitlines()
        self.assertEqual(lines[lines.index("-1"):][:3],
                         ["-1", 'ocinumber: -:2: "x": unexpected "x" at column 1', "-2"])


class Signals(unittest.TestCase):
    def test_interrupted_reads_and_writes(self):
        # Stopped and continued again and again while it reads and writes slow pipes.
        command = ("(for i in 1 2 3 4 5 6; do seq 20000; sleep 0.05; done) | ocinumber encode -j 2 |"
                   " (sleep 0.1; cat) | ocinumber decode | md5sum; echo ${PIPESTATUS[*]}")
        shell = subprocess.Popen(["bash", "-c", command], stdout=subprocess.PIPE,
                                 env={**os.environ, "PATH": PATH}, start_new_session=True)
        while shell.poll() is None:
            for name in signal.SIGSTOP, signal.SIGCONT, signal.SIGWINCH, signal.SIGCHLD:
                os.killpg(shell.pid, name)
                time.sleep(0.005)
        expected = subprocess.run(["bash", "-c", "for i in 1 2 3 4 5 6; do seq 20000; done | md5sum"],
                                  capture_output=True, check=True).stdout
        self.assertEqual(shell.communicate()[0], expected + b"0 0 0 0 0\n")

    def test_ending_signals(self):
        # It dies of the signal, and what has been written are whole results.
        for number in signal.SIGTERM, signal.SIGINT:
            with subprocess.Popen([TOOL, "encode"], stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE) as tool:
                tool.stdin.write(b"1\n2\n3")
                tool.stdin.flush()
                self.assertEqual(tool.stdout.readline() + tool.stdout.readline(),
                                 b"02C102\n02C103\n")
                tool.send_signal(number)
                self.assertEqual((tool.wait(60), tool.stdout.read()), (-number, b""))


class Pipes(unittest.TestCase):
    def test_parallel(self):
        # Ten million records in pieces, by two tools.
        count = 100_000 if SANITIZED else 10_000_000
        command = (f"seq {count} | parallel -j 2 --pipe --block 8M --keep-order ocinumber encode |"
                   f" ocinumber decode | cmp - <(seq {count}); echo ${{PIPESTATUS[*]}}")
        done = subprocess.run(["bash", "-c", command], capture_output=True, timeout=300,
                              env={**os.environ, "PATH": PATH})
        self.assertEqual((done.stdout, done.stderr), (b"0 0 0 0\n", b""))


if __name__ == "__main__":
    unittest.main()
