# "./run coverage": lines and branches of src/ that the tests run through. Sourced by ./run.

# The tests of the library; those of its programs come by the same ways.
coverageTests=(-L '^(unit|system|fuzz)$' -E 'simulator|qorctl|serve|doctor|watch|terminal|guide|stations')

runCoverage() {
    local names targets filter=("${coverageTests[@]}")
    [ -z "${1:-}" ] || filter=(-R "$1")
    installPackages coverage
    lockCheckout
    fetch
    configure coverage32
    names=$(testNames coverage32 "${filter[@]}")
    [ -n "$names" ] || fail "no test matches"
    mapfile -t targets < <(sed -n 's/./for-&/p' <<<"$names")
    compile coverage32 "${targets[@]}"
    useWinePrefix wine-prefix-test
    makeTemp
    warmWine
    stage "testing coverage32"
    find "$build/coverage32" -name '*.gcda' -delete
    # The counters' files are named as the compiler called them; whatever drive a program is on.
    GCOV_PREFIX=Z: TMPDIR=$runTemp interruptible ctest --test-dir "$build/coverage32" -j"$testJobs" \
        --output-junit "$build/logs/tests-coverage32.xml" "${filter[@]}" ||
        echo "run: some tests failed; what they ran through counts all the same" >&2
    stage "coverage of src/"
    # Not a Python of somebody's own: gcovr's libraries are Debian's.
    interruptible /usr/bin/python3 -B "$root/cmake/coverage.py" "$root" "$build/coverage32" ||
        fail "there are no figures"
}
