// A program that does nothing but end with 42, without a C runtime and with nothing of the
// products: wine_starts.py starts it thousands of times, to see which starts fail in Wine itself.
#include <windows.h>

void Start(void);

void Start(void) {
  ExitProcess(42);
}
