#pragma once

// What the hosts here use of windows.h, declared by hand: the Windows SDK is not on the build
// machine. Names and types are those of the SDK's documentation.

#ifdef __cplusplus
extern "C" {
#endif

typedef void* HANDLE;
typedef HANDLE HMODULE;
typedef int BOOL;
typedef unsigned long DWORD;
typedef unsigned __int64 ULONG_PTR;
typedef HANDLE HRSRC;
typedef HANDLE HGLOBAL;

#define WINAPI __stdcall
#define STD_OUTPUT_HANDLE ((DWORD)-11)
#define PAGE_READWRITE 0x04
#define EXCEPTION_CONTINUE_SEARCH 0
#define EXCEPTION_EXECUTE_HANDLER 1

__declspec(dllimport) char* WINAPI GetCommandLineA(void);
__declspec(dllimport) HANDLE WINAPI GetStdHandle(DWORD which);
__declspec(dllimport) BOOL WINAPI
    WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* written, void* overlapped);
__declspec(dllimport) HMODULE WINAPI GetModuleHandleA(const char* name);
__declspec(dllimport) HRSRC WINAPI
    FindResourceA(HMODULE module, const char* name, const char* type);
__declspec(dllimport) DWORD WINAPI SizeofResource(HMODULE module, HRSRC resource);
__declspec(dllimport) HGLOBAL WINAPI LoadResource(HMODULE module, HRSRC resource);
__declspec(dllimport) void* WINAPI LockResource(HGLOBAL loaded);
__declspec(dllimport) BOOL WINAPI
    VirtualProtect(void* address, ULONG_PTR size, DWORD protection, DWORD* former);
__declspec(dllimport) void WINAPI Sleep(DWORD milliseconds);
__declspec(dllimport) __declspec(noreturn) void WINAPI ExitProcess(unsigned code);
__declspec(dllimport) DWORD WINAPI GetCurrentThreadId(void);
__declspec(dllimport) BOOL WINAPI SetCurrentDirectoryA(const char* folder);

#ifdef __cplusplus
}
#endif
