// A DLL that anybody might have put somewhere under the name of another one. It says that it was
// loaded by making the file that BORVAN_PLANTED names.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  (void)instance;
  (void)reserved;
  char name[MAX_PATH];
  if (reason == DLL_PROCESS_ATTACH &&
      GetEnvironmentVariableA("BORVAN_PLANTED", name, sizeof name) != 0) {
    CloseHandle(
        CreateFileA(name, GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL));
  }
  return TRUE;
}
