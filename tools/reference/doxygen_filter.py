#!/usr/bin/env python3
"""A public header as Doxygen reads it: its plain comments with Doxygen's marks.

    doxygen_filter.py HEADER
"""
import pathlib
import re
import sys

from comments import SECTION, blocks, function_name, is_code, plain, read_c

PATH = pathlib.Path(sys.argv[1])
FUNCTIONS = {name for header in PATH.parent.glob("*.h") for section in read_c(header).sections
             for declaration in section.declarations if (name := function_name(declaration.text))}


def prose(text):
    """Plain text that Doxygen does not mistake for marks; functions become links."""
    pieces = text.split("`")
    for i in range(0, len(pieces), 2):
        pieces[i] = re.sub(r"[\\@<>&#*_]", lambda found: "\\" + found[0], pieces[i])
        pieces[i] = pieces[i].replace("\\_", "_").replace("%", "%%")
        pieces[i] = re.sub(r"\w+", lambda found: "#" + found[0] if found[0] in FUNCTIONS else found[0],
                           pieces[i])
    text = "`".join(pieces)
    text = re.sub(r"^Errors?([:,]| of)", r"@par Errors\nErrors\1", text)
    return re.sub(r"^Returns ", "@return ", text)


def marked(comment):
    """The body of a Doxygen comment."""
    lines = []
    for block in blocks(comment):
        if isinstance(block, str):
            lines += [prose(block), ""]
        else:
            kind = "code" if is_code(block) else "verbatim"
            lines += [f"@{kind}", *block, f"@end{kind}", ""]
    return "\n".join(lines)


def filter_c():
    header = read_c(PATH)
    print(f"/** @file\n{marked(header.comment)}*/")
    for i, section in enumerate(header.sections):
        if not section.declarations:
            continue
        title = section.title or PATH.name
        group = re.sub(r"\W+", "_", f"{PATH.stem}_{section.title}".lower()).strip("_")
        print(f"/** @defgroup {group} {title}\n\n{marked(section.comment)}@{{ */")
        for declaration in section.declarations:
            text = declaration.text.removeprefix("OCI_NUMBER_API ")
            text = re.sub(r"/\* (.*?) \*/$", r"/**< \1 */", text, flags=re.M)
            if declaration.comment:
                print(f"/** {marked(declaration.comment)}*/")
            print(text)
        print("/** @} */")


def filter_cpp():
    """Comments in front of declarations at the level of a namespace or class, not in functions.
    A function without one says which function of C it calls."""
    text = PATH.read_text(encoding="utf-8")
    opening = re.match(r"/\*.*?\*/\n|(//.*\n)+", text, re.S if text.startswith("/*") else 0)[0]
    print(f"/** @file\n{marked(plain(opening))}*/")
    comment, in_class = [], False
    lines = text[len(opening):].splitlines()
    for at, line in enumerate(lines):
        indent = len(line) - len(line.lstrip())
        if indent == 0 and re.match(r"(class|struct|enum)\b[^;]*$", line):
            in_class = True
        elif line == "};":
            in_class = False
        is_outside = indent == 0 or (indent == 4 and in_class)
        if line.lstrip().startswith("//") and is_outside and not SECTION.match(line):
            comment.append(line.strip())
            continue
        if comment:
            if line and not line.startswith("extern"):
                print(f"/** {marked(plain(chr(10).join(comment)))}*/")
            comment = []
        elif indent == 0 and (called := re.match(
                r"inline number \w+\([^<\n]*\n?[^<\n]*<(OCINumber\w+)>", "\n".join(lines[at:at + 2]))):
            print(f"/** As #{called[1]}. */")
        if not line.startswith("extern"):
            print(line)
        if line == "}  // namespace oci":
            break  # what follows is the standard library's


filter_cpp() if PATH.suffix == ".hpp" else filter_c()
