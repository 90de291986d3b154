#!/usr/bin/env python3
"""Manual pages made of the comments of the C headers.

    man_pages.py VERSION FOLDER HEADER...

Writes a page for each header (oci.h.3), and one for each comment that speaks of functions, under
the name of the first; the others' names lead there. A function without a comment is a failure.
"""
import pathlib
import re
import sys

from comments import blocks, function_name, read_c

VERSION, FOLDER, *HEADERS = sys.argv[1:]
MARK = "OCI_NUMBER_API "


def escaped(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^(?=[.'])", r"\\&", text)


def prose(text):
    return re.sub(r"`([^`]*)`", r"\\fI\1\\fR", escaped(text))


def body(comment):
    """Paragraphs and kept blocks; "Errors" begins a section of its own."""
    lines = []
    for block in blocks(comment):
        if isinstance(block, list):
            lines += [".PP", ".RS 4", ".EX",
                      *(escaped(line.replace("`", "")) for line in block), ".EE", ".RE"]
            continue
        if re.match(r"Errors?[:,]", block):
            lines.append(".SH ERRORS")
        elif block.startswith("Returns "):
            lines.append(".SH RETURN VALUE")
        else:
            lines.append(".PP")
        lines.append(prose(block))
    return lines[1:] if lines[:1] == [".PP"] else lines


def summary(comment):
    """The first sentence."""
    text = blocks(comment)[0].replace("`", "")
    return escaped(re.split(r"(?<=\w)[.:;](?: |$)", text)[0])


def page(name, lines):
    # Without a date, so that two builds give the same bytes; without hyphens in names.
    text = "\n".join([f'.TH {name} 3 "" "oci\\-number {VERSION}" "Numbers"', ".nh", ".ad l", *lines])
    (pathlib.Path(FOLDER) / f"{name}.3").write_text(text + "\n", encoding="utf-8")


def see_also(names):
    return [".SH SEE ALSO"] + [f".BR {escaped(name)} (3){',' if name != names[-1] else ''}"
                               for name in names]


def write_functions(header, section):
    groups = []
    for declaration in section.declarations:
        name = function_name(declaration.text)
        if name is None:
            continue
        if not declaration.comment:
            sys.exit(f"{header}: {name} has no comment")
        if groups and groups[-1][0] is declaration.comment:
            groups[-1][1].append((name, declaration.text))
        else:
            groups.append((declaration.comment, [(name, declaration.text)]))

    everyone = [name for _, functions in groups for name, _ in functions]
    for comment, functions in groups:
        names = [name for name, _ in functions]
        lines = [".SH NAME", f"{', '.join(names)} \\- {summary(comment)}",
                 ".SH SYNOPSIS", ".EX", f"#include <{header}>", ""]
        for _, text in functions:
            text = text.removeprefix(MARK).replace("\n" + " " * len(MARK), "\n")
            lines += escaped(text).split("\n")
        lines += [".EE", ".SH DESCRIPTION", *body(comment)]
        if section.comment:
            about = [".SS " + escaped(section.title) if line.startswith(".SH") else line
                     for line in body(section.comment)]
            lines += [".SH NOTES", *about]
        others = [name for name in everyone if name not in names]
        page(names[0], lines + see_also([header] + others))
        for name in names[1:]:
            (pathlib.Path(FOLDER) / f"{name}.3").write_text(f".so man3/{names[0]}.3\n")


for path in HEADERS:
    header, name = read_c(path), pathlib.Path(path).name
    for section in header.sections:
        write_functions(name, section)
    functions = [found for section in header.sections for declaration in section.declarations
                 if (found := function_name(declaration.text))]
    page(name, [".SH NAME", f"{escaped(name)} \\- {summary(header.comment)}", ".SH SYNOPSIS", ".EX",
                f"#include <{name}>", ".EE", ".SH DESCRIPTION", *body(header.comment),
                *(see_also(functions) if functions else [])])
