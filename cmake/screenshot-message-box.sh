#!/bin/bash
# Shows on a virtual screen the message box that QOR asks for, and takes its picture.
# usage: cmake/screenshot-message-box.sh [BUILD-FOLDER [PICTURE]]
#        (by default build/mingw32, which must be built, and docs/images/message-box.png)
#
# qorctl tours the simulated QOR over window messages; after the connect QOR asks its question, the
# picture is taken, the box is answered with "No", and the tour must end well with that choice at QOR.
set -u
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd) || exit 1
. "$root/cmake/run-lib.sh" # stopWine
. "$root/cmake/wine-crashes.sh"
build=$(realpath "${1:-$root/build/mingw32}") || exit 1
picture=$(realpath -m "${2:-$root/docs/images/message-box.png}")
caption="QOR - calibration"
temp=""
screen=""
box=""

die() { echo "screenshot: $*" >&2; exit 1; }

installMissing() {
    local missing=() name
    for name in xvfb x11-apps xdotool netpbm; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] ||
            missing+=("$name")
    done
    [ ${#missing[@]} = 0 ] && return 0
    [ "$(id -u)" = 0 ] || die "missing packages: ${missing[*]} - run me once as root"
    DEBIAN_FRONTEND=noninteractive apt-get -q -y install --no-install-recommends -t bookworm \
        "${missing[@]}" </dev/null >"$temp/apt.log" 2>&1 ||
        { tail -n 15 "$temp/apt.log" >&2; die "apt cannot install: ${missing[*]}"; }
}

cleanUp() {
    stopWine "$temp/prefix"
    [ -z "$screen" ] || kill "$screen" 2>/dev/null
    [ -z "$temp" ] || rm -rf "$temp"
}

# A prefix of its own, for that of the tests draws nothing. There is no window manager: the title bar
# is Wine's.
makePrefix() {
    export WINEPREFIX=$temp/prefix WINEARCH=win32 WINEDEBUG=-all LC_ALL=C.UTF-8
    export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
    wineboot -i </dev/null >/dev/null 2>&1 &&
        wine reg add 'HKCU\Software\Wine\X11 Driver' /v Decorated /d N /f </dev/null >/dev/null 2>&1 &&
        turnCrashDebuggerOff </dev/null >/dev/null 2>&1 ||
        die "cannot make a Wine prefix"
}

startScreen() {
    local number
    : >"$temp/display"
    Xvfb -displayfd 3 -screen 0 640x360x24 -nolisten tcp 3>"$temp/display" >/dev/null 2>&1 &
    screen=$!
    for _ in {1..100}; do
        read -r number <"$temp/display" && break
        sleep 0.1
    done
    [ -n "${number:-}" ] || die "no virtual screen"
    export DISPLAY=:$number
}

writeSettings() {
    cat >"$temp/settings.ini" <<END
[CommonSettings]
QORexecutable=Z:${build//\//\\}\\bin\\qor-simulator.exe
UseTcp=false
ServerPipeName=ScreenshotServer
ClientPipeName=ScreenshotClient
InitMFC=1
[Simulator]
Script=script.json
RecordLog=records.log
Log=simulator.log
END
    cat >"$temp/script.json" <<END
{"at": [{"since": "connect", "afterMs": 100, "messageBox": {"caption": "$caption", "type": 36,
  "text": "The calibration in the ECU differs from the one on disk.\n\nOverwrite it?"}}]}
END
}

awaitBox() {
    for _ in {1..300}; do
        box=$(xdotool search --onlyvisible --name "^$caption\$" 2>/dev/null | head -n1)
        [ -z "$box" ] || break
        sleep 0.1
    done
    [ -n "$box" ] || { cat "$temp/tour.log" >&2; die "the box did not appear"; }
    sleep 1 # until it is drawn
    xdotool windowfocus "$box"
}

takePicture() {
    mkdir -p "$(dirname -- "$picture")"
    xwd -id "$box" -silent | xwdtopnm 2>/dev/null | pnmquant 64 2>/dev/null | pnmtopng -compression 9 \
        >"$picture" 2>/dev/null
    [ -s "$picture" ] || die "cannot take the picture"
}

# The choice is the field behind two empty texts and the type: 7 is "No".
checkTour() {
    local choice=00000000000000000000000007000000
    wait "$1" || { cat "$temp/tour.log" >&2; die "the tour failed"; }
    grep -q "\"dir\": *\"in\".*$choice" "$temp/records.log" ||
        { grep RedirectUI "$temp/records.log" >&2; die "the choice did not reach QOR"; }
}

[ -f "$build/bin/qorctl.exe" ] || die "build first: ./run build"
temp=$(mktemp -d) || die "cannot make a temporary folder"
trap cleanUp EXIT
trap 'exit 1' INT TERM HUP
installMissing
startScreen
makePrefix
writeSettings
wine "$build/bin/qorctl.exe" demo "Z:${temp//\//\\}\\settings.ini" \
    --trace "Z:${temp//\//\\}\\trace.log" </dev/null >"$temp/tour.log" 2>&1 &
tour=$!
awaitBox
takePicture
xdotool key n
checkTour "$tour"
echo "$picture"
