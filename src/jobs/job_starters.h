#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/progress_callback.h"
#include "base/result.h"
#include "device/borvan_usb_base.h"

namespace borvan {

// Start a job on `device`, each on a thread of its own that nobody joins. All return 0 when the
// thread runs, or the file error's code when the input check failed: an empty path, for the jobs
// that read a file one that names nothing, for the register write one without an entry. A failed
// check is also reported as (code, -1) before the starter returns.
// Throw std::system_error when no thread can be made; job_running stays true then.

Result StartFlashWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                          std::string start_address, ProgressCallback progress);

Result StartFlashQuickReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                              std::string start_address, std::string end_address,
                              ProgressCallback progress);

// Reads the list file on the calling thread.
Result StartRegisterWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                             ProgressCallback progress);

Result StartRegisterReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                            std::string start_address, std::string end_address,
                            ProgressCallback progress);

Result StartI2cWriteJob(std::shared_ptr<BorvanUSBBase> device, std::string path,
                        std::uint32_t option, ProgressCallback progress);

Result StartI2cReadJob(std::shared_ptr<BorvanUSBBase> device, std::string path, std::string slave,
                       std::string start_address, std::string end_address, std::uint32_t mode,
                       ProgressCallback progress);

}  // namespace borvan
