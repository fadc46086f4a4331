"""How the figures of single files become those of folders."""
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "cmake"))
import coverage  # noqa: E402


def file(name, lines, lines_run, branches, branches_run):
    return {"filename": name, "line_total": lines, "line_covered": lines_run, "branch_total": branches,
            "branch_covered": branches_run}


class Coverage(unittest.TestCase):
    def test_files_add_up_to_folders_and_these_to_all(self):
        folders = coverage.folders_of([file("src/client/A.cpp", 10, 9, 4, 1),
                                       file("src/client/A.h", 30, 30, 0, 0),
                                       file("src/facade/B.cpp", 5, 0, 2, 2)])
        self.assertEqual(coverage.Figures(40, 39, 4, 1), folders["client"])
        self.assertEqual(coverage.Figures(5, 0, 2, 2), folders["facade"])
        self.assertEqual(coverage.Figures(45, 39, 6, 3), folders["src/"])

    def test_the_channel_is_a_folder_of_its_own(self):
        folders = coverage.folders_of([file("src/facade/channel/A.h", 2, 1, 0, 0)])
        self.assertEqual({"facade/channel", "src/"}, set(folders))

    def test_the_sum_stands_last_and_without_branches_there_is_no_share(self):
        rows = coverage.table(coverage.folders_of([file("src/trace/A.cpp", 8, 2, 0, 0)]))
        self.assertEqual(["trace", "8", "25.0", "%", "0", "-"], rows[1].split())
        self.assertEqual(["src/", "8", "25.0", "%", "0", "-"], rows[2].split())


if __name__ == "__main__":
    unittest.main()
