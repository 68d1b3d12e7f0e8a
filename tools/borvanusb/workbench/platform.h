#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "workbench/worker.h"

namespace borvanusb {

// What the workbench needs of the system.
class WorkbenchPlatform {
 public:
  WorkbenchPlatform() = default;
  WorkbenchPlatform(const WorkbenchPlatform&) = delete;
  WorkbenchPlatform& operator=(const WorkbenchPlatform&) = delete;
  virtual ~WorkbenchPlatform() = default;

  // See WorkerStarter.
  virtual std::unique_ptr<Worker> StartWorker(WorkerEvents events) = 0;
  // So many bytes of the system's random source, as hexadecimal digits. Throws Failure kInternal.
  virtual std::string RandomHex(std::size_t bytes) = 0;
  // Opens the user's browser; false when the system has none.
  virtual bool OpenBrowser(const std::string& address) = 0;
  // A folder that only the user reads, for the runs' files.
  virtual std::string DataFolder() const = 0;
};

}  // namespace borvanusb
