#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/progress_callback.h"
#include "base/result.h"
#include "device/borvan_usb_base.h"

namespace borvan {

// Each function starts a job on `device`, on its own thread, which nobody joins. It returns 0 if
// the thread runs, or the code of the file error if the input check fails: the path is empty; for
// the jobs that read a file, nothing exists at the path; for the register write, the list has no
// entry. A failed check is also reported as (code, -1) before the function returns. Throws
// std::system_error if no thread can be created; job_running then stays true.

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
