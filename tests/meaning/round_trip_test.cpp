// What was read from a camera into a file and is written from there to a fresh one is the same.

#include <gtest/gtest.h>

#include "base/hexadecimal_text.h"
#include "camera_in_process.h"
#include "comparison.h"
#include "files/list_file.h"
#include "jobs/list_jobs.h"
#include "random_lists.h"

namespace borvan_test {
namespace {

class RoundTrip : public ::testing::Test {
 protected:
  // Reports of the last job.
  borvan::ProgressCallback Recorder() {
    reports_.clear();
    return [this](std::int32_t status, std::int32_t percent) {
      reports_.emplace_back(status, percent);
    };
  }
  bool ReportsDone() const {
    return reports_ == std::vector<std::pair<std::int32_t, std::int32_t>>{{0, 100}};
  }

  TemporaryFolder folder_;
  std::vector<std::pair<std::int32_t, std::int32_t>> reports_;
};

// Registers that were written within the range; what was never written holds 0, and 0 is what a
// dump of it writes.
Registers Within(const Registers& registers, std::uint32_t space, std::uint32_t first,
                 std::uint32_t last) {
  Registers result;
  for (std::uint32_t address = first; address <= last; ++address) {
    const auto found = registers.find({space, address});
    result[{space, address}] = found == registers.end() ? 0 : found->second;
  }
  return result;
}

// A dump's page markers are delays to the list write, so only page 0 comes back where it was.
TEST_F(RoundTrip, OfRegistersInPage0GivesTheSameRegisters) {
  CameraInProcess camera({});
  const auto make = [](std::uint32_t seed) {
    List list = RandomPlainRegisters(seed, 0x100, 0x380, 0xFF);
    list.insert(list.begin(), {0xFFFD, 0});
    return list;
  };
  std::uint32_t last = 0x381;
  ExpectAllPass(150, make, [&](const List& list) -> std::string {
    last = last > 0x200 ? last - 1 : 0x381;  // runs of other lengths
    camera.PowerCycle();
    borvan::RegisterWriteJob write{camera.Device(), list, 0, Recorder()};
    borvan::RunRegisterWriteJob(write);
    if (!ReportsDone()) {
      return "  writing failed\n";
    }
    const Registers before = Within(camera.Written(), kChip, 0xF0, last);

    borvan::RegisterReadJob read{folder_.Path("dump.txt"), camera.Device(), Recorder(), "f0",
                                 borvan::FormatHex(last)};
    borvan::RunRegisterReadJob(read);
    if (!ReportsDone()) {
      return "  reading failed\n";
    }

    camera.PowerCycle();
    borvan::RegisterWriteJob again{camera.Device(), borvan::ReadListFile(folder_.Path("dump.txt")),
                                   0, Recorder()};
    borvan::RunRegisterWriteJob(again);
    if (!ReportsDone()) {
      return "  writing the dump failed\n";
    }
    return Differences(before, camera.Written());
  });
}

struct Sensor {
  const char* name;
  bool fast;
  std::uint8_t slave;
  std::uint32_t mode;
  std::uint32_t width_code;
  std::uint32_t first;
  std::uint32_t last;
};

class I2cRoundTrip : public RoundTrip, public ::testing::WithParamInterface<Sensor> {};

// A dump lacks slave and width; a user puts the two lines in front. A run read gives one byte a
// register, so words come back only up to 0xFF.
TEST_P(I2cRoundTrip, GivesTheSameRegisters) {
  const Sensor& sensor = GetParam();
  CameraInProcess camera({.fast_i2c = sensor.fast,
                          .registers = {},
                          .sensors = {{sensor.slave, static_cast<std::uint8_t>(sensor.mode)}}});
  const auto with_head = [&](List list) {
    list.insert(list.begin(), {{0xFFF8, sensor.slave}, {0xFFFE, sensor.width_code}});
    return list;
  };
  const auto make = [&](std::uint32_t seed) {
    return with_head(RandomPlainRegisters(seed, sensor.first, sensor.last, 0xFF));
  };
  const std::uint32_t space = SensorAt(sensor.slave);
  ExpectAllPass(sensor.fast ? 40 : 10, make, [&](const List& list) -> std::string {
    camera.PowerCycle();
    if (camera.Device()->I2cWriteList(list, 0, {}) < 0) {
      return "  writing failed\n";
    }
    const Registers before = Within(camera.Written(), space, sensor.first, sensor.last);

    borvan::I2cReadJob read{folder_.Path("dump.txt"),
                            camera.Device(),
                            Recorder(),
                            borvan::FormatHex(sensor.slave),
                            borvan::FormatHex(sensor.first),
                            borvan::FormatHex(sensor.last),
                            sensor.mode};
    borvan::RunI2cReadJob(read);
    if (!ReportsDone()) {
      return "  reading failed\n";
    }

    folder_.Put("head.txt", "0xfff8," + borvan::FormatHex(sensor.slave) + ",\n0xfffe," +
                                borvan::FormatHex(sensor.width_code) + ",\n" +
                                folder_.Content("dump.txt"));
    camera.PowerCycle();
    borvan::I2cWriteJob again{camera.Device(), folder_.Path("head.txt"), Recorder(), 0};
    borvan::RunI2cWriteJob(again);
    if (!ReportsDone()) {
      return "  writing the dump failed\n";
    }
    return Differences(before, Within(camera.Written(), space, sensor.first, sensor.last));
  });
}

INSTANTIATE_TEST_SUITE_P(Each, I2cRoundTrip,
                         ::testing::Values(Sensor{"PacketsMode0", true, 0x20, 0, 1, 0, 0xFF},
                                           Sensor{"PacketsMode1", true, 0x30, 1, 3, 0x3000, 0x31FF},
                                           Sensor{"PacketsMode2", true, 0x40, 2, 4, 0xFE00, 0xFEEF},
                                           Sensor{"StepsMode0", false, 0x20, 0, 0, 0, 0xFF},
                                           Sensor{"StepsMode1", false, 0x30, 1, 3, 0x3000, 0x3107},
                                           Sensor{"StepsMode2", false, 0x40, 2, 4, 0, 0x80}),
                         [](const ::testing::TestParamInfo<Sensor>& sensor) {
                           return sensor.param.name;
                         });

}  // namespace
}  // namespace borvan_test
