#!/bin/bash
# Runs one Windows test program; it fails, too, when it leaves a process behind.
# usage: cmake/wine-test.sh PROGRAM [ARGUMENT...]
#
# What is left behind is also ended here: it would hold the test's output pipe, and CTest waits for
# that pipe without telling why.
set -u
folder=$(dirname -- "$0")
. "$folder/processes.sh"

# Services of the Wine server must not carry this test's mark: warm it first.
"$folder/wine-run.sh" || exit 1
mark=$$-$(date +%s%N)
status=0
# The error output goes through a file: the first window of a Wine server starts the desktop's
# process, which keeps the error stream of whoever made that window. CTest would wait for the end
# of a pipe; nobody waits for a file.
errors=$(mktemp) || exit 1
trap 'rm -f "$errors"' EXIT
QOR_TEST_ID=$mark "$folder/wine-run.sh" "$@" 2>"$errors" || status=$?
cat "$errors" >&2

nothingLeftRunning QOR_TEST_ID "$mark" && exit "$status"
while read -r pid rest; do
    kill -KILL "$pid" 2>/dev/null
done < <(foreignProcesses QOR_TEST_ID "$mark")
echo "wine-test: this test left processes behind (listed above)" >&2
[ "$status" != 0 ] || status=1
exit "$status"
