"""An npm registry on this machine with the packages that the tests have fetched: it needs no network, and
npm gets the very files that were checked."""
import json
import subprocess
import tarfile
import threading
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from io import BytesIO
from pathlib import Path

import header

FETCH = header.ROOT / "cmake/fetch-npm.sh"
PACKAGES = ["koffi", "@koromix/koffi-win32-ia32"]


def folder_of(package: str) -> Path:
    return Path(subprocess.run([str(FETCH), package], stdout=subprocess.PIPE, check=True, text=True).stdout.strip())


def packed(folder: Path) -> bytes:
    content = BytesIO()
    with tarfile.open(fileobj=content, mode="w:gz", compresslevel=1) as archive:
        archive.add(folder, "package")
    return content.getvalue()


class Registry:
    def __init__(self):
        self.pages = {}
        outer = self

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):  # pylint: disable=invalid-name
                page = outer.pages.get(urllib.parse.unquote(self.path))
                self.send_response(200 if page is not None else 404)
                self.send_header("Content-Length", str(len(page or b"")))
                self.end_headers()
                self.wfile.write(page or b"")

            def log_message(self, format, *args):  # pylint: disable=redefined-builtin
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self._server.server_address[1]}/"
        for package in PACKAGES:
            self._add(package)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def _add(self, name: str):
        folder = folder_of(name)
        about = json.loads((folder / "package.json").read_text(encoding="utf-8"))
        about["dist"] = {"tarball": f"{self.address}{name}.tgz"}
        self.pages[f"/{name}.tgz"] = packed(folder)
        self.pages[f"/{name}"] = json.dumps({
            "name": name, "dist-tags": {"latest": about["version"]},
            "versions": {about["version"]: about}}).encode()

    def close(self):
        self._server.shutdown()
        self._server.server_close()
