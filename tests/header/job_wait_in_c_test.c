// The header's helper that waits for a job, as a C host compiles it.
#include <stdio.h>

#include "scripted_progress.h"

static int failures = 0;

static void Expect(bool holds, const char* what) {
  if (!holds) {
    ++failures;
    fprintf(stderr, "failed: %s\n", what);
  }
}

static void KeepPercent(int32_t percent, void* context) {
  *(int32_t*)context = percent;
}

static void JobThatEndsWell(void) {
  int32_t percent = -1;
  script_clear();
  const uint64_t before = borvan_before_job();
  script_report(100, 40);
  script_report(5000, 100);
  Expect(borvan_wait_for_job(kBorvanJobOther, before, 60000, KeepPercent, &percent) == 0,
         "a job ends well");
  Expect(percent == 100, "the callback gets the percentages");
}

static void JobThatFailsLikeTheFormerOne(void) {
  script_clear();
  script_report(0, 0xE000000300000000u);
  const uint64_t before = borvan_before_job();
  script_report(1000, 0xE000000300000000u);
  Expect(borvan_wait_for_job(kBorvanJobOther, before, 60000, NULL, NULL) == kBorvanFlashWriteFailed,
         "a job fails as the one before it");
  Expect(script_time() >= 1000, "and not before it does");
}

static void JobThatHangs(void) {
  script_clear();
  Expect(borvan_wait_for_job(kBorvanJobOther, 0, 60000, NULL, NULL) == kBorvanWaitTimeLimit,
         "a job hangs");
}

int main(void) {
  JobThatEndsWell();
  JobThatFailsLikeTheFormerOne();
  JobThatHangs();
  if (failures == 0) {
    puts("the helper serves a C host");
  }
  return failures == 0 ? 0 : 1;
}
