"""Finds the functions of a C++ text that clang-format has laid out, and how long they are.

No parser: it blanks out what is no code and follows the braces. The layout tells what a brace is:
one with a blank or a line's beginning before it opens a block, any other one is an initializer
(`name{1}`, `Type{}`), and so is one behind `=` or `return`.
"""
import re
from typing import Iterator, NamedTuple

# What is no code, in one sweep, so that a quote in a comment is none and the reverse.
NO_CODE = re.compile(
    r"""//(?:[^\n\\]|\\.|\\\n)*          # a comment to the end of the line
      | /\*.*?\*/
      | R"(?P<mark>[^\s()\\]{0,16})\(.*?\)(?P=mark)"
      | "(?:[^"\\\n]|\\.|\\\n)*"
      | (?<![0-9A-Fa-f])'(?:[^'\\\n]|\\.)+'   # not the one between the digits of a number
      | ^[ ]*\#(?:[^\n\\]|\\.|\\\n)*       # a directive with its further lines
    """, re.VERBOSE | re.DOTALL | re.MULTILINE)
# The head of a block that holds declarations rather than statements.
SCOPE = re.compile(r"\b(namespace|class|struct|union|enum|extern)\b(?!.*\))", re.DOTALL)
LABEL = re.compile(r"\s*(public|protected|private|signals|default)\s*$")


class Function(NamedTuple):
    line: int    # of its first word
    name: str
    lines: int   # from there to its closing brace


class Unbalanced(Exception):
    """The braces cannot be followed; `line` is where that shows."""

    def __init__(self, line):
        super().__init__(f"unbalanced braces in line {line}")
        self.line = line


def only_code(text: str) -> str:
    """The text with blanks in place of comments and directives, x's in place of literals."""
    def blank(match):
        filler = "x" if match.group(0)[0] in "\"'R" else " "
        return re.sub(r"[^\n]", filler, match.group(0))
    return NO_CODE.sub(blank, text)


def name_of(head: str) -> str:
    """Two arguments of a macro are the name of a test, else the word before the parenthesis."""
    test = re.match(r"\s*TEST\w*\((\w+),\s*(\w+)\)", head)
    if test:
        return f"{test.group(1)}.{test.group(2)}"
    while re.search(r"<[^<>]*>", head):
        head = re.sub(r"<[^<>]*>", "", head)
    named = re.search(r"(operator\W*|[\w:~]+)\s*\(", head)
    return named.group(1).strip() if named else "a lambda"


def kind_of(head: str) -> str:
    if head[-1:] not in ("", " ", "\n") or re.search(r"(=|,|\breturn)\s*$", head):
        return "initializer"
    if SCOPE.search(head) or not re.search(r"\(|\]\s*$", head):
        return "scope"
    return "function"


class Scanner:
    """Follows the braces outside of functions; inside it only counts them."""

    def __init__(self, text: str):
        self.code = only_code(text)
        self.line = 1
        self.open = []     # per open brace its kind and the declaration around it
        self.inside = 0    # depth of braces inside of a function
        self.start(0)

    def start(self, position):
        """A declaration begins behind this position."""
        self.head_start, self.first_line = position, None

    def functions(self) -> Iterator[Function]:
        for position, sign in enumerate(self.code):
            if sign == "\n":
                self.line += 1
            elif sign == "{":
                self.enter(position)
            elif sign == "}":
                yield from self.leave(position)
            elif self.inside:
                continue
            elif sign == ";" or (sign == ":" and LABEL.match(self.code[self.head_start:position])):
                self.start(position + 1)
            elif sign == "," and self.open and self.open[-1][0] == "initializer":
                self.start(position + 1)
            elif self.first_line is None and not sign.isspace():
                self.first_line = self.line
        if self.open or self.inside:
            raise Unbalanced(self.line)

    def enter(self, position):
        if self.inside:
            self.inside += 1
            return
        head = self.code[self.head_start:position]
        kind = kind_of(head)
        self.open.append((kind, head, self.head_start, self.first_line or self.line))
        if kind == "function":
            self.inside = 1
        else:
            self.start(position + 1)

    def leave(self, position) -> Iterator[Function]:
        if self.inside > 1:
            self.inside -= 1
            return
        if not self.open:
            raise Unbalanced(self.line)
        kind, head, head_start, first_line = self.open.pop()
        self.inside = 0
        self.start(position + 1)
        if kind == "function":
            yield Function(first_line, name_of(head), self.line - first_line + 1)
        elif kind == "initializer":  # the declaration goes on behind it
            self.head_start, self.first_line = head_start, first_line


def functions_in(text: str) -> Iterator[Function]:
    """The outermost functions; what is nested in one (lambdas, local classes) counts as its lines."""
    return Scanner(text).functions()
