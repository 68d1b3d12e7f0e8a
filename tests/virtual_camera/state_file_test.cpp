// The state file: torn writes, long logs, foreign files.
#include "core/state_file.h"

#include <algorithm>
#include <fstream>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::RegisterSpace;
using virtual_camera::StateFile;
using virtual_camera::StateLock;

TEST(RegisterStoreTest, ChangesAreThoseSinceTheLastSave) {
  virtual_camera::RegisterStore store;
  const RegisterSpace space{0};
  store.Write(space, 0x100, 1);
  store.Clear();
  EXPECT_TRUE(store.Cleared());
  EXPECT_TRUE(store.Written().empty());
  store.Write(space, 0x101, 2);
  store.Write(space, 0x101, 2);
  EXPECT_EQ(store.Written().size(), 1U);
  store.ForgetChanges();
  EXPECT_FALSE(store.Cleared());
  EXPECT_TRUE(store.Written().empty());
  EXPECT_EQ(store.Find(space, 0x101), 2U);
}

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

// A process that is killed while it writes a head has set the slot's number to 0 before.
TEST_F(StateFileTest, HeadThatWasBeingWrittenDoesNotCount) {
  Write(1, 10);
  Write(1, 11);
  std::string bytes = folder.Read("state");
  const std::size_t newer = bytes.at(8) > bytes.at(2048 + 8) ? 0 : 2048;
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(newer) + 8, 100, '\0');
  folder.Write("state", bytes);
  EXPECT_EQ(Find(1), 10U);
  Write(1, 12);
  EXPECT_EQ(Find(1), 12U);
}

TEST_F(StateFileTest, FileThatLostItsRegistersIsRefused) {
  Write(1, 10);
  Write(2, 11);
  const std::string cut = folder.Read("state").substr(0, 4096 + 5);
  folder.Write("state", cut);
  EXPECT_THROW(StateFile(File(), true), virtual_camera::ConfigurationError);
  EXPECT_THROW(virtual_camera::LookAtState(File(), true), virtual_camera::ConfigurationError);
  EXPECT_EQ(folder.Read("state"), cut);
}

// Registers in more memory than was mapped when the other object opened the file.
TEST_F(StateFileTest, LogThatGrewIsSeenByWhoHadTheFileOpen) {
  StateFile reader(File(), true);
  StateFile writer(File(), true);
  {
    const StateLock lock(writer);
    for (std::uint32_t address = 0; address < 50'000; ++address) {
      writer.State().registers.Write(RegisterSpace::Chip(), address, ~address);
    }
    writer.Commit();
  }
  {
    const StateLock lock(reader);
    EXPECT_EQ(reader.State().registers.Find(RegisterSpace::Chip(), 49'999), ~49'999U);
    reader.State().registers.Write(RegisterSpace::Chip(), 50'000, 1);
    reader.Commit();
  }
  const StateLock lock(writer);
  EXPECT_EQ(writer.State().registers.Find(RegisterSpace::Chip(), 50'000), 1U);
  EXPECT_EQ(writer.State().registers.Values().size(), 50'001U);
}

// A file of version 0.1.0: register 0x42 has 0x5A, and selector 1 answers 24 5A 00 28 next.
std::string OldFile() {
  std::string bytes(4096, '\0');
  const auto put = [&bytes](std::size_t position, const std::string& part) {
    bytes.replace(position, part.size(), part);
  };
  for (const std::size_t slot : {0U, 2048U}) {
    put(slot, "vcstate1");
    put(slot + 0x10, std::string("\x01", 1));
    put(slot + 0x19, std::string("\x10", 1));
    put(slot + 0x20, std::string("\x01", 1));
    put(slot + 0x28, std::string("\x01", 1));
    put(slot + 0x247, std::string("\x42", 1));
  }
  put(0x08, "\x04");
  put(0x4E8, "\x61\x5b\x48\x44\x43\x61\xa1\x27");
  put(0x808, "\x05");
  put(0xA55, std::string("\x24\x5a\x00\x28", 4));
  put(0xCE8, "\xaa\x04\x42\xce\x75\x6f\xba\xe0");
  return bytes + std::string("\x42\0\0\0\0\0\0\0\x5a\0\0\0", 12);
}

TEST_F(StateFileTest, FileOfTheVersionBeforeIsLookedAtAsItIs) {
  folder.Write("state", OldFile());
  const virtual_camera::DeviceState state = virtual_camera::LookAtState(File(), true);
  EXPECT_EQ(state.registers.Find(RegisterSpace::Chip(), 0x42), 0x5AU);
  EXPECT_EQ(state.fields.replies[0].bytes[1], 0x5A);
  EXPECT_EQ(folder.Read("state"), OldFile());
}

TEST_F(StateFileTest, FileOfTheVersionBeforeIsConvertedWhenItIsUsed) {
  folder.Write("state", OldFile());
  {
    StateFile file(File(), true);
    const StateLock lock(file);
    EXPECT_EQ(file.State().registers.Find(RegisterSpace::Chip(), 0x42), 0x5AU);
    EXPECT_EQ(file.State().fields.replies[0].bytes[3], 0x28);
  }
  // That version finds no head of its own any more.
  const std::string bytes = folder.Read("state");
  EXPECT_EQ(bytes.substr(0, 8), "vcstate2");
  EXPECT_EQ(bytes.substr(2048, 8), "vcstate2");
  EXPECT_EQ(Find(0x42), 0x5AU);
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
