"""Runs what the documents show, and holds their tables against the library and its source.

    documents_test.py SOURCE_FOLDER BUILD_FOLDER LIBDIR

A block of a page is a session ("$ " in front of the commands), commands (sh), a program (c, cpp,
python; the text block next to it is what it writes) or a CMakeLists.txt (cmake). It runs in a
folder of the page's own, which begins as a copy of examples/, with the library installed beside
it; programs stay there as "program.c" and "program". A comment in front of a block can say

    <!-- not run: why -->
    <!-- run by FILE -->        a script that has each of these commands in it
    <!-- with: FILE -->         in front of a fragment: what stands around it
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE, BUILD, LIBDIR = Path(sys.argv.pop(1)), Path(sys.argv.pop(1)), sys.argv.pop(1)
PAGES = [*SOURCE.glob("*.md"), *sorted(SOURCE.glob("docs/*.md"))]
PROGRAMS = {"c": ["c", [os.environ.get("CC", "cc"), "-std=c99"]],
            "cpp": ["cpp", [os.environ.get("CXX", "c++"), "-std=c++17"]]}

sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "tools/reference"))
import comments  # noqa: E402


class Block:
    def __init__(self, page, line, language, text, mark):
        self.where = f"{page.name}:{line}"
        self.language, self.text, self.mark = language, text, mark


def blocks(page):
    """The fenced and the indented blocks of a page."""
    found, mark, lines = [], "", page.read_text(encoding="utf-8").splitlines()
    at, before = 0, ""
    while at < len(lines):
        line, start = lines[at], at + 1
        if fence := re.match(r"```(\w*)$", line):
            end = lines.index("```", at + 1)
            found.append(Block(page, start, fence[1], "\n".join(lines[at + 1:end]) + "\n", mark))
            at, mark = end, ""
        elif line.startswith("    ") and not before:
            end = at
            while end < len(lines) and (lines[end].startswith("    ") or
                                        (not lines[end] and "".join(lines[end:end + 2])[:4] == "    ")):
                end += 1
            text = "\n".join(shown[4:] for shown in lines[at:end]) + "\n"
            found.append(Block(page, start, "", text, mark))
            at, mark = end - 1, ""
        elif comment := re.match(r"<!-- ((?:not run|run by|with).*) -->$", line):
            mark = comment[1]
        elif line:
            mark = ""
        before = lines[at]
        at += 1
    return found


def rows(page, heading):
    """The rows of the first table behind a heading, cells without their marks."""
    text = (SOURCE / page).read_text(encoding="utf-8")
    table = text.split(heading + "\n", 1)[1].split("\n|", 1)[1].split("\n\n")[0]
    lines = [line.strip("| ") for line in table.splitlines()]
    return [[cell.strip() for cell in line.split(" | ")] for line in lines if "---" not in line]


class Documents(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.scratch = Path(cls.folder.name)
        prefix = cls.scratch / "prefix"
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        cls.environment = {
            **os.environ,
            "LC_ALL": "C.UTF-8",
            "PATH": f"{prefix}/bin:{os.environ['PATH']}",
            "MANPATH": f"{prefix}/share/man",
            "LD_LIBRARY_PATH": f"{prefix}/{LIBDIR}",
            "PKG_CONFIG_PATH": f"{prefix}/{LIBDIR}/pkgconfig",
            "CMAKE_PREFIX_PATH": str(prefix)}

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def shell(self, command, folder):
        done = subprocess.run(["bash", "-c", command], capture_output=True, timeout=120, text=True,
                              cwd=folder, env=self.environment)
        return done.returncode, done.stdout + done.stderr

    def compiled(self, language, text, folder):
        suffix, compiler = PROGRAMS[language]
        (folder / f"program.{suffix}").write_text(text, encoding="utf-8")
        flags = "$(pkg-config --cflags --libs oci_number) -lm -lpthread"
        status, said = self.shell(f"{' '.join(compiler)} -Wall -Wextra -Werror program.{suffix} "
                                  f"{flags} -o program", folder)
        self.assertEqual((status, said), (0, ""))

    def session(self, text, folder):
        for shown in re.split(r"^\$ ", text, flags=re.M)[1:]:
            command, output = shown.split("\n", 1)
            if "parallel" in command and not shutil.which("parallel"):
                continue
            with self.subTest(command):
                self.assertEqual(self.shell(command, folder)[1], output)

    def run_block(self, block, output, folder):
        if block.text.startswith(">>> "):
            return  # the Python package's tests run these
        if block.text.startswith("$ "):
            self.session(block.text, folder)
        elif block.language in PROGRAMS:
            text = block.text
            if block.mark.startswith("with: "):
                frame = (SOURCE / block.mark[6:]).read_text(encoding="utf-8")
                text = frame.replace("    /* here */\n", text)
            self.compiled(block.language, text, folder)
            self.assertEqual(self.shell("./program", folder), (0, output or ""))
        elif block.language == "python":
            done = subprocess.run([sys.executable, "-c", block.text], capture_output=True,
                                  timeout=60, text=True, cwd=folder, check=False)
            self.assertEqual(done.stdout + done.stderr, output or "")
        elif block.language == "cmake":
            frame = ("" if "project(" in block.text else
                     "cmake_minimum_required(VERSION 3.22)\nproject(page LANGUAGES C CXX)\n"
                     "add_executable(program program.c)\n")
            (folder / "CMakeLists.txt").write_text(frame + block.text, encoding="utf-8")
            status, said = self.shell("cmake -G Ninja -S . -B by_cmake && cmake --build by_cmake", folder)
            self.assertEqual(status, 0, said)
        elif block.language == "sh":
            status, said = self.shell("set -e\n" + block.text, folder)
            self.assertEqual(status, 0, said)
        else:
            self.fail("neither run nor marked as not run")

    def test_blocks(self):
        for page in PAGES:
            folder = self.scratch / page.stem
            shutil.copytree(SOURCE / "examples", folder)
            found = blocks(page)
            outputs = {block: following for block, following in zip(found, found[1:])
                       if following.language == "text" and not following.mark}
            for block in found:
                if block.mark.startswith("not run: ") or block in outputs.values():
                    continue
                with self.subTest(block.where):
                    if block.mark.startswith("run by "):
                        script = (SOURCE / block.mark[7:]).read_text(encoding="utf-8")
                        for command in block.text.splitlines():
                            command = re.split(r"\s+#", command)[0]
                            self.assertTrue(command in script, command)
                    else:
                        output = outputs.get(block)
                        self.run_block(block, output and output.text, folder)

    def test_programs_of_the_headers(self):
        count = 0
        for header in sorted((SOURCE / "include").glob("*.h*")):
            text = header.read_text(encoding="utf-8")
            opening = re.match(r"/\*.*?\*/|(?://.*\n)+", text, re.S)[0]
            for block in comments.blocks(comments.plain(opening)):
                if isinstance(block, list) and any("int main" in line for line in block):
                    with self.subTest(header.name):
                        self.compiled("cpp" if header.suffix == ".hpp" else "c",
                                      "\n".join(block) + "\n", self.scratch)
                        output = re.search(r"(?://|/\*) ([-\d.]+)( \*/)?$", "\n".join(block), re.M)
                        status, said = self.shell("./program", self.scratch)
                        self.assertEqual((status, said.strip()),
                                         (0, output[1] if output else said.strip()))
                        count += 1
        self.assertGreaterEqual(count, 2)

    def test_links(self):
        for page in PAGES:
            text = page.read_text(encoding="utf-8")
            for target in re.findall(r"\]\(([^)\s]+)\)|(?:src|srcset)=\"([^\"]+)\"", text):
                target = "".join(target)
                if "://" in target or target.startswith("mailto:"):
                    continue
                name, _, anchor = target.partition("#")
                path = page.parent / name if name else page
                with self.subTest(f"{page.name}: {target}"):
                    self.assertTrue(path.exists())
                    if anchor:
                        headings = re.findall(r"^#+ (.+)$", path.read_text(encoding="utf-8"), re.M)
                        self.assertIn(anchor, [re.sub(r"[^\w -]", "", heading).lower().replace(" ", "-")
                                               for heading in headings])


class Tables(unittest.TestCase):
    """What the pages state against the tool and the source."""

    def tool(self, *arguments):
        done = subprocess.run([BUILD / "tools/number_tool/ocinumber", *arguments],
                              capture_output=True, text=True, check=False)
        return done.stdout.rstrip("\n") if done.returncode == 0 else "refused"

    def test_format(self):
        examples = rows("docs/format.md", "## Examples")[1:]
        self.assertGreater(len(examples), 8)
        for value, shown in examples:
            with self.subTest(value):
                self.assertEqual(self.tool("encode", "--", value), shown.replace(" ", ""))

    def test_format_models(self):
        for heading in "### A body", "### FM":
            (_, *models), *numbers = rows("docs/format_models.md", heading)
            for number, *texts in numbers:
                for model, text in zip(models, texts):
                    with self.subTest(f"{number} under {model}"):
                        self.assertEqual(self.tool("format", "--model", model.strip("`"), "--", number),
                                         text.strip("`").strip("'"))
        for texts, model, outcome in rows("docs/format_models.md", "## From text")[1:]:
            for text in re.findall(r"`([^`]*)`", texts):
                with self.subTest(f"{text} under {model}"):
                    self.assertEqual(self.tool("parse", "--model", model.strip("`"), "--", text),
                                     outcome.split(":")[0])

    def test_errors(self):
        source = "".join(path.read_text(encoding="utf-8")
                         for path in (SOURCE / "src/oci_number").glob("*.cpp"))
        formats = {int(number): text for number, text in
                   re.findall(r'"(?:%s)-(\d+): ([^"]*)"', source)}
        shown = {int(row[0]): row[1] for row in rows("docs/errors.md", "## Numbers")[1:]}
        self.assertEqual(shown.keys(), formats.keys())
        for number, text in formats.items():
            pattern = re.escape(text.replace("\\n", "` LF").removesuffix("` LF"))
            for placeholder, shape in (r"%u", r"\d+"), (r"%d", r"\d+"), (r"%ld", r"\d+"), \
                    (r"%\.\*s", r".*"), (r"%s", r".*"):
                pattern = pattern.replace(placeholder, shape)
            with self.subTest(number):
                self.assertRegex(shown[number], rf"^`(OCI|ORA)-0*{number}: {pattern}`")
                self.assertEqual("LF" in shown[number], "\\n" in text)
        for cell, *_ in rows("docs/errors.md", "## Error 602")[1:]:
            for text in re.findall(r"`([^`]*)`", cell):
                with self.subTest(text):
                    pieces = re.split(r"NAME|\.\.\.|OCINumberLn", text)
                    for piece in pieces:
                        self.assertIn(piece.strip(), re.sub(r'"\s*"', "", source))

    def test_map(self):
        known = (SOURCE / "docs/architecture.md").read_text(encoding="utf-8")
        for folder in "src", "tools", "cmake", "include":
            for path in (SOURCE / folder).rglob("*.*"):
                if (path.parent.name in ("tables", "debian", "__pycache__") or
                        path.name in ("CMakeLists.txt", ".clang-tidy")):
                    continue
                stem = path.name.split(".")[0]
                with self.subTest(path.relative_to(SOURCE)):
                    self.assertTrue(re.search(rf"{re.escape(stem)}[.`{{]", known) or
                                    f"{path.parent.name}/`" in known)

    def test_package_groups(self):
        groups = re.findall(r"^(\w+) ", (SOURCE / "tools/packages.txt").read_text(), re.M)
        scripts = [SOURCE / name for name in ("run", "test", ".ci/run", ".devcontainer/Dockerfile")]
        for script in [*scripts, *(SOURCE / "tools").glob("*.sh")]:
            text = script.read_text().replace("\\\n", "")
            for called in re.findall(r"^[^#\n]*/install_packages\.sh\"?((?: +[\w\"$]+)+)", text, re.M):
                for group in called.split():
                    with self.subTest(f"{script.name}: {group}"):
                        self.assertTrue("$" in group or group in groups)

    def test_plots(self):
        sys.path.insert(0, str(SOURCE / "bench"))
        import plots
        with tempfile.TemporaryDirectory() as folder:
            plots.write_plots((SOURCE / "docs/benchmarks.md").read_text(encoding="utf-8"),
                              Path(folder))
            drawn = {path.name: path.read_bytes() for path in Path(folder).iterdir()}
        self.assertEqual({path.name: path.read_bytes() for path in SOURCE.glob("docs/plots/*")}, drawn)


if __name__ == "__main__":
    unittest.main()
