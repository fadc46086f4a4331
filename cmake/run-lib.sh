# Helpers of ./run: stages with timings, interruptible children, one-line failures, cleaning up.
# Sourced by ./run, which sets "root".

. "$root/cmake/processes.sh"

build=$root/build
out=$root/out
stageNames=()
stageStarts=()
child=""
beside=""
slowTests=""
runTemp=""
winePrefix=""
unset WINEPREFIX # never somebody else's

# Every process started from here inherits this mark, however deep; see processes.sh. What runs
# beside the tests has one of its own: it is none of those that a test left behind.
QOR_RUN_ID=$$-$(date +%s%N)
export QOR_RUN_ID
besideId=$QOR_RUN_ID-beside

# Nearly all tests spend their time waiting, so there are more of them at once than cores. (Many
# more would disturb those that measure time.)
testJobs=$(($(nproc) * 2))
[ "$testJobs" -le 8 ] || testJobs=8
mostAccidents=6 # so many test programs may have failed only because the machine was busy

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

# noteTestTimes PRESET: from what CTest has written, if it came so far.
noteTestTimes() {
    [ -f "$build/logs/tests-$1.xml" ] || return 0
    slowTests+=$(sed -nE 's/^.*<testcase name="([^"]*)".* time="([0-9.]+)".*$/\2 \1/p' \
        "$build/logs/tests-$1.xml" | awk -v preset="$1" '{ printf "%8.1f s  %s: %s\n", $1, preset, $2 }')
    slowTests+=$'\n'
}

printSlowest() {
    [ -n "$slowTests" ] || return 0
    echo "== the ten slowest test programs"
    sort -rn <<<"$slowTests" | awk 'NF && ++shown <= 10' # to its end: "sort" must not meet a closed pipe
}

# beginBeside COMMAND...: runs it on what the machine has left over, its output into a file.
beginBeside() {
    (
        export QOR_RUN_ID=$besideId
        chrt --idle -p 0 "$BASHPID" 2>/dev/null || renice -n 19 -p "$BASHPID" >/dev/null
        "$@"
    ) >"$build/logs/beside.log" 2>&1 </dev/null &
    beside=$!
}

# Its number may be a stranger's once it has ended.
besideRuns() {
    [ -n "$beside" ] && jobs -pr | grep -qx "$beside"
}

# awaitBeside: nothing goes before it any more, if that is permitted; shows its output only when it
# has failed.
awaitBeside() {
    local pid rest status=0
    while read -r pid rest; do
        { chrt --other -p 0 "$pid"; renice -n 0 -p "$pid"; } >/dev/null 2>&1 || true
    done < <({ ! besideRuns || echo "$beside"; } && markedProcesses QOR_RUN_ID "$besideId")
    wait "$beside" || status=$?
    beside=""
    [ "$status" = 0 ] || tail -n 40 "$build/logs/beside.log" >&2
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
    local mark pid rest
    trap '' INT TERM HUP
    stopChild
    ! besideRuns || { kill -KILL "$beside" && wait "$beside"; } 2>/dev/null || true
    if [ -n "$winePrefix" ]; then
        stopWine "$winePrefix"
        stopWine "$winePrefix.new"
        rm -rf "$winePrefix.new"
    fi
    # Builds go on starting processes while they are being ended.
    for mark in "$besideId" "$besideId" "$besideId" "$QOR_RUN_ID"; do
        while read -r pid rest; do
            kill -KILL "$pid" 2>/dev/null || true
        done < <(markedProcesses QOR_RUN_ID "$mark")
    done
    [ -z "$runTemp" ] || rm -rf "$runTemp"
    [ -z "$winePrefix" ] || rm -rf "$winePrefix"/drive_c/users/*/Temp/* || true
}
