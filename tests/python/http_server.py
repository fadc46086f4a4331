"""A server with `Behaviour` over HTTP, in the test's own process, so that it can be broken in many ways."""
import json
import socket
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from behaviour import Behaviour

TOKEN = "a token"


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def setup(self):
        super().setup()
        self.server.connections.append(self.connection)

    def log_message(self, *_):
        pass

    def refuse(self, status, sentence):
        body = json.dumps({"error": sentence}).encode()
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def is_welcome(self):
        if self.server.token and self.headers["Authorization"] != f"Bearer {self.server.token}":
            self.refuse(401, "another token is wanted")
            return False
        return True

    def do_GET(self):
        if not self.is_welcome():
            return
        if self.server.full:
            self.refuse(503, "64 clients are here")
            return
        self.send_response(200)
        self.send_header("Content-Type", "text/event-stream")
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        try:
            self.server.behaviour.tell = self.tell  # whom the client calls as soon as it is greeted
            self.chunk(b": hello\r\n\r\nevent: hello\ndata: " + json.dumps(self.server.hello).encode() + b"\n\n")
            while not self.server.is_stopping:
                time.sleep(0.05)
                if not self.server.is_silent:
                    self.chunk(b":\n")
            self.chunk(b"")
        except OSError:
            pass
        self.server.gone.set()
        self.close_connection = True

    def tell(self, name, told):
        text = json.dumps(told, indent=1)  # over several lines, as is allowed
        lines = "".join(f"data: {line}\n" for line in text.split("\n"))
        self.chunk(f"event: {name}\n{lines}\n".encode())

    def chunk(self, data):
        with self.server.lock:
            self.wfile.write(b"%x\r\n%s\r\n" % (len(data), data))

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        if not self.is_welcome():
            return
        if self.headers["X-Qor-Client"] != "c" * 32 or self.headers["Content-Type"] != "application/json":
            self.refuse(400, "whose request is that")
            return
        self.server.posts += 1
        response = self.server.behaviour.answer(json.loads(body))
        body = json.dumps(response).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


class Server(ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 100

    def __init__(self, token=None):
        super().__init__(("127.0.0.1", 0), Handler)
        self.behaviour = Behaviour(lambda name, told: None)
        self.token, self.full, self.hello = token, False, {"client": "c" * 32, "version": "9", "readOnly": False}
        self.lock, self.gone = threading.Lock(), threading.Event()
        self.is_stopping = self.is_silent = False
        self.connections, self.posts = [], 0
        self.url = f"http://127.0.0.1:{self.server_address[1]}/"
        threading.Thread(target=self.serve_forever, args=(0.01,), daemon=True).start()

    def handle_error(self, *_):
        pass

    def kill(self):
        """As when the process is killed: all connections end."""
        self.shutdown()
        self.server_close()
        for connection in self.connections:
            try:
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def close(self):
        self.is_stopping = True
        self.behaviour.released.set()
        self.kill()
