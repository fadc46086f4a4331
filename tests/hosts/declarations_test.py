"""The examples' declarations are those of QorControl.h. usage: declarations_test.py FOLDER

The folder has Tour.exe, the example in C#, and Declarations.exe, which tells what that declares.
"""
import sys
import unittest
from pathlib import Path

import declarations
import header

folder = Path(".")
# Faults of a header that all languages know, and what is said about them.
FAULTS = [
    ("#define QOR_REFUSED 7 ", "#define QOR_REFUSED 9 ", "constant QOR_REFUSED is 7"),
    ("unsigned int code;\n", "int code;\n", "structure QorDtc: code is"),
    ("    double value;\n    double timeMs;", "    double timeMs;\n    double value;",
     "structure QorSample has the fields"),
    ("    unsigned int status;\n", "    unsigned int status;\n    unsigned int more;\n",
     "structure QorDtc has the fields"),
    ("QorPingQor(QorHandle handle, unsigned int timeoutMs", "QorPingQor(QorHandle handle",
     "QorPingQor: 2 parameters"),
    ("QorPingQor(QorHandle handle, unsigned int", "QorPingQor(QorHandle handle, int", "QorPingQor: timeoutMs is"),
    ("QOR_IMPORT int QOR_CALL QorClose", "QOR_IMPORT double QOR_CALL QorClose", "QorClose: gives"),
    ("const double* second", "const int* second", "QorSetParamData: second is"),
    ("unsigned int slots,\n", "double slots,\n", "QorStartParamRead: slots is"),
    ("QOR_CALL QorStopParamRead(", "QOR_CALL QorEndParamRead(", "function QorStopParamRead is not in the header"),
]
# Faults that only those see who have declared everything.
FAULTS_OF_ALL = [
    ("#define QOR_CHOICE_NO 7", "#define QOR_CHOICE_NO 7\n#define QOR_CHOICE_MAYBE 8",
     "constant QOR_CHOICE_MAYBE is missing"),
    ("QOR_IMPORT int QOR_CALL QorStopDtcRead", "QOR_IMPORT int QOR_CALL QorMore(void);\n"
     "QOR_IMPORT int QOR_CALL QorStopDtcRead", "function QorMore is missing"),
    ("QorLogFunction)(void* user, int", "QorLogFunction)(void* user, double", "QorLogFunction: isFailure is"),
]


class Declared:
    """The tests of one language."""
    faults = FAULTS + FAULTS_OF_ALL

    @staticmethod
    def declared():
        raise NotImplementedError

    def test_they_are_those_of_the_header(self):
        self.assertEqual([], declarations.differences(header.read(), self.declared()))

    def test_each_fault_is_found(self):
        text, declared = header.HEADER.read_text(encoding="utf-8"), self.declared()
        for old, new, said in self.faults:
            with self.subTest(old):
                self.assertEqual(1, text.count(old))
                found = declarations.differences(header.parse(text.replace(old, new)), declared)
                self.assertIn(said, "\n".join(found))


class InPython(Declared, unittest.TestCase):
    declared = staticmethod(declarations.of_python)

    def test_another_layout_is_found(self):
        declared = self.declared()
        declared.layouts["QorMessageBox"]["timeMs"] = 20
        self.assertIn("structure QorMessageBox is laid out as",
                      "\n".join(declarations.differences(header.read(), declared)))


class InCSharp(Declared, unittest.TestCase):
    def declared(self):
        return declarations.of_csharp(str(folder / "Declarations.exe"), str(folder / "Tour.exe"))

    def test_another_layout_and_another_calling_convention_are_found(self):
        declared = self.declared()
        declared.layouts["QorMessageBox"]["timeMs"] = 20
        declared.functions["QorClose"] = [("QorControlC.dll/StdCall", ["IntPtr"])]
        found = "\n".join(declarations.differences(header.read(), declared))
        self.assertIn("structure QorMessageBox is laid out as", found)
        self.assertIn("QorClose: gives QorControlC.dll/StdCall", found)


class InNode(Declared, unittest.TestCase):
    faults = FAULTS
    declared = staticmethod(declarations.of_node)


if __name__ == "__main__":
    folder = Path(sys.argv.pop(1))
    unittest.main()
