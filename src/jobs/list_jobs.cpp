#include "jobs/list_jobs.h"

#include <algorithm>
#include <span>
#include <stdexcept>

#include "base/hexadecimal_text.h"
#include "files/file.h"
#include "files/flash_dump_file.h"
#include "files/list_dump_file.h"
#include "files/list_file.h"
#include "jobs/job_end.h"
#include "jobs/progress.h"

namespace borvan {
namespace {

// The page markers at the start of a register run.
constexpr std::size_t kRunMarkers = 2;

// A line without a value makes the whole list empty: writing half of the list would be worse. Any
// other failure to read the list ends the job.
std::vector<ListEntry> ReadListOrNoneOnBadLine(const std::string& path) {
  try {
    return ReadListFile(path);
  } catch (const std::invalid_argument&) {
    return {};
  }
}

}  // namespace

void RunRegisterWriteJob(RegisterWriteJob& job) {
  const Result result = job.device->RegisterWriteList(job.list, job.ignored, ProgressCallback());
  if (job.progress) {
    job.progress(result, HasFailed(result) ? kFailurePercent : kDonePercent);
  }
  ClearJobFlags(job.device->Jobs());
}

void RunRegisterReadJob(RegisterReadJob& job) {
  const bool as_text = IsTextFileName(job.path);
  auto file = File::OpenToWrite(job.path);
  if (!file.has_value()) {
    EndJobWithoutFile(*job.device, job.progress);
    return;
  }
  std::vector<ListEntry> list;
  const Result result = job.device->RegisterReadList(
      list, ParseUnsignedLong(job.start_address), ParseUnsignedLong(job.end_address), job.progress);
  ReportEnd(job.progress, result);
  // A failed run leaves the file empty, even if a part of the run was read.
  if (Succeeded(result)) {
    if (as_text) {
      WriteRegisterLines(*file, list);
    } else {
      const std::size_t skipped = job.device->MarkerSkip() == 1 ? kRunMarkers : 0;
      WriteListValues(*file, std::span(list).subspan(std::min(skipped, list.size())));
    }
  }
  file.reset();
  ClearJobFlags(job.device->Jobs());
}

void RunI2cWriteJob(I2cWriteJob& job) {
  const std::vector<ListEntry> list = ReadListOrNoneOnBadLine(job.path);
  if (list.empty()) {
    EndJobWithoutFile(*job.device, job.progress);
    return;
  }
  const Result result = job.device->I2cWriteList(list, job.option, job.progress);
  ReportEnd(job.progress, result);
  ClearJobFlags(job.device->Jobs());
}

void RunI2cReadJob(I2cReadJob& job) {
  const bool as_text = IsTextFileName(job.path);
  auto file = File::OpenToWrite(job.path);
  if (!file.has_value()) {
    EndJobWithoutFile(*job.device, job.progress);
    return;
  }
  std::vector<ListEntry> list;
  const Result result = job.device->I2cReadList(
      list, ParseUnsignedLong(job.slave), ParseUnsignedLong(job.start_address),
      ParseUnsignedLong(job.end_address), job.mode, job.progress);
  ReportEnd(job.progress, result);
  if (Succeeded(result)) {
    if (as_text) {
      WriteI2cLines(*file, list, job.mode);
    } else {
      WriteListValues(*file, list);
    }
  }
  file.reset();
  ClearJobFlags(job.device->Jobs());
}

}  // namespace borvan
