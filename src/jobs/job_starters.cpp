#include "jobs/job_starters.h"

#include <exception>
#include <utility>
#include <vector>

#include "files/file.h"
#include "files/list_file.h"
#include "jobs/flash_jobs.h"
#include "jobs/job_end.h"
#include "jobs/job_thread.h"
#include "jobs/list_jobs.h"

namespace borvan {
namespace {

bool CanBeRead(const std::string& path) {
  return !path.empty() && PathExists(path);
}

Result RefuseFile(const ProgressCallback& progress) {
  const Result result = ToResult(StatusCode::kFileError);
  ReportEnd(progress, result);
  return result;
}

// Returns a list without entries if the file can't be read for any reason.
std::vector<ListEntry> ReadListOrNoneOnAnyFailure(const std::string& path) {
  try {
    return ReadListFile(path);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

Result StartFlashWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                          std::string start_address, ProgressCallback progress) {
  if (!CanBeRead(path)) {
    return RefuseFile(progress);
  }
  return StartJobThread(FlashWriteJob{.path = std::move(path),
                                      .device = std::move(device),
                                      .progress = std::move(progress),
                                      .start_address = std::move(start_address)},
                        RunFlashWriteJob);
}

Result StartFlashQuickReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                              std::string start_address, std::string end_address,
                              ProgressCallback progress) {
  if (path.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(FlashQuickReadJob{.path = std::move(path),
                                          .device = std::move(device),
                                          .progress = std::move(progress),
                                          .start_address = std::move(start_address),
                                          .end_address = std::move(end_address)},
                        RunFlashQuickReadJob);
}

Result StartRegisterWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                             ProgressCallback progress) {
  std::vector<ListEntry> list;
  if (CanBeRead(path)) {
    list = ReadListOrNoneOnAnyFailure(path);
  }
  if (list.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(
      RegisterWriteJob{
          .device = std::move(device), .list = std::move(list), .progress = std::move(progress)},
      RunRegisterWriteJob);
}

Result StartRegisterReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                            std::string start_address, std::string end_address,
                            ProgressCallback progress) {
  if (path.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(RegisterReadJob{.path = std::move(path),
                                        .device = std::move(device),
                                        .progress = std::move(progress),
                                        .start_address = std::move(start_address),
                                        .end_address = std::move(end_address)},
                        RunRegisterReadJob);
}

Result StartI2cWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                        std::uint32_t option, ProgressCallback progress) {
  if (!CanBeRead(path)) {
    return RefuseFile(progress);
  }
  return StartJobThread(I2cWriteJob{.device = std::move(device),
                                    .path = std::move(path),
                                    .progress = std::move(progress),
                                    .option = option},
                        RunI2cWriteJob);
}

Result StartI2cReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path, std::string slave,
                       std::string start_address, std::string end_address, std::uint32_t mode,
                       ProgressCallback progress) {
  if (path.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(I2cReadJob{.path = std::move(path),
                                   .device = std::move(device),
                                   .progress = std::move(progress),
                                   .slave = std::move(slave),
                                   .start_address = std::move(start_address),
                                   .end_address = std::move(end_address),
                                   .mode = mode},
                        RunI2cReadJob);
}

}  // namespace borvan
