# Helpers of ./run: stages with timings, interruptible children, one-line failures, cleaning up.
# Sourced by ./run, which sets "root".

. "$root/cmake/processes.sh"

build=$root/build
out=$root/out
stageNames=()
stageStarts=()
child=""
runTemp=""
winePrefix=""
unset WINEPREFIX # never somebody else's

# Every process started from here inherits this mark, however deep; see processes.sh.
QOR_RUN_ID=$$-$(date +%s%N)
export QOR_RUN_ID

fail() {
    echo "run: $*" >&2
    exit 1
}

stage() {
    stageNames+=("$*")
    stageStarts+=("$(date +%s%N)")
    echo "== $*"
}

printTimings() {
    local index end
    stageStarts+=("$(date +%s%N)")
    echo "== timings"
    for index in "${!stageNames[@]}"; do
        end=$(((stageStarts[index + 1] - stageStarts[index]) / 100000000))
        printf '%6d.%d s  %s\n' $((end / 10)) $((end % 10)) "${stageNames[index]}"
    done
}

# Runs a command so that a signal to this script alone ends it too: bash handles signals during
# "wait", but not while it runs a command in the foreground. The subshell gives back the default
# SIGINT that bash takes from background commands.
interruptible() {
    local status=0
    (trap - INT QUIT && exec "$@") <&0 &
    child=$!
    wait "$child" || status=$?
    child=""
    return "$status"
}

# quietly LOGNAME COMMAND...: shows the output only when the command fails.
quietly() {
    local log=$build/logs/$1.log
    shift
    mkdir -p "$build/logs"
    interruptible "$@" >"$log" 2>&1 && return 0
    tail -n 25 "$log" >&2
    return 1
}

# One ./run at a time in one checkout; others wait for their turn.
lockCheckout() {
    mkdir -p "$build" && : 2>/dev/null >>"$build/.lock" || fail "cannot write to $build"
    exec 8>"$build/.lock"
    flock -n 8 && return 0
    echo "== waiting for another ./run in this folder"
    interruptible flock 8
}

useWinePrefix() {
    winePrefix=$build/$1
    export WINEPREFIX=$winePrefix
}

makeTemp() {
    mkdir -p "$build/tmp"
    runTemp=$(mktemp -d "$build/tmp/run-XXXXXX")
}

# stopWine PREFIX: ends its server and removes the socket folder that Debian's Wine keeps in /tmp.
stopWine() {
    local folder=/tmp
    [ -f "$1/wineserver" ] || return 0
    folder=$folder/$(cat "$1/wineserver")
    if env -u TMPDIR WINEPREFIX="$1" wineserver -k >/dev/null 2>&1 </dev/null; then # 1: none runs
        env -u TMPDIR WINEPREFIX="$1" wineserver -w >/dev/null 2>&1 </dev/null || true
    fi
    case $folder in */wine-??????) rm -rf "$folder" ;; esac
}

stopChild() {
    local attempt
    [ -n "$child" ] || return 0
    kill -TERM "$child" 2>/dev/null || return 0
    for attempt in {1..50}; do
        kill -0 "$child" 2>/dev/null || return 0
        sleep 0.1
    done
}

# Always the last act: ends the running child, then the Wine server of our prefix, then whatever
# else of ours is left (a native test that ignores signals, a half-made prefix).
cleanUp() {
    local pid rest
    trap '' INT TERM HUP
    stopChild
    if [ -n "$winePrefix" ]; then
        stopWine "$winePrefix"
        stopWine "$winePrefix.new"
        rm -rf "$winePrefix.new"
    fi
    while read -r pid rest; do
        kill -KILL "$pid" 2>/dev/null || true
    done < <(markedProcesses QOR_RUN_ID "$QOR_RUN_ID")
    [ -z "$runTemp" ] || rm -rf "$runTemp"
    [ -z "$winePrefix" ] || rm -rf "$winePrefix"/drive_c/users/*/Temp/* || true
}
