"""Builds the wheel: the same sources give the same bytes, and nothing but Python is needed.

pip calls `build_wheel`; by hand: wheel_backend.py FOLDER, which prints the wheel's path. SOURCE_DATE_EPOCH is the
time of its entries.
"""
import base64
import hashlib
import os
import re
import sys
import time
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
NAME, TAG = "qorcontrol", "py3-none-any"
EARLIEST = 315532800  # the first time that a zip file can tell
METADATA = """\
Metadata-Version: 2.1
Name: {name}
Version: {version}
Summary: Remote control of QOR for test stations, through qorctl serve
Requires-Python: >=3.8
Classifier: Operating System :: Microsoft :: Windows
Classifier: Operating System :: POSIX
Classifier: Programming Language :: Python :: 3 :: Only
Classifier: Typing :: Typed
Description-Content-Type: text/plain

{description}"""
WHEEL = "Wheel-Version: 1.0\nGenerator: {name} {version}\nRoot-Is-Purelib: true\nTag: {tag}\n"


def version():
    """That of the library, which is written in one place; a package unpacked elsewhere has none."""
    header = HERE.parents[1] / "src/qorcontrol/Version.h"
    try:
        return re.search(r'QOR_VERSION_TEXT "(.*)"', header.read_text(encoding="utf-8"))[1]
    except OSError:
        return "0"


def description():
    """The text that the package itself begins with."""
    text = (HERE / NAME / "__init__.py").read_text(encoding="utf-8")
    return text.split('"""')[1]


def entries():
    """(name, content) of all files, sorted; RECORD comes last."""
    info = f"{NAME}-{version()}.dist-info"
    values = {"name": NAME, "version": version(), "tag": TAG, "description": description()}
    files = {f"{NAME}/{path.name}": path.read_bytes() for path in (HERE / NAME).iterdir()
             if path.suffix == ".py" or path.name == "py.typed"}
    files[f"{info}/METADATA"] = METADATA.format(**values).encode()
    files[f"{info}/WHEEL"] = WHEEL.format(**values).encode()
    lines = "".join(f"{name},sha256={digest(content)},{len(content)}\n" for name, content in sorted(files.items()))
    return [*sorted(files.items()), (f"{info}/RECORD", f"{lines}{info}/RECORD,,\n".encode())]


def digest(content):
    return base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    """As pip calls it; returns the wheel's name."""
    name = f"{NAME}-{version()}-{TAG}.whl"
    date = time.gmtime(max(EARLIEST, int(os.environ.get("SOURCE_DATE_EPOCH", EARLIEST))))[:6]
    with zipfile.ZipFile(Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as wheel:
        for path, content in entries():
            entry = zipfile.ZipInfo(path, date)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o100644 << 16
            entry.create_system = 3  # whoever builds it
            wheel.writestr(entry, content)
    return name


if __name__ == "__main__":
    print(Path(sys.argv[1]) / build_wheel(sys.argv[1]))
