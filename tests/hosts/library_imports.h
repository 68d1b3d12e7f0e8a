#pragma once

// Takes memory and threads away from the loaded library, by the table through which it calls
// Windows' C runtime. In C and C++, and without a C runtime of the host's own.

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <windows.h>

// Reads a number of the loaded file's headers.
static inline uint32_t NumberAt(const char* address) {
  uint32_t number = 0;
  memcpy(&number, address, sizeof number);
  return number;
}

// Where the library keeps the address of an imported function; NULL when it imports none of this
// name. Offsets: Microsoft's "PE Format", import directory table.
static inline void** ImportSlot(const char* name) {
  const char* const base = (const char*)GetModuleHandleA("BorvanUSB_x64.dll");
  const char* const headers = base + NumberAt(base + 0x3C);
  const char* table = base + NumberAt(headers + 0x90);
  for (; NumberAt(table + 12) != 0; table += 20) {
    const char* names = base + NumberAt(table);
    char* slots = (char*)base + NumberAt(table + 16);
    for (; NumberAt(names) != 0; names += 8, slots += 8) {
      // A name has two bytes before it.
      if (strcmp(base + NumberAt(names) + 2, name) == 0) {
        return (void**)slots;
      }
    }
  }
  return NULL;
}

// Makes the library call `function` for the import of this name; returns what it called before.
static inline void* ReplaceImport(const char* name, void* function) {
  void** const slot = ImportSlot(name);
  if (slot == NULL) {
    return NULL;
  }
  void* const former = *slot;
  DWORD protection = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
  *slot = function;
  VirtualProtect(slot, sizeof *slot, protection, &protection);
  return former;
}

// Stands in for _beginthreadex when there is no thread to be had.
static inline uintptr_t NoThread(void* security, unsigned stack, unsigned (*procedure)(void*),
                                 void* argument, unsigned flags, void* identifier) {
  (void)security, (void)stack, (void)procedure, (void)argument, (void)flags, (void)identifier;
  return 0;
}

// Which allocation of this thread fails, counted from 1; 0 when none does.
static unsigned g_failing_allocation = 0;
static DWORD g_failing_thread = 0;
static void* (*g_library_malloc)(size_t) = NULL;

// Stands in for malloc. The allocation after the failing one succeeds: without the few bytes of the
// exception itself the C++ runtime could not throw it.
static inline void* MallocThatFails(size_t size) {
  if (g_failing_allocation != 0 && GetCurrentThreadId() == g_failing_thread) {
    --g_failing_allocation;
    if (g_failing_allocation == 0) {
      return NULL;
    }
  }
  return g_library_malloc(size);
}

// From here on MallocThatFails stands in for the library's malloc; false when it can't.
static inline bool TakeOverMalloc(void) {
  void** const slot = ImportSlot("malloc");
  if (slot == NULL) {
    return false;
  }
  memcpy(&g_library_malloc, slot, sizeof g_library_malloc);
  g_failing_thread = GetCurrentThreadId();
  return ReplaceImport("malloc", (void*)&MallocThatFails) != NULL;
}

static inline void GiveMallocBack(void) {
  void* former = NULL;
  memcpy(&former, &g_library_malloc, sizeof former);
  ReplaceImport("malloc", former);
}
