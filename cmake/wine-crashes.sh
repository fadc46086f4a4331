# What Wine does when a program crashes. Sourced by scripts that make a prefix; $WINEPREFIX is theirs.
#
# Wine's own crash debugger ends the crashed process from outside, and its exit code is then 0 as
# soon as one of its threads has ended before. This one prints the same registers and back-trace
# and lets go: the process ends itself, with an exit code that is never 0.
crashCommands=crash-commands.txt

# The server writes its registry to the file after a while; until then the answer is no.
crashesAreTold() {
    grep -q "$crashCommands" "$WINEPREFIX/system.reg"
}

tellCrashes() {
    printf 'detach\nquit\n' >"$WINEPREFIX/drive_c/$crashCommands" &&
        wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /f /v Debugger \
            /d "winedbg --file C:\\$crashCommands %ld %ld"
}
