# ./run torture: every call of the platform that can fail, in every operation. (./run test plays one of
# each sort.) QOR_TORTURE_ONLY chooses by a piece of the names of operation and call site.
runTorture() {
    [ $# = 0 ] || fail "torture takes no arguments"
    installPackages test
    lockCheckout
    fetch
    export QOR_TORTURE=1
    local preset
    for preset in native64 native32; do
        compile "$preset" torture_native_test
        stage "torture ($preset)"
        interruptible "$build/$preset/bin/torture_native_test" || fail "torture ($preset) found something"
    done
    local program
    compile mingw32 torture_windows_test torture_c_interface_test
    useWinePrefix wine-prefix-test
    warmWine
    for program in torture_windows_test torture_c_interface_test; do
        stage "torture (mingw32, $program)"
        interruptible "$root/cmake/wine-test.sh" "$build/mingw32/bin/$program.exe" ||
            fail "torture (mingw32) found something"
    done
}
