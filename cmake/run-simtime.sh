# ./run simtime: the library on a simulated machine, for simulated years. Sourced by ./run.

# Without sanitizers: what they would see, the short form in the tests sees.
runSimtime() {
    installPackages test
    lockCheckout
    fetch
    stage "building sim64"
    quietly configure-sim64 cmake -S "$root" --preset sim64 ||
        fail "cannot configure sim64 (whole output: build/logs/configure-sim64.log)"
    NINJA_STATUS='[%f/%t] ' interruptible ninja -C "$build/sim64" -j2 simtime ||
        fail "the build of sim64 failed (see the first error above)"
    stage "simulated time"
    interruptible "$build/sim64/bin/simtime" "$@" || fail "there are findings (above)"
}
