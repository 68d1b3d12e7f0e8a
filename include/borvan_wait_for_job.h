/**
 * @file
 * Waits for the end of a job of the library, in C and in C++. borvan_usb.h includes this file.
 *
 *     const uint64_t before = borvan_before_job();
 *     uint32_t status = kBorvanFileError; // if the job can't be started
 *     if (UsbFlashWriteFile("firmware.bin", 0x40000)) {
 *       status = borvan_wait_for_job(kBorvanJobOther, before, 600000, NULL, NULL);
 *     }
 *     // 0: the job succeeded. Otherwise borvan_status_text(status) is its text.
 */
#pragma once

/* The header is also C, and must not follow advice that applies only to C++. */
/* NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-redundant-void-arg) */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "borvan_usb_constants.h"
#include "borvan_usb_status.h"
#include "borvan_usb_values.h"

/* The two Windows functions that are needed. Including windows.h would bring its macros into every
 * program. */
/** @cond */
#ifndef _WINDOWS_
#ifdef __cplusplus
extern "C" {
#endif
#ifdef _WIN32
__declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);
__declspec(dllimport) unsigned long __stdcall GetTickCount(void);
#else /* tests on other systems define them */
void Sleep(unsigned long milliseconds);
unsigned long GetTickCount(void);
#endif
#ifdef __cplusplus
} /* extern "C" */
#endif
#endif
/** @endcond */

/** Kinds of jobs that end in different ways. */
enum BorvanJob {
  kBorvanJobRegisterWrite = 0, /**< UsbRegisterWriteFile, which can end with a positive status */
  kBorvanJobOther = 1          /**< each of the other five */
};

/** Times of the progress, in milliseconds. */
enum BorvanProgressTime {
  kBorvanPollMilliseconds = 20,   /**< between two polls of borvan_wait_for_job */
  kBorvanDoneMilliseconds = 3000, /**< how long the 100 of a job stays, at most */
  kBorvanClearMilliseconds = 3500 /**< after which it is cleared, also on a slow machine */
};

/**
 * Prepares for a job. Call it right before the function that starts the job. If a job has succeeded
 * within the last three seconds, it sleeps until that job's 100 is cleared, at most 3.5 s; a new
 * instance needs no sleep. If an earlier job failed, it replaces that failure by kBorvanFileError.
 * @return what GetProgressInfo shows until the job reports something, for borvan_wait_for_job
 */
BORVAN_USB_INLINE uint64_t borvan_before_job(void) {
  const unsigned long start = GetTickCount();
  while (borvan_progress_state(GetProgressInfo()) == kBorvanProgressDone &&
         GetTickCount() - start < kBorvanClearMilliseconds) {
    Sleep(kBorvanPollMilliseconds);
    if (GetProgressInfo() == 0) {
      Sleep(kBorvanPollMilliseconds); /* a dump of less than eight bytes is cleared twice */
    }
  }
  if (GetProgressInfo() != 0) {
    UsbFlashWriteFile("", 0); /* fails at once and without a transfer */
  }
  return GetProgressInfo();
}

/**
 * Waits for the end of the job that was started last. Nothing can stop a job: after a time limit it
 * may continue until the process ends, and no other job should be started.
 *
 * Returns
 * - 0: the job succeeded. A job that reads from the camera writes its file only then: wait until
 *   the file has its whole size.
 * - 0x80000000 or more: the job failed; the code is the reason.
 * - kBorvanWaitTimeLimit: no end within the time limit. If `before` is not 0, this includes a job
 *   that can't use its file.
 * - kBorvanWaitEndMissed: the job's report was cleared while this program did not run for three
 *   seconds (standby, debugger). The job has probably ended: read back.
 * - any other value: kBorvanJobRegisterWrite only; see kBorvanProgressNotice.
 * @param job the kind of the job
 * @param before what borvan_before_job returned
 * @param time_limit_ms the time limit in milliseconds
 * @param progress called with 1 to 100 whenever the percentage rises; may be null. Only
 *   UsbFlashWriteFile and UsbFlashQuickReadFile report percentages; other jobs report 100.
 * @param context passed to `progress`
 * @return the status
 */
BORVAN_USB_INLINE uint32_t borvan_wait_for_job(enum BorvanJob job, uint64_t before,
                                               uint32_t time_limit_ms,
                                               void (*progress)(int32_t percent, void* context),
                                               void* context) {
  const unsigned long start = GetTickCount();
  unsigned long last_look = start;
  bool reported = false; /* by this job */
  int32_t shown = 0;
  for (;;) {
    const unsigned long look = GetTickCount();
    unsigned long now = 0;
    uint64_t value = GetProgressInfo();
    enum BorvanProgressState state = kBorvanProgressRunning;
    int32_t status = 0;
    int32_t percent = 0;
    if (borvan_progress_state(value) == kBorvanProgressDone && value != before) {
      /* A dump of less than eight bytes reports 100 whether it fails or not, and a job that can't
       * write its file fails after its 100. */
      uint64_t next = 0;
      Sleep(kBorvanPollMilliseconds);
      next = GetProgressInfo();
      value = borvan_progress_state(next) == kBorvanProgressFailed ? next : value;
      reported = true;
    }
    now = GetTickCount();
    state = borvan_progress_state(value);
    status = borvan_progress_status(value);
    percent = status == 0 ? borvan_progress_percent(value) : 0;
    if (value == 0) {
      /* Cleared. If this program polled often enough to see a 100, it was not this job's. */
      if ((reported || before != 0) && now - last_look >= kBorvanDoneMilliseconds) {
        return kBorvanWaitEndMissed;
      }
    } else if (value != before || reported) {
      reported = true;
      if (percent > shown) {
        shown = percent;
        if (progress != NULL) {
          progress(percent, context);
        }
      }
      if (state == kBorvanProgressDone) {
        return 0;
      }
      if (state == kBorvanProgressFailed ||
          (state == kBorvanProgressNotice && job == kBorvanJobRegisterWrite)) {
        uint32_t code = 0;
        memcpy(&code, &status, sizeof code);
        return code;
      }
    }
    if (now - start >= time_limit_ms) {
      return kBorvanWaitTimeLimit;
    }
    last_look = look;
    Sleep(kBorvanPollMilliseconds);
  }
}
/* NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-redundant-void-arg) */
