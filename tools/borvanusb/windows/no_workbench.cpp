// Replacement for a program without the workbench.
#include "windows/workbench_process.h"

namespace borvanusb {

void RunIfWorker(const std::vector<std::string>& /*words*/) {}

WorkbenchPlatform* SystemWorkbench() {
  return nullptr;
}

}  // namespace borvanusb
