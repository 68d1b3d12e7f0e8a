#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <string>

namespace borvan_test {

// A line of /proc/self/status, in bytes.
inline std::size_t StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string field;
  while (status >> field) {
    std::size_t kibibytes = 0;
    if (field == name + ":" && status >> kibibytes) {
      return kibibytes * 1024;
    }
    status.ignore(1 << 12, '\n');
  }
  ADD_FAILURE() << "/proc/self/status lacks " << name;
  return 0;
}

// The most resident memory that `work` needed beyond what there was before it.
template <typename Work>
std::size_t PeakGrowth(Work work) {
  {
    // 5 sets the peak back to what is resident now.
    std::ofstream reset("/proc/self/clear_refs");
    EXPECT_TRUE(reset << "5" << std::flush) << "the peak can't be reset";
  }
  const std::size_t before = StatusBytes("VmRSS");
  work();
  const std::size_t peak = StatusBytes("VmHWM");
  return peak > before ? peak - before : 0;
}

}  // namespace borvan_test
