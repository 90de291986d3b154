"""The public headers as comments and declarations.

Comments are plain text. What stands out from them by its place:

- a line indented further than the text, behind a blank line or a colon, begins a block that is
  kept as it is: a table or an example;
- the comment that opens a header speaks of the whole header;
- a one-line comment with a row of dashes begins a section, and comments that no declaration
  follows speak of the section;
- a comment speaks of the declarations below it up to the next blank line.
"""
import re
import textwrap
from dataclasses import dataclass, field


@dataclass
class Declaration:
    text: str
    comment: list  # its lines, shared with the declarations beside it


@dataclass
class Section:
    title: str
    comment: list = field(default_factory=list)
    declarations: list = field(default_factory=list)


@dataclass
class Header:
    comment: list
    sections: list


def plain(comment):
    """The lines of a comment without its marks."""
    text = re.sub(r"^/\*+|\*/$", "", comment.strip())
    return [re.sub(r"^ ?(\*|//)? ?", "", line).rstrip() for line in text.splitlines()]


SECTION = re.compile(r"(?:/\*|//) ---- (.+?)(?: -+ \*/)?$")
FUNCTION = re.compile(r"OCI_NUMBER_API\s[^;]*?(\w+)\([^;]*;")


def function_name(declaration):
    """The name of a declared function, or None."""
    found = FUNCTION.match(declaration)
    return found and found[1]


def read_c(path):
    """A C header."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    pieces = re.findall(r"^/\*.*?\*/$|^(?:typedef (?:struct|enum)[^;{]*\{[^}]*\}[^;]*;|"
                        r"(?:OCI_NUMBER_API|typedef)[^;]*;[^\n]*|#define [^\n]*(?:\\\n[^\n]*)*)|\n\n|"
                        r"\n#(?:if|el|en)[^\n]*", text, re.M | re.S)
    header = Header(plain(pieces[0]), [Section("")])
    comment = []
    for before, piece in zip(pieces, pieces[1:]):
        section = header.sections[-1]
        if title := SECTION.match(piece):
            header.sections.append(Section(title[1]))
        elif piece.startswith("/*"):
            comment = plain(piece)
        elif piece.startswith("\n"):
            if piece == "\n\n" and comment and before.startswith("/*"):
                section.comment += ([""] if section.comment else []) + comment
            if piece == "\n\n":
                comment = []
        elif not re.match(r"#define (\w+_H$|OCI_NUMBER_API\b|\w+\()", piece):
            section.declarations.append(Declaration(piece, comment))
    return header


def is_code(lines):
    return any(re.search(r"[(=].*;|\{$|^#include|^\w+ \w+;$", line) for line in lines)


def parted(lines):
    """Tables and examples apart that blank lines part."""
    result = []
    for part in re.split(r"\n\n", textwrap.dedent("\n".join(lines)).rstrip()):
        part = part.split("\n")
        if result and is_code(result[-1]) == is_code(part):
            result[-1] += ["", *part]
        else:
            result.append(part)
    return result


def blocks(lines):
    """The parts of a comment: paragraphs (str, on one line) and blocks kept as they are (list)."""
    result, paragraph, kept = [], [], []

    def close():
        if paragraph:
            result.append(" ".join(paragraph))
        if kept:
            result.extend(parted(kept))
        paragraph.clear()
        kept.clear()

    for line in lines:
        if not line:
            if kept:
                kept.append(line)
            else:
                close()
        elif not line.startswith("  "):
            if kept or re.match(r"Errors?[:,]|Errors of|Returns ", line):
                close()
            paragraph.append(line)
        elif kept or not paragraph or paragraph[-1].endswith(":"):
            if not kept:
                close()
            kept.append(line)
        else:
            paragraph.append(line.strip())
    close()
    return result
