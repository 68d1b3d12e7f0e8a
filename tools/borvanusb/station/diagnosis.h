#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "camera/host.h"

namespace borvanusb {

// The diagnosis that `doctor` makes from everything it examined.

struct ExaminedCamera {
  CameraIdentity identity;
  std::string problem;  // why it can't be used; empty if its vendor unit answers
};

struct Examination {
  SystemReport system;
  std::string list_problem;  // why the cameras can't be listed; empty if they can
  std::vector<ExaminedCamera> cameras;
};

struct Diagnosis {
  std::string cause;  // one line
  std::string advice;
  ExitCode code = ExitCode::kDone;  // kDone if a camera can be used
};

// The most likely cause. If there are several problems, the first one on the way from this program
// to a camera.
Diagnosis Diagnose(const Examination& examination);

}  // namespace borvanusb
