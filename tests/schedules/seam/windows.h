// What the plug-in's threads take from Windows, declared anew for the exploration of schedules: the functions
// of importer/system_threads_win32.cpp and async/thread_pool_win32.cpp and no others. Their bodies, in
// system/windows_threads.cpp, do what the system's documentation promises, and no more.
#pragma once

#include <cstdint>

// The names are the system's.
// NOLINTBEGIN(readability-identifier-naming,modernize-use-using)

#define CALLBACK
#define WINAPI

using BOOL = int;
using DWORD = std::uint32_t;
using LPCWSTR = const wchar_t*;
using PVOID = void*;
struct OrvantisModule;
using HMODULE = OrvantisModule*;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

extern "C" {

DWORD GetLastError();
DWORD GetCurrentThreadId();
BOOL GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module);

struct SRWLOCK {
    void* Ptr;
};
struct CONDITION_VARIABLE {
    void* Ptr;
};
void AcquireSRWLockExclusive(SRWLOCK* lock);
void ReleaseSRWLockExclusive(SRWLOCK* lock);
BOOL SleepConditionVariableSRW(CONDITION_VARIABLE* condition, SRWLOCK* lock, DWORD milliseconds, DWORD flags);
void WakeAllConditionVariable(CONDITION_VARIABLE* condition);
void WakeConditionVariable(CONDITION_VARIABLE* condition);

struct TP_POOL;
struct TP_WORK;
struct TP_CALLBACK_INSTANCE;
using PTP_POOL = TP_POOL*;
using PTP_WORK = TP_WORK*;
using PTP_CALLBACK_INSTANCE = TP_CALLBACK_INSTANCE*;
using PTP_WORK_CALLBACK = void (*)(PTP_CALLBACK_INSTANCE instance, PVOID context, PTP_WORK work);
struct TP_CALLBACK_ENVIRON {
    PTP_POOL pool;
    HMODULE library;
};
PTP_POOL CreateThreadpool(PVOID reserved);
void SetThreadpoolThreadMaximum(PTP_POOL pool, DWORD maximum);
void CloseThreadpool(PTP_POOL pool);
void InitializeThreadpoolEnvironment(TP_CALLBACK_ENVIRON* environment);
void SetThreadpoolCallbackPool(TP_CALLBACK_ENVIRON* environment, PTP_POOL pool);
void SetThreadpoolCallbackLibrary(TP_CALLBACK_ENVIRON* environment, PVOID module);
void SetThreadpoolCallbackRunsLong(TP_CALLBACK_ENVIRON* environment);
void DestroyThreadpoolEnvironment(TP_CALLBACK_ENVIRON* environment);
PTP_WORK CreateThreadpoolWork(PTP_WORK_CALLBACK callback, PVOID context, TP_CALLBACK_ENVIRON* environment);
void SubmitThreadpoolWork(PTP_WORK work);
void CloseThreadpoolWork(PTP_WORK work);

}  // extern "C"
// NOLINTEND(readability-identifier-naming,modernize-use-using)
