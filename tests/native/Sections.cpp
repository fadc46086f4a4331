#include <windows.h>

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutexattr_t recursive;
    pthread_mutexattr_init(&recursive);
    pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(section, &recursive);
    pthread_mutexattr_destroy(&recursive);
}

void EnterCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutex_lock(section);
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutex_unlock(section);
}

void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutex_destroy(section);
}
