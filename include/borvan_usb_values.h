/**
 * @file
 * The record of a camera and the values of GetProgressInfo, with the functions that read them.
 * borvan_usb.h includes this file.
 */
#pragma once

/* NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "borvan_usb_constants.h"

/* Checks the compiler's layout, in C89 by the size of an array. */
#if defined(__cplusplus)
#define BORVAN_USB_ASSERT(name, condition) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define BORVAN_USB_ASSERT(name, condition) _Static_assert(condition, #name)
#else
#define BORVAN_USB_ASSERT(name, condition) typedef char name[(condition) ? 1 : -1]
#endif

BORVAN_USB_ASSERT(borvan_bool_has_one_byte, sizeof(bool) == 1);

/* ---- Cameras --------------------------------------------------------------------------------- */

/**
 * One camera. A path or name of 120 bytes or more fills its field without a terminating zero, and
 * what does not fit is lost. The IDs never have a terminating zero. Read all four fields with the
 * functions below.
 */
struct UsbDeviceInfo {
  char path[kBorvanTextFieldSize];     /**< device path, lower case */
  char name[kBorvanTextFieldSize];     /**< friendly name */
  char vendor_id[kBorvanIdFieldSize];  /**< four upper-case hexadecimal digits, no terminator */
  char product_id[kBorvanIdFieldSize]; /**< four upper-case hexadecimal digits, no terminator */
};
/** One camera. */
typedef struct UsbDeviceInfo UsbDeviceInfo;

BORVAN_USB_ASSERT(borvan_record_has_248_bytes, sizeof(UsbDeviceInfo) == 248);
BORVAN_USB_ASSERT(borvan_path_is_at_0, offsetof(UsbDeviceInfo, path) == 0);
BORVAN_USB_ASSERT(borvan_name_is_at_120, offsetof(UsbDeviceInfo, name) == 120);
BORVAN_USB_ASSERT(borvan_vendor_id_is_at_240, offsetof(UsbDeviceInfo, vendor_id) == 240);
BORVAN_USB_ASSERT(borvan_product_id_is_at_244, offsetof(UsbDeviceInfo, product_id) == 244);
#undef BORVAN_USB_ASSERT

/**
 * Copies a path or name field, whether it is terminated or full.
 * @param field 120 bytes: path or name of a UsbDeviceInfo
 * @param text space for 121 bytes; receives the text and a terminating zero
 */
BORVAN_USB_INLINE void borvan_copy_text(const char* field, char* text) {
  size_t length = 0;
  while (length < kBorvanTextFieldSize && field[length] != '\0') {
    ++length;
  }
  memcpy(text, field, length);
  text[length] = '\0';
}

/**
 * Copies an ID field.
 * @param field 4 characters: vendor_id or product_id of a UsbDeviceInfo
 * @param text space for 5 bytes; receives the characters and a terminating zero
 */
BORVAN_USB_INLINE void borvan_copy_id(const char* field, char* text) {
  memcpy(text, field, kBorvanIdFieldSize);
  text[kBorvanIdFieldSize] = '\0';
}

/**
 * Reads an ID field as a number.
 * @param field 4 characters: vendor_id or product_id of a UsbDeviceInfo
 * @return 0 to 0xFFFF; -1 when the field contains anything but hexadecimal digits
 */
BORVAN_USB_INLINE int32_t borvan_id_number(const char* field) {
  int32_t number = 0;
  int i = 0;
  for (i = 0; i < kBorvanIdFieldSize; ++i) {
    const char digit = field[i];
    int32_t value = 0;
    if (digit >= '0' && digit <= '9') {
      value = digit - '0';
    } else if (digit >= 'A' && digit <= 'F') {
      value = digit - 'A' + 10;
    } else if (digit >= 'a' && digit <= 'f') {
      value = digit - 'a' + 10;
    } else {
      return -1;
    }
    number = number * 16 + value;
  }
  return number;
}

/* ---- Progress -------------------------------------------------------------------------------- */

/**
 * The percentage of a value of GetProgressInfo.
 * @param progress a value of GetProgressInfo
 * @return 0 to 100; 0 together with every status but 0
 */
BORVAN_USB_INLINE int32_t borvan_progress_percent(uint64_t progress) {
  int32_t percent = 0;
  memcpy(&percent, &progress, sizeof percent); /* the low half comes first on every x86-64 */
  return percent;
}

/**
 * The status of a value of GetProgressInfo.
 * @param progress a value of GetProgressInfo
 * @return 0; negative for a failure; positive as described at kBorvanProgressNotice
 */
BORVAN_USB_INLINE int32_t borvan_progress_status(uint64_t progress) {
  return borvan_progress_percent(progress >> kBorvanProgressStatusShift);
}

/** What a value of GetProgressInfo means. */
enum BorvanProgressState {
  /**
   * 0 to 99 %. 0 % can also mean that no job was ever started, that the job just started has
   * reported nothing yet, or that the 100 % of a job was cleared.
   */
  kBorvanProgressRunning = 0,
  /**
   * 100 %: the transfers of a job succeeded. It stays for three seconds at most: another job's
   * report replaces it, the clearing of an earlier job's 100 % can end it sooner, and a job that
   * then can't write its file, on a full disk for example, replaces it by kBorvanFileError.
   */
  kBorvanProgressDone = 1,
  /** A job failed; the status is the reason. It stays until something else is reported or cleared.
   */
  kBorvanProgressFailed = 2,
  /**
   * A positive status, which is not a failure. A flash dump of 8 to 807 bytes: status 1, the
   * percentage went past 100 right before the end; continue to poll. A register list: the end of
   * the job. The status is what the last transfer returned, or 11 when the list does not begin with
   * an entry 0xfffd and nothing was written.
   */
  kBorvanProgressNotice = 3
};

/**
 * Returns what a value of GetProgressInfo means.
 *
 * The library stores the two halves one after the other, so a value can combine halves of two
 * reports: a status with a percentage other than 0. Such a value counts as running; the next poll
 * sees the whole report.
 * @param progress a value of GetProgressInfo
 * @return running, done, failed or notice
 */
BORVAN_USB_INLINE enum BorvanProgressState borvan_progress_state(uint64_t progress) {
  const int32_t percent = borvan_progress_percent(progress);
  const int32_t status = borvan_progress_status(progress);
  if (status == 0) {
    return percent == 100 ? kBorvanProgressDone : kBorvanProgressRunning;
  }
  if (percent != 0) {
    return kBorvanProgressRunning;
  }
  return status < 0 ? kBorvanProgressFailed : kBorvanProgressNotice;
}

/* NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
