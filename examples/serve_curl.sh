#!/bin/sh
# A client of "qorctl serve" with curl: connects the ECU, reads, asks for two things at once, is refused, streams.
#
# usage: serve_curl.sh URL [TOKEN]    the URL is what the server prints, as http://127.0.0.1:8080/
#
# On Windows run it in the Bash of Git for Windows. The exit code is 0 if all went as it should.
set -eu
url=${1%/}
token=${2:-}
folder=$(mktemp -d)
listener=
trap 'kill $listener 2>/dev/null || true; rm -rf "$folder"' EXIT

ask() { exec curl -sS ${token:+-H "Authorization: Bearer $token"} "$@"; }

# rpc BODY: one JSON-RPC request, or several in an array, of this client.
rpc() {
    (ask "$url/rpc" -H 'Content-Type: application/json' -H "X-Qor-Client: $client" -d "$1")
}

# call METHOD PARAMS
call() { rpc "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"$1\",\"params\":$2}"; }

# text NAME: the text of that name in the JSON of standard input. number NAME: the number, values: the first one.
text() { sed -n "s/.*\"$1\": *\"\([^\"]*\)\".*/\1/p"; }
number() { sed -n "s/.*\"$1\": *\([-0-9.e+]*\).*/\1/p"; }
values() { sed -n 's/.*"values": *\[\([^],]*\).*/\1/p'; }

# Whoever listens to the events is a client. It has left when that connection ends, and its streams end then,
# too: so the listener stays until the end of this script.
ask -fN "$url/events" >"$folder/events" &
listener=$!
client=
for _ in $(seq 100); do
    client=$(text client <"$folder/events")
    [ -z "$client" ] && kill -0 $listener 2>/dev/null || break
    sleep 0.1
done
[ -n "$client" ] || { echo "no server answers at $url" >&2; exit 1; }

echo "server: $(call getState '{}' | text version)"
call connect '{"settings":{"refreshPeriodMs":100}}' | grep -q '"result"' && echo "connect: ok"
echo "read: EngineSpeed = $(call getParamData '{"name":"EngineSpeed"}' | values)"

rpc '[{"jsonrpc":"2.0","id":1,"method":"getParamData","params":{"name":"CylinderCount"}},
      {"jsonrpc":"2.0","id":2,"method":"getParamDescription","params":{"name":"EngineSpeed"}}]' >"$folder/both"
echo "batch: $(values <"$folder/both") cylinders, speed in $(text unit <"$folder/both")"

refusal=$(call getParamData '{"name":"NoSuchName"}')
echo "refused: $(echo "$refusal" | text name): $(echo "$refusal" | text sentence)"

stream=$(call startParamRead '{"names":["EngineSpeed","OilPressure"]}' | number stream)
sleep 1
call stopParamRead "{\"stream\":$stream}" | grep -q '"result"'
# Each sample is the number of its name, the value, the time, and how many were missed.
count=$(grep '^data: .*"samples"' "$folder/events" | grep -o '\[[01],' | wc -l)
echo "stream: $count values"
[ "$count" -gt 2 ]
