#!/bin/sh
# Runs one Windows program in this project's Wine prefix; CTest uses it as emulator.
# usage: cmake/wine-run.sh [PROGRAM ARGUMENT...]   (without arguments: only make and warm the prefix)
#
# The prefix is $WINEPREFIX, by default build/wine-prefix beside the sources. It is made on first use.
set -u
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd) || exit 1
. "$root/cmake/wine-crashes.sh"
: "${WINEPREFIX:=$root/build/wine-prefix}"
# One locale for everybody: it decides the ANSI code page and the language of system messages.
export WINEPREFIX WINEARCH=win32 WINEDEBUG="${WINEDEBUG:--all}" LC_ALL=C.UTF-8
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
unset DISPLAY WAYLAND_DISPLAY
# The server's socket lies there: with a folder of each caller's own, two servers would serve one
# prefix.
unset TMPDIR

die() { echo "wine-run: $*" >&2; exit 1; }

# The prefix is made beside its final place and moved there when complete.
makePrefix() {
    final=$WINEPREFIX
    WINEPREFIX=$final.new
    if [ -d "$WINEPREFIX" ]; then
        wineserver -k
        rm -rf "$WINEPREFIX"
    fi
    # No graphics driver: windows exist, but nothing is drawn and no display is needed.
    mkdir "$WINEPREFIX" &&
        wineboot -i &&
        wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f &&
        turnCrashDebuggerOff ||
        return 1
    # The driver is chosen when the desktop is made, so start afresh. -k fails if nothing runs.
    wineserver -k
    wineserver -w
    : > "$WINEPREFIX/.ready" && mv -T "$WINEPREFIX" "$final" && WINEPREFIX=$final
}

mkdir -p "$(dirname -- "$WINEPREFIX")" && : 2>/dev/null >> "$WINEPREFIX.lock" ||
    die "cannot write beside $WINEPREFIX"
if [ ! -e "$WINEPREFIX/.ready" ] && [ -n "$(ls -A -- "$WINEPREFIX" 2>/dev/null)" ]; then
    die "$WINEPREFIX is not a Wine prefix of this project - remove it or set WINEPREFIX"
fi
(
    flock 9
    [ -e "$WINEPREFIX/.ready" ] || makePrefix </dev/null >/dev/null 2>&1 9>&- || exit 1
    # Start the server and its services here, with no stream of ours: services keep the streams of
    # the program that started them, and whoever reads such a pipe would wait for them. The server
    # ends itself when it has been idle for a minute. (0: it was started, else one was running.)
    if wineserver -p60 >/dev/null 2>&1 9>&-; then
        wine cmd /c exit </dev/null >/dev/null 2>&1 9>&-
    fi
    # For the sake of prefixes that were made without it.
    crashDebuggerIsOff || turnCrashDebuggerOff </dev/null >/dev/null 2>&1 9>&- || exit 1
    # Must stay the last command: else the shell execs wine above and gives the lock up too early.
    flock -u 9
) 9> "$WINEPREFIX.lock" || die "cannot make the Wine prefix $WINEPREFIX (is wine32 installed?)"
[ $# -gt 0 ] || exit 0
exec wine "$@"
