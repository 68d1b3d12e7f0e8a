#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "camera/host.h"

namespace borvanusb {

// What `doctor` makes of all it has seen.

struct ExaminedCamera {
  CameraIdentity identity;
  std::string problem;  // why it can't be used; empty when its vendor unit answers
};

struct Examination {
  SystemReport system;
  std::string list_problem;  // why the cameras can't be listed; empty when they can
  std::vector<ExaminedCamera> cameras;
};

struct Diagnosis {
  std::string cause;  // one line
  std::string advice;
  ExitCode code = ExitCode::kDone;  // kDone when a camera can be used
};

// The likeliest cause: of all that is wrong what stands nearest to the beginning of the way from
// this program to a camera.
Diagnosis Diagnose(const Examination& examination);

}  // namespace borvanusb
