// Waits for the end of a job of the library, in C and in C++. borvan_usb.h includes this file.
//
//   const uint64_t before = borvan_before_job();
//   uint32_t status = kBorvanFileError;  // of a job that can't be started
//   if (UsbFlashWriteFile("firmware.bin", 0x40000)) {
//     status = borvan_wait_for_job(kBorvanJobOther, before, 600000, NULL, NULL);
//   }
//   // 0: the job ended well. Otherwise borvan_status_message(status) has the text.
#pragma once

// The header is C as much as C++, and must not follow advice for C++ alone.
// NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-redundant-void-arg)
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif

// The two functions of Windows that are needed; all of windows.h would bring its macros to
// everyone.
#ifndef _WINDOWS_
#ifdef __cplusplus
extern "C" {
#endif
#ifdef _WIN32
__declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);
__declspec(dllimport) unsigned long __stdcall GetTickCount(void);
#else  // tests on other systems define them
void Sleep(unsigned long milliseconds);
unsigned long GetTickCount(void);
#endif
#ifdef __cplusplus
}  // extern "C"
#endif
#endif

enum BorvanJob {
  kBorvanJobRegisterWrite = 0,  // UsbRegisterWriteFile, which may end with a positive status
  kBorvanJobOther = 1,          // each of the other five
};

enum {
  kBorvanPollMilliseconds = 20,     // between two looks at the progress
  kBorvanDoneMilliseconds = 3000,   // for which a job's 100 stands
  kBorvanClearMilliseconds = 3500,  // after which it is cleared on a slow machine, too
};

// Prepares for a job: call it right before the function that starts one. If a job has ended well
// within the last three seconds, it sleeps until that job's 100 is cleared, at most 3.5 s; a new
// instance needs no sleep. If a former job failed, kBorvanFileError takes the place of its failure.
// Returns what GetProgressInfo shows until the job reports something, for borvan_wait_for_job.
static inline uint64_t borvan_before_job(void) {
  const unsigned long start = GetTickCount();
  while (borvan_progress_state(GetProgressInfo()) == kBorvanProgressDone &&
         GetTickCount() - start < kBorvanClearMilliseconds) {
    Sleep(kBorvanPollMilliseconds);
    if (GetProgressInfo() == 0) {
      Sleep(kBorvanPollMilliseconds);  // a dump of less than eight bytes is cleared twice
    }
  }
  if (GetProgressInfo() != 0) {
    UsbFlashWriteFile("", 0);  // fails at once and without a transfer
  }
  return GetProgressInfo();
}

// Waits for the end of the job that was started last. Nothing stops a job: when this gives up, the
// job may go on until the process ends, and no other should be started.
//   job            which kind of job
//   before         what borvan_before_job returned
//   time_limit_ms  milliseconds after which to give up
//   progress       called with 1 to 100 as often as the percentage rises; may be null. Jobs with
//                  lists have 100 alone.
//   context        handed to `progress`
// Returns
//   0                     the job ended well. A job that reads writes its file only then: wait
//                         until the file has its whole size.
//   0x80000000 or more    the job failed; the code says why
//   kBorvanWaitTimeLimit  no end within the time limit. With a `before` other than 0 that includes
//                         a job that can't use its file.
//   kBorvanWaitEndMissed  the job's report was cleared while this program did not run for three
//                         seconds (standby, debugger). It has probably ended: read back.
//   below 0x80000000      kBorvanJobRegisterWrite alone: see kBorvanProgressNotice
static inline uint32_t borvan_wait_for_job(enum BorvanJob job, uint64_t before,
                                           uint32_t time_limit_ms,
                                           void (*progress)(int32_t percent, void* context),
                                           void* context) {
  const unsigned long start = GetTickCount();
  unsigned long last_look = start;
  bool reported = false;  // by this job
  int32_t shown = 0;
  for (;;) {
    const unsigned long look = GetTickCount();
    uint64_t value = GetProgressInfo();
    if (borvan_progress_state(value) == kBorvanProgressDone && value != before) {
      // A dump of less than eight bytes reports 100 whether it fails or not, and a job that can't
      // write its file fails after its 100.
      Sleep(kBorvanPollMilliseconds);
      const uint64_t next = GetProgressInfo();
      value = borvan_progress_state(next) == kBorvanProgressFailed ? next : value;
      reported = true;
    }
    const unsigned long now = GetTickCount();
    const enum BorvanProgressState state = borvan_progress_state(value);
    const int32_t status = borvan_progress_status(value);
    const int32_t percent = status == 0 ? borvan_progress_percent(value) : 0;
    if (value == 0) {
      // Cleared. If this program looked often enough to see a 100, it was none of this job's.
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
// NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-redundant-void-arg)
