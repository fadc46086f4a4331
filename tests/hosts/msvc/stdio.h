/* What the example needs of a C run-time library, in place of the Windows SDK's own header. */
#ifndef STDIO_H
#define STDIO_H

#ifdef __cplusplus
extern "C" {
#define NULL 0
#else
#define NULL ((void*)0)
#endif

typedef struct File File;
/* The three standard streams lie in one array of elements of this size. */
typedef struct FileSize {
    char bytes[32];
} FileSize;

__declspec(dllimport) extern FileSize _iob[];
#define stderr ((File*)&_iob[2])

__declspec(dllimport) int __cdecl printf(const char* format, ...);
__declspec(dllimport) int __cdecl fprintf(File* file, const char* format, ...);

#ifdef __cplusplus
}
#endif

#endif
