# ./run bench: runs the benchmarks and a peer, makes their page, compares runs. Sourced by ./run.

benchUsage() {
    cat >&2 <<'TEXT'
usage: ./run bench [--against FILE] [--json FILE] [--only SECTION|peer] [--rounds N] [--per-round N]
                   [--requests N]
       ./run bench --profile [--rounds N] [--per-round N]    (where the time of a request goes)
       ./run bench --compare OLD NEW    (no run)
       ./run bench --history FILE...    (no run)
TEXT
    exit 2
}

# Debian's, which has SciPy; not a Python of somebody's own. What it ends with, ./run ends with: it has said why.
benchTool() {
    local tool=$1
    shift
    interruptible /usr/bin/python3 -B "$root/bench/$tool.py" "$@" || exit $?
}

# benchPage PAGE FILE...: the last file's figures, and all files' as a history.
benchPage() {
    local uplot page=$1
    shift
    mkdir -p "$build/logs"
    interruptible "$root/cmake/fetch-npm.sh" uplot >"$build/logs/uplot-folder" || exit 1
    uplot=$(cat "$build/logs/uplot-folder")
    benchTool page "$page" "$uplot" "$@"
    echo "page written to $page"
}

measurePeer() {
    stage "a peer"
    quietly configure-peer cmake -S "$root/bench/peer" -B "$build/peer" -G Ninja ||
        fail "cannot configure the peer (whole output: build/logs/configure-peer.log)"
    quietly build-peer ninja -C "$build/peer" -j2 ||
        fail "the build of the peer failed (whole output: build/logs/build-peer.log)"
    interruptible "$build/peer/qor-bench-peer" --json "$runTemp/peer.json" "$@" || fail "the peer failed"
}

# runOurs LAST-LINE ARGUMENT...
runOurs() {
    local last=$1
    shift
    fetch
    compile mingw32 bench/all
    useWinePrefix wine-prefix-bench
    warmWine
    stage "benchmarks"
    interruptible "$root/cmake/wine-test.sh" --closing "^($last|Usage:) " \
        "$build/mingw32/bin/qor-bench.exe" "$@" || fail "the benchmarks failed"
}

measureOurs() {
    runOurs 'figures written to' --json "$(windowsPath "$runTemp/ours.json")" "$@"
}

# The options of a run. What both programs take goes to both.
parseBench() {
    while [ $# -gt 0 ]; do
        case $1 in
            --against | --json | --only | --rounds | --per-round | --requests) [ $# -ge 2 ] || benchUsage ;;&
            --against) against=$2 ;;
            --json) json=$2 ;;
            --only) only=$2 ;;
            --rounds | --per-round) both+=("$1" "$2") ;;
            --requests) ours+=("$1" "$2") ;;
            -h | --help) benchUsage ;;
            *)
                echo "run: the benchmarks have no option '$1'" >&2
                benchUsage
                ;;
        esac
        shift 2
    done
}

# The file to compare with is looked at before anything is measured, and kept: it may be the one that is
# written anew.
keepOld() {
    [ -n "$against" ] || return 0
    benchTool compare --check "$against"
    cp -- "$against" "$runTemp/old.json" || fail "cannot copy $against"
}

measureAll() {
    local peer=()
    if [ -z "$only" ] || [ "$only" = requests ] || [ "$only" = peer ]; then
        measurePeer "${both[@]}"
        peer=(--peer "$runTemp/peer.json")
    fi
    if [ "$only" = peer ]; then
        benchTool join "$json" "${peer[@]}"
        return
    fi
    measureOurs ${only:+--only "$only"} "${both[@]}" "${ours[@]}"
    benchTool join "$json" "$runTemp/ours.json" "${peer[@]}"
}

runBench() {
    local against="" json="$build/bench.json" only="" both=() ours=() old=()
    case ${1:-} in
        --compare)
            [ $# = 3 ] || benchUsage
            installPackages bench
            benchTool compare "$2" "$3"
            return
            ;;
        --history)
            [ $# -ge 2 ] || benchUsage
            installPackages bench
            benchPage "$build/bench.html" "${@:2}"
            return
            ;;
        --profile)
            parseBench "${@:2}"
            [ -z "$against$only${ours[*]}" ] || benchUsage
            installPackages bench
            makeTemp
            lockCheckout
            runOurs 'profile made of' --profile "${both[@]}"
            return
            ;;
    esac
    parseBench "$@"
    installPackages bench
    makeTemp
    keepOld
    lockCheckout
    measureAll
    [ -z "$against" ] || old=("$runTemp/old.json")
    echo "figures written to $json"
    benchPage "${json%.json}.html" "${old[@]}" "$json"
    [ -z "$against" ] || benchTool compare "${old[@]}" "$json"
}
