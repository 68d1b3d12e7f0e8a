/**
 * @file
 * The version of these headers. CMake writes this file from the version in CMakeLists.txt; it is in
 * the source tree for programs that are built without CMake. Do not edit it.
 *
 * borvan_library_version.h reads the version of the DLL that a program has loaded.
 */
#pragma once

/** Major version: it increases when programs must be changed. */
#define BORVAN_USB_VERSION_MAJOR 0
/** Minor version: it increases with new functions. */
#define BORVAN_USB_VERSION_MINOR 2
/** Patch version: it increases with corrections. */
#define BORVAN_USB_VERSION_PATCH 0
/** The version as a text. */
#define BORVAN_USB_VERSION_TEXT "0.2.0"

/** One number for a version, to be compared: 1.2.3 is 1002003. */
#define BORVAN_USB_VERSION_NUMBER_OF(major_version, minor_version, patch_version) \
  ((major_version)*1000000u + (minor_version)*1000u + (patch_version))
/** The version of these headers as one number. */
#define BORVAN_USB_VERSION_NUMBER                                                  \
  BORVAN_USB_VERSION_NUMBER_OF(BORVAN_USB_VERSION_MAJOR, BORVAN_USB_VERSION_MINOR, \
                               BORVAN_USB_VERSION_PATCH)
