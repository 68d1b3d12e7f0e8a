#pragma once

#include "windows/rig.h"

namespace test {

// Two cameras: 0 is listed but its device is gone, so it can't be opened; 1 can. The current folder
// is one with the files of export_calls.h, in which all jobs can start.
class HostsRig : public Rig {
 protected:
  HostsRig();
  ~HostsRig() override;

  static constexpr std::int32_t kGone = 0;
  static constexpr std::int32_t kGood = 1;

  std::string Folder() const;

 private:
  std::string former_folder_;
};

}  // namespace test
