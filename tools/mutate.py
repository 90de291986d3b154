#!/usr/bin/env python3
"""Breaks the library on purpose, one place at a time, and shows which breaks no test notices.

    tools/mutate.py                                       40 mutants of all of src/
    tools/mutate.py src/oci_utils --count 100 --seed 7    of one unit, another sample
    tools/mutate.py src/oci_utils/scan.cpp --list         the sample without running it

A mutant changes one operator or constant, negates one condition or leaves out one
statement. It is built in a copy of the tree and run through the tests; one that does
not build is replaced by another. The same seed draws the same mutants.

docs/mutants.md may hold survivors, as they are printed here, with the reason why no test
can catch them: they are reported as known and do not count.
"""
import argparse
import collections
import concurrent.futures
import contextlib
import dataclasses
import itertools
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
KNOWN = ROOT / "docs" / "mutants.md"
SLOW_TESTS = "^(install|documents)$"
TEST_SECONDS = 30  # the slowest test takes two; more is an endless loop

# What only the compiler sees is blank here: no test could notice a change.
TOKEN = re.compile(
    r"""(?xs) (?P<blank>\s+ | //[^\n]* | /\*.*?\*/ | \#(?:[^\n\\]|\\.)*
          | static_assert\(.*?\); | template\ <[^>]*> | \[\[.*?\]\])
      | (?P<string>(?:u8|[uUL])?R"(?P<mark>[^(]*)\(.*?\)(?P=mark)"
          | (?:u8|[uUL])?"(?:[^"\\]|\\.)*")
      | (?P<number>'(?:[^'\\]|\\.)+' | 0[xX][\da-fA-F']+\w* | \.?\d(?:[eE][+-]|'\w|[\w.])*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><<= | >>= | <=> | -> | :: | \+\+ | -- | [-+*/%&|^=!<>]= | && | \|\|
          | << | >> | .)""")

# Between blanks these are operators of two operands: the code's layout sets
# pointers, references and template brackets against a word.
BINARY = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
          "&&": "||", "||": "&&", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "|",
          "+": "-", "-": "+", "*": "/", "/": "*", "%": "/",
          "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "/=",
          "&=": "|=", "|=": "&=", "^=": "|=", "<<=": ">>=", ">>=": "<<="}
ANYWHERE = {"++": "--", "--": "++", "!": "", "true": "false", "false": "true"}
CONTROL = {"if", "constexpr", "while", "for", "switch"}
NEGATABLE_RESULTS = {"bool", "boolean", "sword"}
# A statement that may be left out: an assignment, a call or a jump, but no declaration.
EXPRESSION = re.compile(
    r"""(?xs) break | continue | (?:\+\+|--).*
      | (?!return\b) \*? [\w:]+ (?:(?:\.|->)\w+ | \[[^;]*?\] | <[^;]*?>)*
        (?: (?:\+\+|--)?\s*(?:[-+*/%&|^]|<<|>>)?=(?!=).* | \(.*\) | \+\+ | -- )""")


@dataclasses.dataclass(frozen=True)
class Mutant:
    path: str
    text: str
    start: int
    end: int
    replacement: str

    def mutated(self, first=0, last=None):
        """The text between two places around the change, with the change."""
        return self.text[first:self.start] + self.replacement + self.text[self.end:last]

    def __str__(self):
        """The place, and the lines without and with the change."""
        first = self.text.rfind("\n", 0, self.start) + 1
        last = self.text.find("\n", self.end)
        return "\n".join([f"{self.path}:{self.text.count(chr(10), 0, first) + 1}",
                          *("-" + line for line in self.text[first:last].splitlines()),
                          *("+" + line for line in self.mutated(first, last).splitlines())])


