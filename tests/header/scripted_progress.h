#pragma once

#include <borvan_usb.h>

#ifdef __cplusplus
extern "C" {
#endif

// Stands in for the library's progress, for Sleep and for GetTickCount: the time of the tests
// passes only by Sleep and script_suspend, and GetProgressInfo follows a script.

// Forgets the script and sets time and progress to 0.
void script_clear(void);

// From `milliseconds` on, GetProgressInfo returns `value`. Calls must come in the order of time.
void script_report(unsigned milliseconds, uint64_t value);

// The next call of Sleep lasts this much longer, as when the system suspends the program.
void script_suspend(unsigned milliseconds);

unsigned script_time(void);         // milliseconds since script_clear
unsigned script_looks(void);        // calls of GetProgressInfo
unsigned script_longest_nap(void);  // the longest time that was given to Sleep
unsigned script_marks(void);        // calls of UsbFlashWriteFile("", 0)

#ifdef __cplusplus
}
#endif
