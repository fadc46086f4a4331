# "./run mutate": mutants are made, built and tried in a copy of the tree. Sourced by ./run.

runMutate() {
    installPackages test
    lockCheckout
    fetch
    useWinePrefix wine-prefix-test
    makeTemp
    warmWine
    stage "mutants"
    TMPDIR=$runTemp interruptible python3 -B "$root/tests/mutants/mutate.py" "$root" \
        "$build/mutate" "$@" || fail "a mutant was not seen, or could not be tried"
}
