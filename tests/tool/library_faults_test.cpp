// Reading a camera with any single transfer failing: the value is right, or the read fails.
#include <gmock/gmock.h>

#include "library_rig.h"

namespace borvanusb::tool_test {
namespace {

using borvan_test::Fault;
using borvan_test::Transfer;
using testing::HasSubstr;

using Bytes = std::vector<std::uint8_t>;

constexpr std::array kFaults = {Fault::kRefused, Fault::kLies, Fault::kShort, Fault::kWrongTag};

class LibraryFaultsTest : public LibraryTest {
 protected:
  // Injects the fault at the transfer with this number, from 0.
  void StrikeAt(std::size_t number, Fault fault) {
    chip->ForgetTransfers();
    count = 0;
    chip->Strike([this, number, fault](const Transfer&) {
      return count++ == number ? std::optional(fault) : std::nullopt;
    });
  }
  // Injects the fault at every `distance`-th transfer of a selector with these flags.
  void StrikeEvery(std::size_t distance, std::uint32_t selector, std::uint32_t flags, Fault fault) {
    count = 0;
    chip->Strike([this, distance, selector, flags, fault](const Transfer& transfer) {
      return transfer.request.id == selector && transfer.request.flags == flags &&
                     !transfer.is_length_query && ++count % distance == 0
                 ? std::optional(fault)
                 : std::nullopt;
    });
  }
  // Calls `read` for each of its transfers and each fault. Returns the number of successful reads.
  template <typename Read>
  std::size_t StrikeEachOnce(const Read& read) {
    const auto right = read();
    chip->ForgetTransfers();
    read();
    const std::size_t transfers = chip->Transfers().size();
    std::size_t values = 0;
    for (const Fault fault : kFaults) {
      for (std::size_t number = 0; number < transfers; ++number) {
        Scramble();
        StrikeAt(number, fault);
        try {
          EXPECT_EQ(read(), right)
              << "transfer " << number << ", fault " << static_cast<int>(fault);
          ++values;
        } catch (const Failure& failure) {
          EXPECT_EQ(failure.Code(), ExitCode::kDevice) << failure.Message();
        }
        chip->Strike(nullptr);
      }
    }
    EXPECT_EQ(read(), right);
    return values;
  }
  // Makes the chip prepare replies to other requests.
  void Scramble() {
    std::uint32_t value = 0;
    UsbRegisterRead(0x7777, &value, kBorvanRegisterByte);
    UsbFlashRead(0x800, &value);
    UsbI2cRead(0x10, 0x7777, &value, 1, 0);
  }
  void PutFlash(std::size_t size, const std::function<std::uint8_t(std::size_t)>& content) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
      bytes[i] = content(i);
    }
    chip->PutFlash(0, bytes);
  }
  void PutDistinctFlash() {
    PutFlash(0x2000, [](std::size_t i) { return static_cast<std::uint8_t>(1 + i * 7 / 64 + i); });
  }

 public:
  std::atomic<std::size_t> count = 0;
};

TEST_F(LibraryFaultsTest, FlashReadIsRightOrFails) {
  PutDistinctFlash();
  const auto camera = Open();
  for (const std::size_t size : {4U, 64U, 100U, 192U}) {
    const std::size_t values = StrikeEachOnce([&] { return camera->ReadFlash(0x40, size, {}); });
    EXPECT_GT(values, 0U) << size;
  }
}

TEST_F(LibraryFaultsTest, FlashReadAtTheFlashsStartIsRightOrFails) {
  PutDistinctFlash();
  const auto camera = Open();
  StrikeEachOnce([&] { return camera->ReadFlash(0, 128, {}); });
}

TEST_F(LibraryFaultsTest, FlashReadOfRepeatingContentIsRightOrFails) {
  PutFlash(0x1000, [](std::size_t i) { return static_cast<std::uint8_t>(i % 64); });
  const auto camera = Open();
  StrikeEachOnce([&] { return camera->ReadFlash(0x80, 128, {}); });
  PutFlash(0x1000, [](std::size_t) { return std::uint8_t{0}; });
  StrikeEachOnce([&] { return camera->ReadFlash(0x80, 128, {}); });
}

