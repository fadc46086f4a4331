# What Wine does when a program crashes. Sourced by scripts that make a prefix; $WINEPREFIX is theirs.
#
# Wine would start a debugger, which prints a back-trace (or crashes over the debug information of a
# large program) and ends the process from outside. The exit code that a shell then sees is 0 as soon
# as a thread of the process has ended before. Without a debugger Wine says in one line what happened
# and where, and the process ends itself, with the exception's code, of which a shell never sees 0.

# The server writes its registry to the file only after a while; until then the answer is no.
crashDebuggerIsOff() {
    ! grep -q '^"Debugger"=".' "$WINEPREFIX/system.reg"
}

# With a limit: it would wait for ever for a server that has crashed meanwhile.
turnCrashDebuggerOff() {
    timeout -k 5 60 wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d '' /f
}
