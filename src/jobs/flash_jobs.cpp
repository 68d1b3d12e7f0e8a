#include "jobs/flash_jobs.h"

#include <utility>

#include "base/hexadecimal_text.h"
#include "files/flash_dump_file.h"
#include "files/flash_image_file.h"
#include "jobs/job_end.h"
#include "jobs/progress.h"

namespace borvan {

void RunFlashWriteJob(FlashWriteJob& job) {
  auto image = ReadFlashImage(job.path);
  if (!image.has_value()) {
    EndJobWithoutFile(*job.device, job.progress);
    return;
  }
  const Result result = job.device->FlashWriteImage(
      std::move(*image), ParseUnsignedLong(job.start_address), job.progress);
  ReportEnd(job.progress, result);
  ClearJobFlags(job.device->Jobs());
}

void RunFlashQuickReadJob(FlashQuickReadJob& job) {
  const bool as_text = IsTextFileName(job.path);
  auto file = File::OpenToWrite(job.path);
  if (!file.has_value()) {
    EndJobWithoutFile(*job.device, job.progress);
    return;
  }
  const std::uint32_t start_address = ParseUnsignedLong(job.start_address);
  const std::uint32_t end_address = ParseUnsignedLong(job.end_address);
  std::vector<std::uint8_t> bytes;
  const Result result =
      job.device->FlashQuickReadImage(bytes, start_address, end_address, job.progress);
  // Deliberately reported before the file is written: hosts poll for this report and then wait for
  // the file.
  ReportEnd(job.progress, result);
  if (as_text) {
    WriteTextDump(*file, bytes, start_address, end_address);
  } else {
    WriteBinaryDump(*file, bytes);
  }
  ClearJobFlags(job.device->Jobs());
}

}  // namespace borvan