class Source:
    """A file's tokens without blanks; `partner` leads from a bracket to the other one,
    `outer` from a token to the innermost bracket around it."""

    def __init__(self, path):
        self.path = path
        self.text = (ROOT / path).read_text()
        self.tokens = [m for m in TOKEN.finditer(self.text) if m.lastgroup != "blank"]
        self.words = [m.group() for m in self.tokens]
        self.partner, self.outer, opened = {}, [], []
        for i, word in enumerate(self.words):
            if word in (")", "]", "}") and opened:
                self.partner[i] = opened.pop()
                self.partner[self.partner[i]] = i
            self.outer.append(opened[-1] if opened else None)
            if word in ("(", "[", "{"):
                opened.append(i)

    def mutants(self):
        for i in range(len(self.tokens)):
            for first, last, replacement in self.changes(i):
                yield Mutant(self.path, self.text, self.tokens[first].start(),
                             self.tokens[last].end(), replacement)

    def changes(self, i):
        """Each change at a token: the first and the last token it replaces, and by what."""
        token, word = self.tokens[i], self.words[i]
        spaced = self.text[token.start() - 1].isspace() and self.text[token.end()].isspace()
        if word in BINARY and spaced:
            yield i, i, BINARY[word]
        elif word in ANYWHERE:
            yield i, i, ANYWHERE[word]
        elif token.lastgroup == "number" and not self.is_array_size(i):
            plain = re.fullmatch(r"0|[1-9]\d*", word)
            yield i, i, str(int(word) + 1) if plain else f"({word} + 1)"
            if not re.fullmatch(r"0[xX]?0*[uUlL]*|'\\0'", word):
                yield i, i, "0"
        elif word in ("if", "while") and self.words[i + 1] == "(":
            yield from self.negated(i + 2, self.partner[i + 1] - 1)
        elif word == "return" and self.result_is_negatable(i):
            yield from self.negated(i + 1, self.words.index(";", i) - 1)
        elif word == ";" and self.outer[i] is not None and self.words[self.outer[i]] == "{":
            first = self.statement_start(i)
            if EXPRESSION.fullmatch(self.text, self.tokens[first].start(), token.start()):
                yield first, i, ";"

    def negated(self, first, last):
        # One that starts with "!" has a mutant without it.
        if first < last and self.words[first] != "!":
            text = self.text[self.tokens[first].start():self.tokens[last].end()]
            yield first, last, f"!({text})"

    def is_array_size(self, i):
        """Whether a number is the size in a declaration; a larger array works as well."""
        before = [token.lastgroup for token in self.tokens[i - 3:i - 1]]
        return before == ["word", "word"] and self.words[i - 1] == "["

    def result_is_negatable(self, i):
        """Whether the function around the token returns a truth value or a status."""
        while (i := self.outer[i]) is not None:
            head = self.words[self.statement_start(i):i]
            if "(" in head and NEGATABLE_RESULTS & set(head[:head.index("(")]):
                return True
        return False

    def statement_start(self, end):
        """The first token of the statement or block head that ends before the token `end`."""
        i = end
        while i > 0:
            before = self.words[i - 1]
            if (before in (";", "{", "else", "do") or before == "}" and i < end
                    or before == ":" and "case" in self.words[i - 3:i - 1]
                    or before == ":" and self.words[i - 2] == "default"
                    or before == ")" and self.words[self.partner[i - 1] - 1] in CONTROL):
                break
            i = self.partner[i - 1] if before in (")", "]", "}") else i - 1
        return i


def source_files(units):
    for unit in units:
        path = pathlib.Path(unit).resolve()
        files = [path] if path.is_file() else sorted([*path.rglob("*.cpp"), *path.rglob("*.h")])
        yield from (str(file.relative_to(ROOT)) for file in files)