// As observed: the set with the address of the 20th packet is refused.
TEST_F(LibraryFaultsTest, PacketWhoseAddressWasRefusedIsReadAgain) {
  PutDistinctFlash();
  const auto camera = Open();
  const Bytes right = camera->ReadFlash(0, 0x1000, {});
  EXPECT_EQ(right, chip->Flash(0, 0x1000));
  count = 0;
  chip->Strike([this](const Transfer& transfer) {
    return transfer.request.id == 5 && transfer.request.flags == borvan_test::kSetFlags &&
                   ++count == 20
               ? std::optional(Fault::kRefused)
               : std::nullopt;
  });
  EXPECT_EQ(camera->ReadFlash(0, 0x1000, {}), right);
}

TEST_F(LibraryFaultsTest, PeriodicFaultsNeverMakeTwoReadingsWrongAlike) {
  PutDistinctFlash();
  const auto camera = Open();
  for (std::size_t distance = 2; distance <= 40; ++distance) {
    for (const Fault fault : {Fault::kRefused, Fault::kLies}) {
      StrikeEvery(distance, 5, borvan_test::kSetFlags, fault);
      try {
        EXPECT_EQ(camera->ReadFlash(0x40, 0x800, {}), chip->Flash(0x40, 0x800)) << distance;
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::kDevice);
        EXPECT_LT(distance, 20U) << "rare faults don't keep the flash from being read";
      }
    }
  }
}

