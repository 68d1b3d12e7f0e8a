// borvanusb-stop PROCESS: sends Ctrl-C to a process that has its own console. This program has
// none, so it can join that one; it ignores the Ctrl-C itself. Fails with 1 when the process has
// ended or has no console.

#include <windows.h>

#include <cstdlib>

int main(int count, char** arguments) {
  if (count != 2) {
    return 1;
  }
  const DWORD process = std::strtoul(arguments[1], nullptr, 10);
  FreeConsole();  // Wine gives one to every program
  const bool sent = AttachConsole(process) != FALSE &&
                    SetConsoleCtrlHandler(nullptr, TRUE) != FALSE &&
                    GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != FALSE;
  return sent ? 0 : 1;
}
