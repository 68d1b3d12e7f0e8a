#pragma once

#include "rig.h"

namespace test {

// The two cameras of the demonstration, fresh from the factory: the first takes lists in packets,
// the second register by register.
class DemoCameras : public Rig {
 protected:
  DemoCameras();

  static constexpr std::int32_t kInPackets = 0;
  static constexpr std::int32_t kRegisterByRegister = 1;

  // A fresh instance with this camera selected.
  void Select(std::int32_t camera);
};

// The whole text of a file of the source tree, such as "samples/sensor-8-8.txt".
std::string SourceFile(const std::string& name);

}  // namespace test