class Workspace:
    """A copy of the tree with a quick build of the library and its tests."""

    def __init__(self, folder, build_jobs):
        self.source, self.build = folder / "source", folder / "build"
        self.make = ["cmake", "--build", self.build, "-j", str(build_jobs)]
        self.test = ["ctest", "--test-dir", self.build, "--stop-on-failure", "--no-tests=error",
                     "--exclude-regex", SLOW_TESTS, "--timeout", str(TEST_SECONDS)]
        files = subprocess.check_output(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT)
        for name in files.decode().split("\0"):
            if (ROOT / name).is_file():
                (self.source / name).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / name, self.source / name)
        configure = ["cmake", "-G", "Ninja", "-S", self.source, "-B", self.build,
                     "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1",
                     "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                     "-DOCI_NUMBER_BUILD_BENCHMARKS=OFF", "-DOCI_NUMBER_BUILD_TOOL=OFF"]
        for command in (configure, self.make, self.test):
            if not succeeds(command):
                sys.exit(f"mutate.py: without a mutant this fails: {' '.join(map(str, command))}")

    def run(self, mutant):
        file = self.source / mutant.path
        file.write_text(mutant.mutated())
        outcome = "unbuildable"
        if succeeds(self.make):
            outcome = "survived" if succeeds(self.test) else "caught"
        file.write_text(mutant.text)
        print(f"{outcome:12}{str(mutant).splitlines()[0]}", file=sys.stderr, flush=True)
        return outcome


def succeeds(command):
    """Runs a command, and ends whatever it leaves behind."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True)
    status = process.wait()
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)
    return status == 0


def run_sample(order, count, jobs):
    """The outcomes of the first `count` mutants in the given order that build."""
    outcomes = {}
    with tempfile.TemporaryDirectory(prefix="mutate-") as scratch, \
            concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        folders = [pathlib.Path(scratch) / str(i) for i in range(jobs)]
        build_jobs = max(1, os.cpu_count() // jobs)
        workspaces = list(pool.map(lambda folder: Workspace(folder, build_jobs), folders))
        while order and len(outcomes) < count:
            wanted = count - len(outcomes)
            # Neighbours in a file one after the other: the file is rebuilt once for each.
            batch, order = sorted(order[:wanted], key=place), order[wanted:]
            bounds = [i * len(batch) // jobs for i in range(jobs + 1)]
            shares = [batch[a:b] for a, b in itertools.pairwise(bounds)]
            runs = pool.map(lambda space, share: [space.run(m) for m in share], workspaces, shares)
            results = zip(batch, itertools.chain(*runs))
            outcomes.update((m, outcome) for m, outcome in results if outcome != "unbuildable")
    return outcomes


def place(mutant):
    return mutant.path, mutant.start, mutant.replacement


def known_mutants():
    """The mutants written in KNOWN. Line numbers and indentation do not matter."""
    text = KNOWN.read_text() if KNOWN.exists() else ""
    return {identity(block) for block in re.findall(r"^\S+:\d+\n(?:[-+].*\n)+", text, re.MULTILINE)}


def identity(block):
    head, *lines = block.splitlines()
    return head.rpartition(":")[0], *(line[0] + line[1:].strip() for line in lines)


def report(outcomes):
    """Prints the survivors and the scores; returns the score in all, in per cent."""
    known = known_mutants()
    table = collections.defaultdict(collections.Counter)
    for mutant in sorted(outcomes, key=place):
        outcome = outcomes[mutant]
        if outcome == "survived":
            if identity(str(mutant)) in known:
                outcome = "known"
            print(f"{outcome}\n{mutant}\n")
        table[mutant.path][outcome] += 1
    table["all"] = sum(table.values(), collections.Counter())
    width = max(map(len, table))
    print(f"{'':{width}}  caught  survived  known   score")
    for path, n in table.items():
        score = 100 * n["caught"] / ((n["caught"] + n["survived"]) or 1)
        print(f"{path:{width}}  {n['caught']:6}  {n['survived']:8}  {n['known']:5}  {score:4.0f} %")
    return score


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    option = parser.add_argument
    option("units", nargs="*", default=[ROOT / "src"], help="files or folders (default: src)")
    option("--count", type=int, default=40, help="number of mutants (default: %(default)s)")
    option("--seed", type=int, default=1, help="chooses the sample (default: %(default)s)")
    option("--jobs", type=int, default=os.cpu_count(), help="trees at work (default: %(default)s)")
    option("--at-least", type=float, default=0, metavar="PERCENT", help="fail below this score")
    option("--list", action="store_true", help="print the sample and run nothing")
    options = parser.parse_args()

    mutants = [mutant for path in source_files(options.units) for mutant in Source(path).mutants()]
    order = random.Random(options.seed).sample(mutants, len(mutants))
    if not order:
        sys.exit("mutate.py: nothing to change there")
    if options.list:
        print("\n\n".join(map(str, sorted(order[:options.count], key=place))))
        return 0
    # A mutant may fill the memory or the disk.
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))
    return report(run_sample(order, options.count, options.jobs)) < options.at_least


if __name__ == "__main__":
    sys.exit(main())
