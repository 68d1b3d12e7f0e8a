#pragma once

// A host that works with register and I2C lists, as files and through single accesses.

#include <borvan_usb.h>

#include <cstdint>
#include <string>

#include "rig.h"

namespace test {

constexpr std::uint32_t kUntouched = 0xEEEEEEEE;

inline std::string Text(const Bytes& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

// A line of a list file, the way people write them: "0x3012,0x5A,".
std::string Line(std::uint32_t address, std::uint32_t value);

class ListsRig : public Rig {
 protected:
  // A camera with three sensors, in the width modes 0, 1 and 2.
  void UseSensors(bool fast, const std::string& more = "") {
    UseCamera(std::string(R"(, "registers": {"0x1a3": )") + (fast ? "32" : "0") + R"(},
        "sensors": [{"slave": 32, "mode": 0}, {"slave": 48, "mode": 1},
                    {"slave": 64, "mode": 2}])" +
              more);
  }

  std::string ListFile(const std::string& text) const {
    return MakeFile("list.txt", Bytes(text.begin(), text.end()));
  }

  // A progress of its own for the next job.
  static void Renew() {
    UsbIniDevice();
    ASSERT_TRUE(UsbSelectDevice(0));
  }

  void WriteRegisters(const std::string& text, std::uint64_t progress = kDone) {
    Renew();
    EXPECT_TRUE(UsbRegisterWriteFile(ListFile(text).c_str()));
    EXPECT_TRUE(ProgressBecomes(progress));
  }
  void WriteI2c(const std::string& text, std::uint64_t progress = kDone, std::uint32_t option = 0) {
    Renew();
    EXPECT_TRUE(UsbI2CWriteFile(ListFile(text).c_str(), option));
    EXPECT_TRUE(ProgressBecomes(progress));
  }

  // What a job put into a file of this name.
  Bytes RegisterRun(const std::string& name, std::uint32_t first, std::uint32_t last) {
    Renew();
    EXPECT_TRUE(UsbRegisterReadFile(File(name).c_str(), first, last));
    EXPECT_TRUE(ProgressBecomes(kDone));
    return FinishedFile(File(name));
  }
  Bytes I2cRun(const std::string& name, std::int32_t slave, std::uint32_t mode, std::uint32_t first,
               std::uint32_t last) {
    Renew();
    EXPECT_TRUE(UsbI2CReadFile(first, last, File(name).c_str(), slave, mode));
    EXPECT_TRUE(ProgressBecomes(kDone));
    return FinishedFile(File(name));
  }

  static std::uint32_t Register(std::uint32_t address) {
    std::uint32_t value = kUntouched;
    EXPECT_TRUE(UsbRegisterRead(address, &value, 1));
    return value;
  }
  static std::uint32_t Sensor(std::uint32_t slave, std::int32_t mode, std::uint32_t address) {
    std::uint32_t value = kUntouched;
    EXPECT_TRUE(UsbI2cRead(slave, address, &value, mode, 0));
    return value;
  }
};

}  // namespace test
