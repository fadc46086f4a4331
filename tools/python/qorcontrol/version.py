"""The version is that of the wheel: it is written in one place, which is not here."""
from importlib import metadata

try:
    __version__ = metadata.version("qorcontrol")
except metadata.PackageNotFoundError:
    __version__ = "0+unpacked"  # used as it lies in a checkout
