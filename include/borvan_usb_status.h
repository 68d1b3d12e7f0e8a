/**
 * @file
 * Status codes and their texts. borvan_usb.h includes this file.
 */
#pragma once

/* NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
#include <stddef.h>
#include <stdint.h>

#include "borvan_usb_constants.h"

/* Codes do not fit the int of C's enumerators. C++ states the type; GCC and Clang have unsigned
 * enumerators in C as an extension. Microsoft's C has neither: there the constants are negative
 * ints, equal to the codes once they are converted to uint32_t, as `switch` and `==` do. */
#if defined(__cplusplus)
#define BORVAN_USB_CODES(name) enum name : uint32_t
#elif defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wpedantic"
#pragma clang diagnostic ignored "-Wfixed-enum-extension"
#pragma clang diagnostic ignored "-Wmicrosoft-fixed-enum"
#define BORVAN_USB_CODES(name) enum name : uint32_t
#elif defined(__GNUC__)
#define BORVAN_USB_CODES(name) __extension__ enum name
#else
#define BORVAN_USB_CODES(name) enum name
#endif

/**
 * Status codes: of jobs, by GetProgressInfo, and of borvan_wait_for_job. A camera's driver may give
 * other negative codes as well; the library passes them on as they come.
 */
BORVAN_USB_CODES(BorvanStatus){
    /* The library's own failures. */

    /** A sector could not be erased; also, the image can't be programmed as no camera is open. */
    kBorvanFlashEraseFailed = 0xE0000001u,
    /** The vendor unit did not give the length of a control. */
    kBorvanLengthQueryFailed = 0xE0000002u,
    /** A packet could not be written to the flash. */
    kBorvanFlashWriteFailed = 0xE0000003u,
    /** The end of a range lies before its start. */
    kBorvanInvalidAddress = 0xE0000004u,
    /** Reserved: no function of the library reports it. */
    kBorvanFlashReadFailed = 0xE0000005u,
    /** Reserved: a job that is told to stop reports it, and no function tells a job to stop. */
    kBorvanTerminated = 0xE0000006u,
    /** The fast transfers of the chip do not work. */
    kBorvanFastInterfaceFailed = 0xE0000007u,
    /** An I2C list has a register before its slave address and its width code. */
    kBorvanSlaveAndWidthMissing = 0xE0000008u,
    /** Reserved: no function of the library reports it. */
    kBorvanDeviceNotFound = 0xE0000009u,
    /** A file can't be read or written, or a list holds no entry or a line without a value. */
    kBorvanFileError = 0xE000000Au,
    /** Reserved: no function of the library reports it. */
    kBorvanFileFormatFailed = 0xE000000Bu,

    /* Codes of the system that the library itself returns. */

    /** E_POINTER: no camera is open. */
    kBorvanSystemNoChannel = 0x80004003u,
    /** E_FAIL: the job ended with an exception that has no code. */
    kBorvanSystemFail = 0x80004005u,
    /** E_OUTOFMEMORY */
    kBorvanSystemOutOfMemory = 0x8007000Eu,
    /** The camera reported an impossible length of a control, above 65535. */
    kBorvanSystemInvalidData = 0x8007000Du,

    /* What borvan_wait_for_job returns when it did not see the job's end. */

    /** The time limit passed; the job may still be running. */
    kBorvanWaitTimeLimit = 0xE0001001u,
    /** The job's last report was cleared before it was read; read back what it did. */
    kBorvanWaitEndMissed = 0xE0001002u};

#if defined(__clang__) && !defined(__cplusplus)
#pragma clang diagnostic pop
#endif
#undef BORVAN_USB_CODES

/**
 * The message of a status: the library's own failures and what borvan_wait_for_job returns.
 * @param status the status code
 * @return a constant text, which must not be freed; NULL for other codes. borvan_status_text has a
 *   text for every code.
 */
BORVAN_USB_INLINE const char* borvan_status_message(uint32_t status) {
  static const char* const kMessages[] = {
      "Flash failed to erase",
      "GetLen fails in channel",
      "Flash write  failed", /* programs compare the texts: the two spaces stay */
      "Invalid address",
      "Flash read failed",
      "Termination of work",
      "The Fast interface failed to execute",
      "The values of fff8 and fffe were not obtained",
      "Device not found",
      "File name error or file error",
      "File format failed",
  };
  if (status == kBorvanWaitTimeLimit) {
    return "The job did not end within the time limit";
  }
  if (status == kBorvanWaitEndMissed) {
    return "The job's last report was cleared before it was read";
  }
  if (status < kBorvanFlashEraseFailed || status > kBorvanFileFormatFailed) {
    return NULL;
  }
  return kMessages[status - kBorvanFlashEraseFailed];
}

/**
 * A text for any status: as borvan_status_message, and for the system's codes that cameras and
 * their drivers return most often.
 * @param status the status code; a result of UsbIniDevice may be passed, converted to uint32_t
 * @return a constant text, never NULL, which must not be freed. For a code without its own text:
 *   "error code of the system or of the camera's driver". FormatMessage may know it.
 */
BORVAN_USB_INLINE const char* borvan_status_text(uint32_t status) {
  const char* const message = borvan_status_message(status);
  if (message != NULL) {
    return message;
  }
  switch (status) {
    case 0:
      return "no failure";
    case 0x80004001u:
      return "not implemented";
    case kBorvanSystemNoChannel:
      return "no camera is open";
    case kBorvanSystemFail:
      return "failed, without a reason";
    case 0x80070001u:
      return "the camera's driver does not support the request";
    case 0x80070005u:
      return "access denied";
    case 0x80070006u:
      return "the camera was closed";
    case kBorvanSystemInvalidData:
      return "the camera reported an impossible length";
    case kBorvanSystemOutOfMemory:
      return "out of memory";
    case 0x80070015u:
      return "the camera is not ready";
    case 0x80070017u:
      return "data error on the bus";
    case 0x8007001Fu:
      return "the camera refused the transfer";
    case 0x80070057u:
      return "the camera's driver refused an argument";
    case 0x80070079u:
    case 0x800705B4u:
      return "the camera did not answer in time";
    case 0x8007007Au:
      return "the camera's answer is longer than the transfer";
    case 0x800701B1u:
    case 0x8007048Fu:
      return "the camera is not connected any more";
    case 0x800703E3u:
      return "the transfer was aborted";
    case 0x80070490u:
      return "the camera's vendor unit has no such control";
    case 0x80070492u:
      return "the camera has no such vendor unit";
    default:
      break;
  }
  return status < 0x80000000u ? "no failure: a positive status"
                              : "error code of the system or of the camera's driver";
}

/* NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
