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

// What keeps a list from being read counts as a list without entries.
std::vector<ListEntry> ReadListOrNothing(const std::string& path) {
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
  return StartJobThread(FlashWriteJob{std::move(path), std::move(device), std::move(progress),
                                      std::move(start_address)},
                        RunFlashWriteJob);
}

Result StartFlashQuickReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                              std::string start_address, std::string end_address,
                              ProgressCallback progress) {
  if (path.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(FlashQuickReadJob{std::move(path), std::move(device), std::move(progress),
                                          std::move(start_address), std::move(end_address)},
                        RunFlashQuickReadJob);
}

Result StartRegisterWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                             ProgressCallback progress) {
  std::vector<ListEntry> list;
  if (CanBeRead(path)) {
    list = ReadListOrNothing(path);
  }
  if (list.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(
      RegisterWriteJob{std::move(device), std::move(list), 0, std::move(progress)},
      RunRegisterWriteJob);
}

Result StartRegisterReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                            std::string start_address, std::string end_address,
                            ProgressCallback progress) {
  if (path.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(RegisterReadJob{std::move(path), std::move(device), std::move(progress),
                                        std::move(start_address), std::move(end_address)},
                        RunRegisterReadJob);
}

Result StartI2cWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                        std::uint32_t option, ProgressCallback progress) {
  if (!CanBeRead(path)) {
    return RefuseFile(progress);
  }
  return StartJobThread(
      I2cWriteJob{std::move(device), std::move(path), std::move(progress), option}, RunI2cWriteJob);
}

Result StartI2cReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path, std::string slave,
                       std::string start_address, std::string end_address, std::uint32_t mode,
                       ProgressCallback progress) {
  if (path.empty()) {
    return RefuseFile(progress);
  }
  return StartJobThread(
      I2cReadJob{std::move(path), std::move(device), std::move(progress), std::move(slave),
                 std::move(start_address), std::move(end_address), mode},
      RunI2cReadJob);
}

}  // namespace borvan
