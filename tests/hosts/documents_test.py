"""The pages for hosts of other languages show what is run, and tell of the whole header."""
import unittest

import documents
import header
from documents import GUIDE

QUICK = "docs/quick-start.md"


class Pages(unittest.TestCase):
    def setUp(self):
        self.files, self.table = documents.read(), header.read()

    def test_they_show_what_is_run_and_tell_of_everything(self):
        self.assertEqual([], documents.findings(self.files, self.table))

    def changed(self, page, old, new):
        self.assertTrue(old in self.files.pages[page], old)
        pages = {**self.files.pages, page: self.files.pages[page].replace(old, new)}
        return documents.findings(self.files._replace(pages=pages), self.table)

    def test_each_fault_is_found(self):
        for page, old, new, said in (
                (QUICK, "QorPingQor(handle[0], 10000)", "QorPingQor(handle[0], 1000)",
                 f"{QUICK}: no program has these lines: // Reads a value."),
                (QUICK, "lib, qor, speed = qc.load", "lib, qor, rate = qc.load",
                 f'{QUICK}: no program has these lines: """Reads a value.'),
                (GUIDE, "`QorStopDtcRead`", "`QorEndDtcRead`", f"{GUIDE}: the header has no QorEndDtcRead"),
                (GUIDE, "`QorResultCanBusItems`", "", f"{GUIDE}: does not tell of QorResultCanBusItems"),
                (GUIDE, "`QOR_CHOICE_RETRY` 4", "", f"{GUIDE}: does not tell of QOR_CHOICE_RETRY"),
                (GUIDE, "| 17 | `QOR_CHANGED`", "| 16 | `QOR_CHANGED`", f"{GUIDE}: QOR_CHANGED is 17"),
                (GUIDE, "openWide", "openWiden", f"{GUIDE}: does not show the piece utf-8"),
                ("examples/README.md", r"examples\tour.py", r"examples\Tour.py", "examples/README.md: no file Tour.py")):
            with self.subTest(old):
                self.assertTrue(any(finding.startswith(said) for finding in self.changed(page, old, new)))

    def test_each_function_of_a_new_header_must_be_told_of(self):
        text = header.HEADER.read_text(encoding="utf-8")
        more = header.parse(text.replace("QOR_IMPORT int QOR_CALL QorClose", "QOR_IMPORT int QOR_CALL QorMore(void);\n"
                                         "QOR_IMPORT int QOR_CALL QorClose"))
        self.assertEqual([f"{GUIDE}: does not tell of QorMore"], documents.findings(self.files, more))


if __name__ == "__main__":
    unittest.main()
