"""A server with `Behaviour` over standard input and output; the first argument says how it begins and ends.

usage: stdio_server.py good|fails|mute|stays|noisy serve SETTINGS --stdio ...
"""
import json
import os
import sys
import threading
import time

from behaviour import Behaviour

lock = threading.Lock()


def write(message):
    with lock:
        sys.stdout.write(message + "\n")
        sys.stdout.flush()


def tell(name, told):
    write(json.dumps({"jsonrpc": "2.0", "method": name, "params": told}))


def answer(behaviour, request):
    response = behaviour.answer(request)
    if response is not None:
        write(json.dumps(response))


def main():
    way = sys.argv[1]
    if way == "fails":
        sys.stderr.write("FAILED  start QOR   12 ms  no such file\n        check: the path\n")
        sys.exit(1)
    if "--listen" in sys.argv:
        sys.stderr.write("qorctl serve: listening on http://127.0.0.1:1234/\n")
        sys.stderr.flush()
    if way == "noisy":
        for line in ("no JSON", "[]", "{}", '{"id":"7","result":{}}', '{"id":99,"result":{}}', "", "\udcff",
                     '{"method":"unheard","params":[]}', '{"method":"values","params":{"stream":[]}}',
                     '{"method":"state","params":{"isEcuOnline":1}}', '{"id":1.5}', '{"id":null,"error":{}}'):
            sys.stdout.buffer.write(line.encode("utf-8", "surrogateescape") + b"\n")
    behaviour = Behaviour(tell)
    for line in sys.stdin:
        request = json.loads(line)
        if way != "mute":
            threading.Thread(target=answer, args=(behaviour, request), daemon=True).start()
    if way == "stays":
        time.sleep(60)
    sys.stdout.flush()
    os._exit(0)


if __name__ == "__main__":
    main()
