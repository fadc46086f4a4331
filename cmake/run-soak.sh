# ./run soak: hosts and QORs under load and faults for minutes or hours, see tests/soak. Sourced by ./run.

soakUsage() {
    echo "usage: ./run soak [--short | HOURS] [--seed N]" >&2
    exit 2
}

# The programs are copied, so that the checkout is free meanwhile and may be built anew.
runSoak() {
    local arguments=() hours="" folder status=0
    while [ $# -gt 0 ]; do
        case $1 in
            --short) arguments+=(--short) ;;
            --seed)
                [[ "${2:-}" =~ ^[0-9]+$ ]] || soakUsage
                arguments+=(--seed "$2")
                shift
                ;;
            *)
                [[ "$1" =~ ^[0-9]+(\.[0-9]+)?$ ]] || soakUsage
                hours=$1
                ;;
        esac
        shift
    done
    [ -z "$hours" ] || [[ " ${arguments[*]-} " != *" --short "* ]] || soakUsage
    [ -z "$hours" ] || arguments+=(--hours "$hours")
    installPackages build
    lockCheckout
    fetch
    compile mingw32 soak-host qor-simulator
    mkdir -p "$build/tmp"
    runTemp=$(mktemp -d "$build/tmp/soak-XXXXXX")
    cp -- "$build"/mingw32/bin/{soak-host.exe,qor-simulator.exe,*.dll} "$runTemp"
    # In place of the lock of the checkout one of its own: its Wine server is not to be shared.
    exec 7>"$build/.lock-soak"
    flock -n 7 || fail "another soak runs in this folder"
    exec 8>&-
    useWinePrefix wine-prefix-soak
    warmWine
    stage "soak"
    interruptible python3 -B "$root/tests/soak/soak.py" "$runTemp" "${arguments[@]}" || status=$?
    [ "$status" = 0 ] || fail "the soak failed (its table is above)"
}
