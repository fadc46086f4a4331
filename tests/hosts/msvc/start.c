/*
 * Begins a program that was compiled for Microsoft's binary interface, in place of the start-up
 * code of the Windows SDK. The C run-time library is the one that lies on every Windows.
 */
typedef struct Startup {
    int newMode;
} Startup;

__declspec(dllimport) int __cdecl __getmainargs(int* count, char*** arguments, char*** environment,
                                                int wildcards, Startup* startup);
__declspec(dllimport) void __cdecl exit(int code);
int __cdecl main(int count, char** arguments);

int _fltused = 1; /* the compiler names it where floating-point numbers are used */

void __cdecl mainCRTStartup(void) {
    int count;
    char **arguments, **environment;
    Startup startup = {0};
    __getmainargs(&count, &arguments, &environment, 0, &startup);
    exit(main(count, arguments));
}
