#pragma once

// What the public header and the hosts here use of the C runtime's string.h.

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

void* memchr(const void* bytes, int byte, size_t count);
int memcmp(const void* left, const void* right, size_t count);
void* memcpy(void* target, const void* source, size_t count);
void* memset(void* target, int byte, size_t count);
int strcmp(const char* left, const char* right);
int strncmp(const char* left, const char* right, size_t count);
size_t strcspn(const char* text, const char* rejected);
size_t strlen(const char* text);
size_t strspn(const char* text, const char* accepted);

#ifdef __cplusplus
}
#endif
