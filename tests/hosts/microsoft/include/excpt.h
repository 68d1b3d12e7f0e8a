#pragma once

// What the public header uses of Microsoft's excpt.h; the compiler knows the function itself.

#ifdef __cplusplus
extern "C" {
#endif

unsigned long __cdecl _exception_code(void);

#ifdef __cplusplus
}
#endif
