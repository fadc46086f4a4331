# ./run fuzz: the coverage-guided fuzzers of tests/fuzz. Sourced by ./run.

# A target is what has a corpus.
fuzzTargets() {
    local folder
    for folder in "$root"/tests/fuzz/corpus/*/; do [ ! -d "$folder" ] || basename "$folder"; done
}

buildFuzzers() {
    local preset
    installPackages test
    lockCheckout
    fetch
    for preset in "$@"; do compile "$preset" "${fuzzers[@]/#/fuzz_}"; done
}

driveFuzzers() {
    local status=0
    interruptible python3 -B "$root/cmake/fuzz.py" "$root" "$build" "$@" || status=$?
    [ "$status" = 0 ] || exit "$status" # it has said why
}

# runFuzz [SECONDS] [TARGET], runFuzz --coverage, runFuzz --merge
runFuzz() {
    local way=fuzz seconds=600 fuzzers=()
    case ${1:-} in
        --coverage | --merge) way=${1#--} && shift ;;
        *[!0-9]* | "") ;;
        *) seconds=$1 && shift ;;
    esac
    [ $# -le 1 ] || fail "usage: ./run fuzz [SECONDS] [TARGET], or --coverage or --merge"
    mapfile -t fuzzers < <(fuzzTargets)
    # Those behind which framing and parsing are.
    [ "$way" != coverage ] || fuzzers=(cinterface record settings stream trace window)
    if [ $# = 1 ]; then
        [[ " ${fuzzers[*]} " == *" $1 "* ]] ||
            fail "there is no target '$1' (known: ${fuzzers[*]})"
        fuzzers=("$1")
    fi
    case $way in
        coverage) buildFuzzers fuzzcoverage ;;
        *) buildFuzzers fuzz64 fuzz32 ;;
    esac
    stage "$way"
    driveFuzzers "$way" "$seconds" "${fuzzers[@]}"
}
