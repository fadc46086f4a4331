"""The package as it lies in the checkout, for the tests."""
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDER = ROOT / "tools/python"
sys.dont_write_bytecode = True
sys.path.insert(0, str(FOLDER))
sys.path.insert(0, str(ROOT / "tests/system/terminal"))
