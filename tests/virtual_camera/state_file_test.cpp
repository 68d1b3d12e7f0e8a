// The state file: torn writes, long logs, foreign files.
#include "core/state_file.h"

#include <fstream>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::RegisterSpace;
using virtual_camera::StateFile;
using virtual_camera::StateLock;

class StateFileTest : public testing::Test {
 protected:
  std::string File() const { return folder.File("state"); }
  void Write(std::uint32_t address, std::uint32_t value) {
    StateFile file(File(), true);
    const StateLock lock(file);
    file.State().registers.Write(RegisterSpace::Chip(), address, value);
    file.Commit();
  }
  std::optional<std::uint32_t> Find(std::uint32_t address) {
    StateFile file(File(), true);
    const StateLock lock(file);
    return file.State().registers.Find(RegisterSpace::Chip(), address);
  }

  ScratchFolder folder;
};

TEST_F(StateFileTest, ChangesWithoutCommitAreDropped) {
  StateFile file(File(), true);
  {
    const StateLock lock(file);
    file.State().registers.Write(RegisterSpace::Chip(), 1, 2);
    file.State().fields.plugged = false;
  }
  const StateLock lock(file);
  EXPECT_FALSE(file.State().registers.Find(RegisterSpace::Chip(), 1).has_value());
  EXPECT_TRUE(file.State().fields.plugged);
}

TEST_F(StateFileTest, TornHeadFallsBackToTheOneBefore) {
  Write(1, 10);
  Write(1, 11);
  std::string bytes = folder.Read("state");
  // The newer of the two heads, by their sequence numbers at byte 8 of each.
  const std::size_t newer = bytes.at(8) > bytes.at(2048 + 8) ? 0 : 2048;
  bytes.at(newer + 100) = static_cast<char>(bytes.at(newer + 100) + 1);
  folder.Write("state", bytes);
  EXPECT_EQ(Find(1), 10U);
  Write(1, 12);
  EXPECT_EQ(Find(1), 12U);
}

TEST_F(StateFileTest, TornHeadAfterPowerLossFallsBackToTheRegistersBefore) {
  Write(1, 10);
  {
    StateFile file(File(), true);
    const StateLock lock(file);
    file.State().LosePower();
    file.State().registers.Write(RegisterSpace::Chip(), 2, 20);
    file.Commit();
  }
  EXPECT_FALSE(Find(1).has_value());
  EXPECT_EQ(Find(2), 20U);
  std::string bytes = folder.Read("state");
  const std::size_t newer = bytes.at(8) > bytes.at(2048 + 8) ? 0 : 2048;
  bytes.at(newer) = 'x';
  folder.Write("state", bytes);
  EXPECT_EQ(Find(1), 10U);
  EXPECT_FALSE(Find(2).has_value());
}

TEST_F(StateFileTest, LogStaysShortHoweverOftenRegistersChange) {
  StateFile writer(File(), true);
  StateFile reader(File(), true);
  for (std::uint32_t round = 1; round <= 2000; ++round) {
    const StateLock lock(writer);
    for (std::uint32_t address = 0; address < 20; ++address) {
      writer.State().registers.Write(RegisterSpace::Chip(), address, round);
    }
    writer.Commit();
  }
  {
    const StateLock lock(reader);
    for (std::uint32_t address = 0; address < 20; ++address) {
      EXPECT_EQ(reader.State().registers.Find(RegisterSpace::Chip(), address), 2000U);
    }
  }
  EXPECT_LT(folder.Read("state").size(), 200U * 1024);
}

TEST_F(StateFileTest, SlaveAndChipRegistersAreApart) {
  StateFile file(File(), true);
  const StateLock lock(file);
  file.State().registers.Write(RegisterSpace::Slave(0), 1, 2);
  EXPECT_FALSE(file.State().registers.Find(RegisterSpace::Chip(), 1).has_value());
  EXPECT_EQ(file.State().registers.Find(RegisterSpace::Slave(0), 1), 2U);
}

TEST_F(StateFileTest, ForeignFileIsRefusedAndKept) {
  folder.Write("state", "my precious text");
  EXPECT_THROW(StateFile(File(), true), virtual_camera::ConfigurationError);
  EXPECT_EQ(folder.Read("state"), "my precious text");
  folder.Write("state", std::string(10000, 'x'));
  EXPECT_THROW(StateFile(File(), true), virtual_camera::ConfigurationError);
}

TEST_F(StateFileTest, HalfMadeFileIsMadeAnew) {
  Write(1, 10);
  folder.Write("state", folder.Read("state").substr(0, 700));
  EXPECT_FALSE(Find(1).has_value());
}

}  // namespace
}  // namespace virtual_camera_test
