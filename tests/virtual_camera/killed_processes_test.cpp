// Processes of one device that are killed in the middle of a transfer, or work at once.
#include <chrono>
#include <filesystem>
#include <memory>
#include <random>
#include <sstream>
#include <thread>

#include "child_process.h"
#include "core/state_file.h"
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::RegisterSpace;

#ifdef _WIN32
constexpr int kKills = 20;  // a process starts slowly there
#else
constexpr int kKills = 200;
#endif

// The first fault never strikes. It counts the sets on selector 7, in the same state as the
// registers that they write.
class KilledProcessesTest : public DeviceTest {
 protected:
  KilledProcessesTest() { Configure(""); }

  void Configure(const std::string& more) {
    folder.Write("cameras.json",
                 R"({"cameras": [{"path": "virtual", "flash": {"size": "64K"}, "faults": [)"
                 R"({"selector": 7, "direction": "set", "at": 4000000000, "delay_ms": 1}])" +
                     more + "}]}");
    configuration = virtual_camera::LoadConfiguration(folder.File("cameras.json")).cameras.at(0);
  }
  std::unique_ptr<ChildProcess> Start(const std::string& action) const {
    return std::make_unique<ChildProcess>(action, folder.File("cameras.json"));
  }
  virtual_camera::DeviceState State() const {
    return virtual_camera::LookAtState(configuration.state_file, configuration.plugged);
  }
  std::uint64_t Count() const { return State().fields.fault_counters[0]; }
};

// Registers, counter and reply belong together in every state that a killed process leaves, whoever
// looks; and the next transfer finds it so.
TEST_F(KilledProcessesTest, TransfersAreDoneOrNotDone) {
  std::minstd_rand random(20261122);
  camera();
  std::uint64_t last = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    const auto child = Start("count");
    for (int i = 0; i < 20'000 && Count() == last; ++i) {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    child->Kill();

    const virtual_camera::DeviceState state = State();
    const std::uint64_t count = state.fields.fault_counters[0];
    ASSERT_GT(count, last);
    for (std::uint32_t address = 0x100; address < 0x138; ++address) {
      ASSERT_EQ(state.registers.Find(RegisterSpace::Chip(), address), (count - 1) & 0xFF)
          << "kill " << kill << ", register " << address;
    }
    // A read of the registers through an object that was there all the time; a set, too.
    ASSERT_EQ(Set(7, Padded({0x01, 0x00, 0x00, 0x38, 0, 0, 0x01, 0x00}, 64)), kOk);
    const Bytes reply = Get(7, 64);
    ASSERT_EQ(Bytes(reply.begin() + 8, reply.end()),
              Bytes(56, static_cast<std::uint8_t>(count - 1)));
    // The block that the next child writes must say how many came before it.
    ASSERT_EQ(Set(7, Padded({0x00, 0x00, 0x00, 0x38, 0, 0, 0x01, 0x00}, 64,
                            static_cast<std::uint8_t>(count + 1))),
              kOk);
    last = Count();
    ASSERT_EQ(last, count + 2);
  }
}

TEST_F(KilledProcessesTest, ProcessesAtOnceLoseNoTransfer) {
  const auto first = Start("burst");
  const auto second = Start("burst");
  EXPECT_EQ(first->Wait(), 0);
  EXPECT_EQ(second->Wait(), 0);
  EXPECT_EQ(Count(), 10'000U);
}

TEST_F(KilledProcessesTest, ProcessesAtOnceTraceEveryTransferInALineOfItsOwn) {
  Configure(R"(, "trace": "trace.jsonl")");
  const auto first = Start("burst");
  const auto second = Start("burst");
  EXPECT_EQ(first->Wait(), 0);
  EXPECT_EQ(second->Wait(), 0);
  std::istringstream trace(folder.Read("trace.jsonl"));
  std::size_t lines = 0;
  for (std::string line; std::getline(trace, line); ++lines) {
    ASSERT_TRUE(line.starts_with(R"({"time":"20)") && line.ends_with(R"("result":"0x00000000"})"))
        << line;
  }
  EXPECT_EQ(lines, 10'000U);
}

TEST_F(KilledProcessesTest, OwnerOfTheLockThatIsKilledIsReplaced) {
  camera();
  for (int round = 0; round < 3; ++round) {
    const auto child = Start("own");
    const std::filesystem::path ready = folder.File("cameras.json.ready");
    for (int i = 0; i < 2000 && !std::filesystem::exists(ready); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_TRUE(std::filesystem::exists(ready));
    child->Kill();
    std::filesystem::remove(ready);
    const auto start = std::chrono::steady_clock::now();
    // It had not committed that the camera was unplugged.
    EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  }
}

}  // namespace
}  // namespace virtual_camera_test