TEST_F(LibraryFaultsTest, FlashThatReadsDifferentlyEachTimeIsAFailure) {
  PutDistinctFlash();
  const auto camera = Open();
  chip->Intercept([&](const Transfer& transfer) -> std::optional<borvan::Result> {
    if (transfer.request.id == 5 && transfer.request.flags == borvan_test::kSetFlags) {
      chip->PutFlash(0x110, {static_cast<std::uint8_t>(++count)});
    }
    return std::nullopt;
  });
  const Failure failure = FailureOf([&] { camera->ReadFlash(0x40, 0x800, {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(),
              HasSubstr("reading flash 0x100-0x13f: the flash reads differently each time"));
}

TEST_F(LibraryFaultsTest, FlashReadTakesTwiceTheTransfersOfOneReading) {
  PutDistinctFlash();
  const auto camera = Open();
  camera->ReadFlash(0x40, 0x1000, {});
  EXPECT_LE(chip->Sent(5).size(), 2 * 64U + 2U);
}

TEST_F(LibraryFaultsTest, DisagreementsAreCounted) {
  PutDistinctFlash();
  const auto camera = Open();
  camera->ReadFlash(0x40, 0x800, {});
  camera->ReadRegister(0x40, RegisterWidth::kByte);
  EXPECT_EQ(camera->Disagreements(), 0U);
  count = 0;
  chip->Strike([this](const Transfer& transfer) {
    return transfer.request.id == 5 && ++count == 20 ? std::optional(Fault::kLies) : std::nullopt;
  });
  camera->ReadFlash(0x40, 0x800, {});
  EXPECT_EQ(camera->Disagreements(), 1U);
}

TEST_F(LibraryFaultsTest, FlashWordIsRightOrFails) {
  PutDistinctFlash();
  const auto camera = Open();
  const std::size_t values = StrikeEachOnce([&] { return camera->PeekFlashWord(0x123); });
  EXPECT_GT(values, 0U);
}

TEST_F(LibraryFaultsTest, RegisterReadIsRightOrFails) {
  const auto camera = Open();
  chip->PutRegister(0x12345678, 0xA1B2C3D4);
  chip->PutRegister(0x12347777, 0x5A);  // read if the low half of the address is refused
  chip->PutRegister(0x00005678, 0x5B);  // and the high half
  EXPECT_GT(StrikeEachOnce([&] { return camera->ReadRegister(0x12345678, RegisterWidth::kByte); }),
            0U);
  EXPECT_GT(StrikeEachOnce([&] { return camera->ReadRegister(0x12345678, RegisterWidth::kWide); }),
            0U);
}

TEST_F(LibraryFaultsTest, RegisterThatChangesByItselfIsReturnedAsLastRead) {
  const auto camera = Open();
  chip->Intercept([&](const Transfer& transfer) -> std::optional<borvan::Result> {
    if (transfer.request.id == 1 && transfer.request.flags == borvan_test::kSetFlags &&
        transfer.bytes.at(3) == 0x58) {
      chip->PutRegister(0x40, static_cast<std::uint32_t>(++count));
    }
    return std::nullopt;
  });
  EXPECT_EQ(camera->ReadRegister(0x40, RegisterWidth::kByte), 5U);
}

TEST_F(LibraryFaultsTest, I2cReadIsRightOrFails) {
  const auto camera = Open();
  chip->PutI2cRegister(0x10, 1, 0x7777, 0x99);
  for (const std::int32_t mode : {1, 2, 5}) {
    chip->PutI2cRegister(0x6C, static_cast<std::uint8_t>(mode), 0x300A, 0x12345678);
    EXPECT_GT(StrikeEachOnce([&] { return camera->ReadI2c({0x6C, mode, 0}, 0x300A); }), 0U);
  }
}

class RunFaultsTest : public LibraryFaultsTest {
 protected:
  RunFaultsTest() {
    for (std::uint32_t i = 0; i < 0x200; ++i) {
      chip->PutRegister(0x120000 + i, 1 + i % 255);
    }
  }
  static Bytes Values(std::uint32_t first, std::size_t size) {
    Bytes values(size);
    for (std::size_t i = 0; i < size; ++i) {
      values[i] = static_cast<std::uint8_t>(1 + (first + i) % 255);
    }
    return values;
  }
};

TEST_F(RunFaultsTest, RunIsRightOrFails) {
  const auto camera = Open();
  for (const std::uint32_t size : {20U, 56U, 57U, 180U}) {
    EXPECT_EQ(camera->ReadRegisterRun(0x120010, 0x120010 + size - 1), Values(0x10, size));
    EXPECT_GT(
        StrikeEachOnce([&] { return camera->ReadRegisterRun(0x120010, 0x120010 + size - 1); }), 0U);
  }
}

TEST_F(RunFaultsTest, PeriodicFaultsNeverMakeTwoReadingsWrongAlike) {
  const auto camera = Open();
  for (std::size_t distance = 2; distance <= 30; ++distance) {
    for (const std::uint32_t flags : {borvan_test::kSetFlags, borvan_test::kGetFlags}) {
      StrikeEvery(distance, 7, flags, Fault::kRefused);
      try {
        EXPECT_EQ(camera->ReadRegisterRun(0x120000, 0x1201FF), Values(0, 0x200)) << distance;
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::kDevice);
      }
    }
  }
}

// The first and the last of three blocks are equal: a block that differs is read between them, so
// that no register has to be read alone.
TEST_F(RunFaultsTest, EqualI2cBlocksAreReadAsBlocks) {
  constexpr std::uint32_t kBlock = 56;
  chip->PutRegister(0x1A3, 0x20);
  std::vector<std::uint32_t> expected;
  for (std::uint32_t i = 0; i < 3 * kBlock; ++i) {
    expected.push_back(i / kBlock == 1 ? 0x80 + i % kBlock : i % kBlock);
    chip->PutI2cRegister(0x6C, 1, 0x100 + i, expected.back());
  }
  const auto camera = Open();
  chip->ForgetTransfers();
  EXPECT_EQ(camera->ReadI2cRun({0x6C, 1, 0}, 0x100, 0x100 + 3 * kBlock - 1), expected);
  EXPECT_TRUE(chip->Sent(2).empty());
}

TEST_F(RunFaultsTest, RegistersThatChangeByThemselvesDoNotFailTheRun) {
  const auto camera = Open();
  chip->Intercept([&](const Transfer& transfer) -> std::optional<borvan::Result> {
    if (transfer.request.flags == borvan_test::kSetFlags) {
      chip->PutRegister(0x120050, static_cast<std::uint32_t>(++count % 256));
    }
    return std::nullopt;
  });
  const Bytes values = camera->ReadRegisterRun(0x120000, 0x1201FF);
  Bytes expected = Values(0, 0x200);
  expected[0x50] = values.at(0x50);
  EXPECT_EQ(values, expected);
}

}  // namespace
}  // namespace borvanusb::tool_test
