/**
 * @file
 * Reads the version of the BorvanUSB_x64.dll that this program has loaded. borvan_usb.h does not
 * include this file, because it includes windows.h.
 */
#pragma once

/* NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <windows.h>

#include "borvan_usb_constants.h"
#include "borvan_usb_version.h"

/**
 * The version of a loaded DLL, from its version resource.
 * @param library the handle of the DLL, as LoadLibrary and GetModuleHandle return it
 * @return one number as BORVAN_USB_VERSION_NUMBER, for example 1002003 for 1.2.3; 0 when `library`
 *   is NULL or the DLL has no version resource
 */
BORVAN_USB_INLINE uint32_t borvan_version_of_library(HMODULE library) {
  /* The resource: three 16-bit words, the key "VS_VERSION_INFO" in UTF-16 with its terminator, two
   * bytes of padding; then the record, which starts with a signature. */
  struct {
    unsigned char before[40]; /* lengths, key, alignment */
    uint32_t signature;
    uint32_t structure;
    uint32_t version_high;
    uint32_t version_low;
  } head;
  const void* bytes = NULL;
  HRSRC found = NULL;
  HGLOBAL loaded = NULL;
  if (library == NULL) {
    return 0;
  }
  /* "#1" is the resource's name, "#16" the type of version resources. */
  found = FindResourceA(library, "#1", "#16");
  if (found == NULL || SizeofResource(library, found) < sizeof head) {
    return 0;
  }
  loaded = LoadResource(library, found);
  if (loaded == NULL) {
    return 0;
  }
  bytes = LockResource(loaded);
  if (bytes == NULL) {
    return 0;
  }
  memcpy(&head, bytes, sizeof head);
  if (head.signature != 0xFEEF04BDu) {
    return 0;
  }
  return (head.version_high >> 16) * 1000000u + (head.version_high & 0xFFFFu) * 1000u +
         (head.version_low >> 16);
}

/**
 * The version of the BorvanUSB_x64.dll that this program has loaded.
 * @return one number as BORVAN_USB_VERSION_NUMBER; 0 when no such DLL is loaded. Compare it with
 *   BORVAN_USB_VERSION_NUMBER_OF(0, 2, 0) for a program that needs version 0.2.0.
 */
BORVAN_USB_INLINE uint32_t borvan_library_version(void) {
  return borvan_version_of_library(GetModuleHandleA("BorvanUSB_x64.dll"));
}

/* NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
