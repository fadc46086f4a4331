#!/bin/bash
# Runs one Windows program and demands that it did its work to the end. An exit code of 0 is not
# enough, for that is also the code of a test program that leaves in the middle.
# usage: cmake/wine-test.sh [--closing REGEX] PROGRAM [ARGUMENT...]
#
# It fails when the program does not close with a line that matches REGEX - by default with the
# summary of a GoogleTest program, with the right numbers -, when it or any process that it started
# has crashed, and when it leaves a process behind.
#
# What is left behind is also ended here: it would hold the test's output pipe, and CTest waits for
# that pipe without telling why.
set -u
folder=$(dirname -- "$0")
. "$folder/processes.sh"
closing=""
if [ "${1:-}" = --closing ]; then
    closing=$2
    shift 2
fi

complain() { echo "wine-test: $*" >&2; }

# Passes a stream on, line by line, and keeps it in a file. It ends at a mark and not at the end of
# the pipe, which may never come: the first window of a Wine server starts the desktop's process,
# which keeps the error stream of whoever made that window.
relay() {
    local line more=1
    while [ "$more" = 1 ] && { IFS= read -r line || [ -n "$line" ]; }; do
        case $line in
            *"$mark")
                line=${line%"$mark"}
                more=0
                [ -n "$line" ] || return 0
                ;;
        esac
        printf '%s\n' "$line"
        printf '%s\n' "$line" >&5
    done 5>"$1"
}

# Wine writes this to the error stream of the shell that began it all, which all processes share,
# however deep and whatever their own streams are.
nothingHasCrashed() {
    ! grep -q 'wine: Unhandled ' "$temp/errors" && ! grep -qs '^Unhandled exception' "$temp/output"
}

# Every run that was begun (there are several with --gtest_repeat) has been through all of its
# tests, and they passed or skipped themselves.
closesLikeGoogleTest() {
    tr -d '\r' <"$temp/output" | awk '
        function close_run() { if (begun && (ran != wanted || passed + skipped != wanted)) bad = 1 }
        /^\[==========\] Running [0-9]+ tests? from / {
            close_run(); begun = 1; wanted = $3; ran = passed = skipped = 0
        }
        /^\[==========\] [0-9]+ tests? from .* ran\./ { ran = $2 }
        /^\[  PASSED  \] [0-9]+ tests?\.$/ { passed = $4 }
        /^\[  SKIPPED \] [0-9]+ tests?, listed below:$/ { skipped = $4 }
        END { close_run(); exit bad || wanted + 0 == 0 }'
}

closesWell() {
    if [ -n "$closing" ]; then
        cat "$temp/output" "$temp/errors" | tr -d '\r' | grep -Eq -- "$closing"
    else
        closesLikeGoogleTest
    fi
}

# Runs the program beside this script, which so can hand signals on: bash heeds none while it runs a
# command in the foreground. Ctrl-C reaches the program by itself.
runProgram() {
    (trap - INT QUIT && QOR_TEST_ID=$mark exec "$folder/wine-run.sh" "$@") <&0 >&3 2>&4 3>&- 4>&- &
    local program=$!
    trap 'kill -TERM "$program" 2>/dev/null' TERM HUP
    trap : INT
    while wait "$program"; status=$?; kill -0 "$program" 2>/dev/null; do :; done
}

# Services of the Wine server must not carry this test's mark: warm it first.
"$folder/wine-run.sh" || exit 1
mark=$$-$(date +%s%N)
temp=$(mktemp -d) || exit 1
trap 'rm -rf "$temp"' EXIT
mkfifo "$temp/1" "$temp/2" || exit 1
relay "$temp/output" <"$temp/1" &
relay "$temp/errors" <"$temp/2" >&2 &
exec 3>"$temp/1" 4>"$temp/2"
status=0
runProgram "$@"
# What it started may still be on its way out, and crash there.
left=0
nothingLeftRunning QOR_TEST_ID "$mark" || left=1
echo "$mark" >&3
echo "$mark" >&4
wait
[ "$status" = 0 ] || complain "it ended with exit code $status"
nothingHasCrashed || { complain "it crashed, or a process that it started"; status=1; }
closesWell || { complain "it did not do its work to the end: no closing words, or wrong ones"; status=1; }

[ "$left" = 1 ] || exit "$status"
while read -r pid rest; do
    kill -KILL "$pid" 2>/dev/null
done < <(foreignProcesses QOR_TEST_ID "$mark")
complain "this test left processes behind (listed above)"
[ "$status" != 0 ] || status=1
exit "$status"
