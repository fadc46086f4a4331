#!/bin/bash
# Installs the Debian packages that building (build), packing (package), testing (test), measuring
# (bench) or counting lines (coverage) needs.
# usage: cmake/install-packages.sh GROUP...
# Safe to repeat: when nothing is missing it needs neither root nor network.
set -u

die() { echo "install-packages: $*" >&2; exit 1; }
note() { echo "install-packages: $*" >&2; }

buildPackages=(g++-mingw-w64-i686-posix wine wine32:i386 wine64 cmake ninja-build
    nlohmann-json3-dev libcli11-dev libfmt-dev dpkg-dev xz-utils python3)
# An npm that came some other way is as good, and Debian's would not install beside its node.
command -v npm >/dev/null || buildPackages+=(npm)
packagePackages=("${buildPackages[@]}" llvm cmark-gfm)
testPackages=("${packagePackages[@]}" googletest g++ g++-multilib clang libclang-rt-14-dev
    clang-format clang-tidy git chromium lld mono-mcs mono-runtime
    libmono-system-runtime-serialization4.0-cil libmono-system-xml-linq4.0-cil mypy curl python3-venv
    prometheus mosquitto mosquitto-clients python3-scipy)
benchPackages=("${buildPackages[@]}" g++ libzmq3-dev python3-scipy)
coveragePackages=("${testPackages[@]}" gcovr)

packages=()
for group in "$@"; do
    case $group in
        build) packages+=("${buildPackages[@]}") ;;
        package) packages+=("${packagePackages[@]}") ;;
        test) packages+=("${testPackages[@]}") ;;
        bench) packages+=("${benchPackages[@]}") ;;
        coverage) packages+=("${coveragePackages[@]}") ;;
        *) die "unknown group '$group' (known: build, package, test, bench, coverage)" ;;
    esac
done
[ ${#packages[@]} -gt 0 ] || die "usage: install-packages.sh build|package|test|bench|coverage ..."

missingPackages() {
    local installed name
    installed=" $(dpkg-query -W -f '${db:Status-Status}=${Package} ${db:Status-Status}=${Package}:${Architecture} ' \
        "${packages[@]}" 2>/dev/null) "
    for name in "${packages[@]}"; do
        case $installed in *" installed=$name "*) ;; *) echo "$name" ;; esac
    done | sort -u
}

checkSystem() {
    local ID="" VERSION_CODENAME="" PRETTY_NAME=""
    [ -r /etc/os-release ] || die "no /etc/os-release: this needs Debian 12 (bookworm)"
    . /etc/os-release
    [ "$ID" = debian ] && [ "$VERSION_CODENAME" = bookworm ] ||
        die "this is ${PRETTY_NAME:-an unknown system}; only Debian 12 (bookworm) is supported"
    [ "$(dpkg --print-architecture)" = amd64 ] ||
        die "architecture $(dpkg --print-architecture); only amd64 is supported"
}

checkSystem
missing=$(missingPackages)
[ -n "$missing" ] || exit 0
missing=${missing//$'\n'/ }
[ "$(id -u)" = 0 ] || die "missing packages: $missing - run once: sudo $(printf %q "$(realpath "$0")") $*"

export DEBIAN_FRONTEND=noninteractive
lock=(-o DPkg::Lock::Timeout=600)
log=$(mktemp) && preferences=$(mktemp) || die "cannot make a temporary file"
trap 'rm -f "$log" "$preferences"' EXIT
printf 'Package: *\nPin: release n=bookworm\nPin-Priority: 1001\n' > "$preferences"

note "missing: $missing"
dpkg --configure -a </dev/null >"$log" 2>&1 || note "dpkg --configure -a reported errors; going on"
dpkg --print-foreign-architectures | grep -qx i386 || dpkg --add-architecture i386 ||
    die "cannot add architecture i386"
apt-get -q "${lock[@]}" update >"$log" 2>&1 ||
    note "apt-get update reported errors (a stale mirror index?); going on with what was fetched"

# attempt WHAT [apt option...]: simulates first and installs only what the resolver is content with.
attempt() {
    local what=$1
    shift
    apt-get -s -q install --no-install-recommends "$@" "${packages[@]}" >"$log" 2>&1 || return 1
    note "installing, $what"
    grep -A3 'will be DOWNGRADED' "$log" >&2
    apt-get -q -y "${lock[@]}" install --no-install-recommends "$@" "${packages[@]}" \
        </dev/null >"$log" 2>&1
}

# When the i386 security index is unusable, an i386 library cannot match a security-updated amd64
# one; the last form takes the few libraries concerned back to the base release on both.
attempt "all releases" ||
    attempt "base release preferred" -t bookworm ||
    attempt "base release forced" -o Dir::Etc::Preferences="$preferences" \
        -o Dir::Etc::PreferencesParts=/dev/null --allow-downgrades ||
    true

missing=$(missingPackages)
if [ -n "$missing" ]; then
    tail -n 15 "$log" >&2
    die "apt cannot install: ${missing//$'\n'/ } - check the network and the apt sources (output above)"
fi
note "done"
