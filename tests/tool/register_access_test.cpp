// Reading and writing registers of several accesses: which accesses are made, and in which order.
#include "names/register_access.h"

#include <gtest/gtest.h>

#include "names/register_words.h"
#include "names_support.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class RegisterAccessTest : public testing::Test {
 protected:
  std::vector<RegisterAccess> Accesses(const RegisterNames& names,
                                       const std::vector<std::string>& words) {
    return AccessesOf(TargetsOf(words, &names, {}));
  }
  std::unique_ptr<Camera> Open() { return desk_.host.OpenCamera(desk_.Chip().identity); }
  // Also shows the order of I2C writes.
  static std::string Pieces(std::span<const RegisterAccess> accesses) {
    std::string text;
    for (const ReadPiece& piece : PlanReads(accesses)) {
      text += (piece.of.on_i2c ? "i2c " : "chip ") + Text(piece.range) +
              (piece.alone ? " alone; " : "; ");
    }
    return text;
  }

  CommandDesk desk_;
};

TEST_F(RegisterAccessTest, NeighboursAreReadInOnePiece) {
  const RegisterNames names(TestProfile());
  // EVENTS at 0x103 changes when it is read; SERIAL has four bytes from 0x108.
  EXPECT_EQ(Pieces(Accesses(names, {"CHIP.CTRL2", "CHIP.CTRL", "FLAGS", "EVENTS", "SERIAL",
                                    "SENSOR.CTRL", "EXPOSURE"})),
            "chip 0x100-0x102; chip 0x108-0x10b; i2c 0x3500-0x3503; chip 0x103 alone; ");
  // The same register, given twice and by one of its fields, is read once.
  EXPECT_EQ(Pieces(Accesses(names, {"CHIP.CTRL", "CHIP.CTRL.MODE", "0x100"})), "chip 0x100; ");
}

TEST_F(RegisterAccessTest, PagesAreReadApart) {
  EXPECT_EQ(Pieces(AccessesOf(TargetsOf({"0xfffe-0x10001"}, nullptr, {}))),
            "chip 0xfffe-0xffff; chip 0x10000-0x10001; ");
}

TEST_F(RegisterAccessTest, HighByteFirst) {
  const RegisterNames names(TestProfile());
  desk_.Chip().sensors[0x6C] = {{0x3500, 0x01}, {0x3501, 0x23}, {0x3502, 0x45}};
  const auto camera = Open();
  EXPECT_EQ(ReadAll(Accesses(names, {"EXPOSURE"}), *camera, desk_.context).values,
            (std::vector<std::uint64_t>{0x012345}));
  EXPECT_EQ(ReadOne(Accesses(names, {"EXPOSURE"})[0], *camera), 0x012345U);
  WriteOne(Accesses(names, {"EXPOSURE"})[0], 0xABCDEF, *camera);
  EXPECT_EQ(desk_.Chip().sensors[0x6C][0x3500], 0xABU);
  EXPECT_EQ(desk_.Chip().sensors[0x6C][0x3501], 0xCDU);
  EXPECT_EQ(desk_.Chip().sensors[0x6C][0x3502], 0xEFU);
}

TEST_F(RegisterAccessTest, LowByteFirst) {
  const RegisterNames names(TestProfile("\"byte-order\": \"low-first\""));
  desk_.Chip().sensors[0x6C] = {{0x3500, 0x01}, {0x3501, 0x23}, {0x3502, 0x45}};
  desk_.Chip().registers = {{0x108, 0x78}, {0x109, 0x56}, {0x10A, 0x34}, {0x10B, 0x12}};
  const auto camera = Open();
  // The chip's wide registers are low byte first by default.
  EXPECT_EQ(ReadAll(Accesses(names, {"EXPOSURE", "SERIAL"}), *camera, desk_.context).values,
            (std::vector<std::uint64_t>{0x452301, 0x12345678}));
}

TEST_F(RegisterAccessTest, OrderOfTimeAndLatches) {
  const RegisterNames names(TestProfile(
      R"("access-order": "downwards", "before-write": [{"address": "0x3208", "value": 0}],
         "after-write": [{"address": "0x3208", "value": "0xa0"}],
         "before-read": [{"address": "0x3209", "value": 1}])"));
  std::string order;
  // A camera that records the order of requests.
  class Recorder : public Camera {
   public:
    Recorder(Camera& camera, std::string& order) : camera_(camera), order_(order) {}
    const CameraIdentity& Identity() const override { return camera_.Identity(); }
    std::uint32_t ReadRegister(std::uint32_t, RegisterWidth) override { return 0; }
    std::uint32_t SampleRegister(std::uint32_t, RegisterWidth) override { return 0; }
    void WriteRegister(std::uint32_t, std::uint32_t, RegisterWidth) override {}
    std::vector<std::uint8_t> ReadRegisterRun(std::uint32_t, std::uint32_t) override { return {}; }
    void WriteRegisterList(const std::string&) override {}
    std::uint32_t ReadI2c(const I2cTarget&, std::uint32_t address) override {
      order_ += "r" + Hex(address) + " ";
      return address & 0xFFU;
    }
    std::uint32_t SampleI2c(const I2cTarget& target, std::uint32_t address) override {
      return ReadI2c(target, address);
    }
    std::vector<std::uint32_t> ReadI2cRun(const I2cTarget&, std::uint32_t, std::uint32_t) override {
      return {};
    }
    void WriteI2c(const I2cTarget&, std::uint32_t address, std::uint32_t value) override {
      order_ += "w" + Hex(address) + "=" + Hex(value) + " ";
    }
    void WriteI2cList(const std::string&, std::uint32_t) override {}
    std::vector<std::uint8_t> ReadFlash(std::uint32_t, std::uint64_t, const Advance&) override {
      return {};
    }
    std::uint32_t PeekFlashWord(std::uint32_t) override { return 0; }
    void ProgramFlash(std::uint32_t, std::span<const std::uint8_t>, const Advance&) override {}
    void WriteFlashWord(std::uint32_t, std::uint32_t) override {}
    void EraseSector(std::uint32_t) override {}

   private:
    Camera& camera_;
    std::string& order_;
  };
  const auto camera = Open();
  Recorder recorder(*camera, order);
  const auto exposure = Accesses(names, {"EXPOSURE"});
  WriteOne(exposure[0], 0x112233, recorder);
  EXPECT_EQ(order, "w0x3208=0x0 w0x3502=0x33 w0x3501=0x22 w0x3500=0x11 w0x3208=0xa0 ");
  order.clear();
  EXPECT_EQ(ReadAll(exposure, recorder, desk_.context).values,
            (std::vector<std::uint64_t>{0x000102}));
  EXPECT_EQ(order, "w0x3209=0x1 r0x3502 r0x3501 r0x3500 ");
}

TEST_F(RegisterAccessTest, NamesCostNoMoreTransfersThanNumbers) {
  // A thousand adjacent addresses, four for each named register.
  std::vector<RegisterAccess> named;
  for (std::uint32_t address = 0x1000; address < 0x1000 + 1000; address += 4) {
    RegisterAccess access = ChipAccess(address, false);
    access.accesses = 4;
    named.push_back(access);
  }
  EXPECT_EQ(Pieces(named), "chip 0x1000-0x13e7; ");
  const auto camera = Open();
  desk_.Chip().transfers = 0;
  ReadAll(named, *camera, desk_.context);
  EXPECT_EQ(desk_.Chip().transfers, 1U);
}

}  // namespace
}  // namespace borvanusb::tool_test
