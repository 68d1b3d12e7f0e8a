// One device, served by several objects and processes.
#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>

#include "child_process.h"
#include "core/state_file.h"
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::ElementsAre;
using virtual_camera::Camera;

class SharedStateTest : public DeviceTest {
 protected:
  SharedStateTest() {
    folder.Write("cameras.json", R"({"cameras": [{"path": "virtual", "flash": {"size": "64K"}}]})");
    configuration = virtual_camera::LoadConfiguration(folder.File("cameras.json")).cameras.at(0);
  }

  // Until the child that was started last is in the midst of its work.
  void AwaitHammer() const {
    const std::filesystem::path ready = folder.File("cameras.json.ready");
    for (int i = 0; i < 2000 && !std::filesystem::exists(ready); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_TRUE(std::filesystem::exists(ready));
    // Wine may still have it open for the child.
    for (int i = 0; i < 2000 && std::filesystem::exists(ready); ++i) {
      std::error_code ignored;
      std::filesystem::remove(ready, ignored);
    }
  }
};

TEST_F(SharedStateTest, ObjectsSeeEachOthersRegistersFlashAndReplies) {
  Camera other(configuration);
  for (const Bytes& step : {Bytes{0x28, 0x10, 0x00, 0x08}, Bytes{0x28, 0x00, 0x00, 0x38},
                            Bytes{0x28, 0x77, 0x00, 0x48}, Bytes{0x24, 0x10, 0x00, 0x18}}) {
    EXPECT_EQ(other.Set(1, step).result, kOk);
  }
  // The last step and the get come through another object: it is one device.
  EXPECT_EQ(Set(1, {0x24, 0x00, 0x00, 0x58}), kOk);
  EXPECT_THAT(Get(1, 4), ElementsAre(0x24, 0x77, 0x00, 0x28));
  EXPECT_EQ(Set(3, {0x38, 0, 0, 0, 0, 1, 2, 3, 4, 0, 0}), kOk);
  EXPECT_EQ(other.Set(3, Bytes{0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}).result, kOk);
  EXPECT_THAT(Get(3, 11), ElementsAre(0x34, 0, 0, 0, 0, 1, 2, 3, 4, 0, 0));
}

TEST_F(SharedStateTest, RegistersOutliveTheCameraObject) {
  Set(7, Padded({0x00, 0x00, 0x00, 0x01, 0, 0, 0x01, 0x00, 0x99}, 64));
  CloseCamera();
  Set(7, Padded({0x01, 0x00, 0x00, 0x38, 0, 0, 0x01, 0x00}, 64));
  EXPECT_EQ(Get(7, 64).at(8), 0x99);
}

TEST_F(SharedStateTest, ReplyOfAnotherProcessCanBeFetched) {
  camera();
  ChildProcess child("write", folder.File("cameras.json"));
  ASSERT_EQ(child.Wait(), 0);
  EXPECT_THAT(Get(1, 4), ElementsAre(0x24, 0x5A, 0x00, 0x28));
}

TEST_F(SharedStateTest, KilledProcessLeavesWholeTransfersAndNoLock) {
  camera();
  for (int round = 0; round < 5; ++round) {
    ChildProcess child("hammer", folder.File("cameras.json"));
    AwaitHammer();
    child.Kill();
    ASSERT_EQ(Set(7, Padded({0x01, 0x00, 0x00, 0x38, 0, 0, 0x01, 0x00}, 64)), kOk);
    const Bytes reply = Get(7, 64);
    EXPECT_EQ(Bytes(reply.begin() + 8, reply.end()), Bytes(56, reply[8]));
    EXPECT_EQ(Set(7, Padded({0x00, 0x00, 0x00, 0x01, 0, 0, 0x02, 0x00, 0x31}, 64)), kOk);
  }
}

// The system writes page by page: a process that is killed may leave a part of its line.
TEST_F(SharedStateTest, KilledProcessesSpoilNoLineOfOthers) {
  folder.Write("cameras.json", R"({"cameras": [{"path": "virtual", "trace": "trace.jsonl"}]})");
  configuration = virtual_camera::LoadConfiguration(folder.File("cameras.json")).cameras.at(0);
  for (int round = 0; round < 3; ++round) {
    ChildProcess first("hammer", folder.File("cameras.json"));
    AwaitHammer();
    ChildProcess second("hammer", folder.File("cameras.json"));
    AwaitHammer();
    first.Kill();
    second.Kill();
    camera().QueryLength(1);
    CloseCamera();
  }
  const std::string begin = R"({"time":")";
  std::istringstream trace(folder.Read("trace.jsonl"));
  std::size_t queries = 0;
  std::size_t parts = 0;
  for (std::string line; std::getline(trace, line);) {
    EXPECT_TRUE(line.rfind(begin) == 0 || begin.starts_with(line)) << line;
    parts += line.ends_with("\"}") ? 0U : 1U;
    queries += line.find(R"("direction":"length")") != std::string::npos ? 1U : 0U;
  }
  EXPECT_EQ(queries, 3U);
  EXPECT_LE(parts, 6U);  // of each killed process one
}

TEST_F(SharedStateTest, WhoeverLooksSeesWholeTransfers) {
  camera();
  ChildProcess child("hammer", folder.File("cameras.json"));
  AwaitHammer();
  for (int i = 0; i < 200; ++i) {
    const virtual_camera::DeviceState state =
        virtual_camera::LookAtState(configuration.state_file, configuration.plugged);
    const auto first = state.registers.Find(virtual_camera::RegisterSpace::Chip(), 0x100);
    ASSERT_TRUE(first.has_value());
    for (std::uint32_t address = 0x101; address < 0x138; ++address) {
      ASSERT_EQ(state.registers.Find(virtual_camera::RegisterSpace::Chip(), address), first);
    }
  }
}

TEST_F(SharedStateTest, ThreadsOnOneObjectTakeTurns) {
  camera();
  const auto write = [this](std::uint8_t page) {
    for (std::uint8_t i = 0; i < 100; ++i) {
      EXPECT_EQ(Set(7, Padded({0x00, 0x00, 0x00, 0x01, 0, 0, page, i, page}, 64)), kOk);
    }
  };
  std::thread first(write, std::uint8_t{1});
  std::thread second(write, std::uint8_t{2});
  first.join();
  second.join();
  for (const std::uint8_t page : Bytes{1, 2}) {
    Set(7, Padded({0x01, 0x00, 0x00, 0x38, 0, 0, page, 0x2C}, 64));
    const Bytes reply = Get(7, 64);
    EXPECT_EQ(Bytes(reply.begin() + 8, reply.end()), Bytes(56, page));
  }
}

// A host programs images packet by packet: the state must not make that slow.
TEST_F(SharedStateTest, MebibyteOfPacketsTakesSeconds) {
  configuration.flash.size = 1024 * 1024;
  const auto start = std::chrono::steady_clock::now();
  Bytes packet(64, 0x5A);
  for (std::uint32_t address = 0; address < configuration.flash.size; address += 60) {
    packet[0] = 0;
    packet[1] = static_cast<std::uint8_t>(address >> 16);
    packet[2] = static_cast<std::uint8_t>(address >> 8);
    packet[3] = static_cast<std::uint8_t>(address);
    ASSERT_EQ(Set(4, packet), kOk);
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  RecordProperty("seconds", std::to_string(seconds));
  EXPECT_EQ(folder.Read("cameras.camera0.flash"), std::string(1024 * 1024, '\x5A'));
  EXPECT_LT(seconds, 30.0);
}

}  // namespace
}  // namespace virtual_camera_test
