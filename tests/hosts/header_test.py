"""The table of QorControl.h is what compilers see in it, and what the library exports."""
import re
import subprocess
import unittest
from pathlib import Path

import header
from header import Member, NotUnderstood, Type

INCLUDES = ["-I", str(header.ROOT / "src"), "-I", str(header.HEADER.parent)]
MINGW = ["i686-w64-mingw32-gcc-posix"]
MICROSOFT = ["clang", "--target=i686-pc-windows-msvc", "-ffreestanding"]
HERE = ["gcc"]
EXPORTS = header.HEADER.parent / "QorControlC.def"


def declaration(function):
    """A pointer to a function of this type, which takes only that function without a complaint."""
    kinds = ", ".join(text_of(parameter.type) for parameter in function.parameters) or "void"
    return f"{text_of(function.result)}(QOR_CALL* p{function.name})({kinds})"


def text_of(kind):
    """In C; the inner pointers of two are const."""
    return str(kind) if kind.pointers < 2 else f"const {kind.base}* const*"


def check_of(table, pointer_size):
    """A source that compiles if the table is right."""
    lines = ["#include <stddef.h>", '#include "QorControl.h"',
             "#define HOLDS(name, condition) typedef char name[(condition) ? 1 : -1]"]
    for name, value in table.constants.items():
        lines.append(f"HOLDS(check_{name}, {name} == {value}u);")
    for name, fields in table.structures.items():
        for field, offset in header.layout(fields, pointer_size).items():
            said = f"offsetof({name}, {field})" if field else f"sizeof({name})"
            lines.append(f"HOLDS(check_{name}_{field}, {said} == {offset});")
        lines += [f"{text_of(field.type)}* p{name}_{field.name} = &(({name}*)0)->{field.name};"
                  if not field.type.const else "" for field in fields]
    lines += [f"{declaration(function)} = {function.name};" for function in table.functions]
    lines += [f"{declaration(function)} = ({function.name})0;" for function in table.callbacks]
    return "\n".join(lines) + "\n"


def complaint(compiler, source, language="c"):
    command = [*compiler, "-std=c89" if language == "c" else "-std=c++11", "-Wall", "-Wextra", "-Werror",
               "-fsyntax-only", *INCLUDES, "-x", language, "-"]
    return subprocess.run(command, input=source, stderr=subprocess.PIPE, text=True, check=False).stderr


class TheHeaderAsATable(unittest.TestCase):
    def setUp(self):
        self.text = header.HEADER.read_text(encoding="utf-8")
        self.table = header.read()

    def test_each_compiler_agrees_with_it(self):
        for compiler in (MINGW, MICROSOFT):
            self.assertEqual("", complaint(compiler, check_of(self.table, 4)))
        self.assertEqual("", complaint(HERE, check_of(self.table, 8)))

    def test_a_compiler_finds_each_fault_of_the_table(self):
        for old, new in (("#define QOR_SILENT 5", "#define QOR_SILENT 6"),
                         ("unsigned int code;", "unsigned int code;\n unsigned int more;"),
                         ("    int waiting;", "    unsigned int waiting;"),
                         ("QorPingQor(QorHandle handle, unsigned", "QorPingQor(QorHandle handle, int unused, unsigned"),
                         ("double QOR_CALL QorNowMs", "int QOR_CALL QorNowMs"),
                         ("const double* second", "const int* second"),
                         ("QorProgressFunction)(void* user, int", "QorProgressFunction)(void* user, double")):
            self.assertEqual(1, self.text.count(old), old)
            faulty = header.parse(self.text.replace(old, new))
            self.assertNotEqual("", complaint(MINGW, check_of(faulty, 4)), old)

    def test_the_first_program_in_c_is_one_in_cpp_too(self):
        first = (header.ROOT / "tools/example/first/first.c").read_text(encoding="utf-8")
        replaced = ["-nostdinc", "-isystem", str(Path(__file__).with_name("msvc"))]
        for compiler in (["i686-w64-mingw32-g++-posix"], MICROSOFT + replaced):
            self.assertEqual("", complaint(compiler, first, "c++"))
            self.assertNotEqual("", complaint(compiler, first.replace("NULL, QOR", "0.5, QOR"), "c++"))

    def test_it_has_as_many_functions_as_the_header_imports(self):
        declared = re.findall(r"^QOR_IMPORT ", self.text, re.MULTILINE)
        self.assertEqual(len(declared), len(self.table.functions))
        self.assertEqual(len(declared), len({function.name for function in self.table.functions}))

    def test_the_library_exports_these_functions_and_no_others(self):
        lines = EXPORTS.read_text(encoding="utf-8").split("EXPORTS", 1)[1].split("\n")
        exported = [line.split(";")[0].strip() for line in lines]
        self.assertEqual(sorted(function.name for function in self.table.functions),
                         sorted(name for name in exported if name))

    def test_what_it_does_not_understand_is_an_error(self):
        for more in ("enum QorColour { QOR_RED };\n", "int QorForgotten(void);\n", "#define QOR_TEXT \"text\"\n",
                     "QOR_IMPORT long QOR_CALL QorOdd(void);\n",
                     "typedef struct QorOdd { unsigned short field; } QorOdd;\n"):
            with self.assertRaises(NotUnderstood, msg=more):
                header.parse(self.text.replace("#ifdef __cplusplus\n}", more + "#ifdef __cplusplus\n}"))

    def test_a_double_lies_at_a_multiple_of_its_size(self):
        fields = [Member("one", Type("int")), Member("two", Type("double")), Member("three", Type("char", 1))]
        self.assertEqual({"one": 0, "two": 8, "three": 16, "": 24}, header.layout(fields))


if __name__ == "__main__":
    unittest.main()
