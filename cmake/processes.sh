# Finding processes by a mark: an environment variable that a script sets before it starts them and
# that they all inherit, however deep, also through Wine. Sourced by bash scripts.

# markedProcesses NAME VALUE: those that run, as "pid command line". Zombies have no environment
# left. The search itself must not carry the mark.
markedProcesses() {
    local file pid
    env -u "$1" grep -lzs "^$1=$2\$" /proc/[0-9]*/environ | while read -r file; do
        pid=${file#/proc/}
        pid=${pid%/environ}
        echo "$pid $(tr '\0' ' ' 2>/dev/null <"/proc/$pid/cmdline")"
    done
}

# The same without Wine's own services: they run as long as its server and belong to nobody.
foreignProcesses() {
    local marked
    marked=$(markedProcesses "$1" "$2") # first, whole: else the filter below would find itself
    [ -z "$marked" ] || grep -Eiv \
        '^[0-9]+ (/usr/lib/wine/wineserver|C:\\windows\\system32\\(services|winedevice|plugplay|svchost|explorer|rpcss)\.exe)' \
        <<<"$marked" || true
}

# nothingLeftRunning NAME VALUE: gives ending processes three seconds, then lists what is left.
nothingLeftRunning() {
    local deadline=$((SECONDS + 3)) left
    while left=$(foreignProcesses "$1" "$2") && [ -n "$left" ]; do
        if [ "$SECONDS" -gt "$deadline" ]; then
            sed 's/^/left running: /' <<<"$left" >&2
            return 1
        fi
        sleep 0.1
    done
}
