#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "workbench/worker.h"

namespace borvanusb {

// The functions of the operating system that the workbench needs.
class WorkbenchPlatform {
 public:
  WorkbenchPlatform() = default;
  WorkbenchPlatform(const WorkbenchPlatform&) = delete;
  WorkbenchPlatform& operator=(const WorkbenchPlatform&) = delete;
  virtual ~WorkbenchPlatform() = default;

  // See WorkerStarter.
  virtual std::unique_ptr<Worker> StartWorker(WorkerEvents events) = 0;
  // Returns this number of bytes from the system's random generator, as hexadecimal digits. Throws
  // Failure kInternal.
  virtual std::string RandomHex(std::size_t bytes) = 0;
  // Opens the user's browser. Returns false if there is none.
  virtual bool OpenBrowser(const std::string& address) = 0;
  // A folder for the files of runs, which only the user can read.
  virtual std::string DataFolder() const = 0;
};

}  // namespace borvanusb
