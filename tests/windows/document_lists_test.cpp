// The examples of docs/list-files.md end as it says, on both sorts of chip.

#include "../header/list_document.h"
#include "demo_cameras.h"

namespace {

using test::ListExample;

class DocumentLists : public test::DemoCameras {
 protected:
  void ExpectEnd(const ListExample& example, std::int32_t camera) {
    SCOPED_TRACE(example.remark + " on camera " + std::to_string(camera));
    Select(camera);
    const std::string file =
        MakeFile("list.txt", test::Bytes(example.content.begin(), example.content.end()));
    // A list of chip registers is read before the call returns, an I2C list by the job.
    const bool starts = example.is_i2c || !example.refused;
    EXPECT_EQ(
        example.is_i2c ? UsbI2CWriteFile(file.c_str(), 0) : UsbRegisterWriteFile(file.c_str()),
        starts);
    EXPECT_TRUE(test::ProgressBecomes(example.status == 100 ? test::kDone
                                                            : std::uint64_t{example.status} << 32));
  }
};

TEST_F(DocumentLists, EachExampleEndsAsItSays) {
  const auto examples = test::ExamplesOf(std::string(BORVAN_SOURCE_FOLDER) + "docs/list-files.md");
  ASSERT_GE(examples.size(), 12U);
  for (const ListExample& example : examples) {
    ExpectEnd(example, kInPackets);
    ExpectEnd(example, kRegisterByRegister);
  }
}

TEST_F(DocumentLists, ADumpOfASensorFailsWithoutItsMarkersInFront) {
  Select(kInPackets);
  const std::string dump = File("dump.txt");
  ASSERT_TRUE(UsbI2CReadFile(0x300A, 0x300B, dump.c_str(), 0x6C, kBorvanI2cAddress16Data8));
  ASSERT_TRUE(test::ProgressBecomes(test::kDone));
  test::Bytes lines = FinishedFile(dump);
  const std::string expected = "0x300a,0x56,\r\n0x300b,0x40,\r\n";
  ASSERT_EQ(std::string(lines.begin(), lines.end()), expected);

  Select(kInPackets);
  ASSERT_TRUE(UsbI2CWriteFile(dump.c_str(), 0));
  EXPECT_TRUE(test::ProgressBecomes(test::Failure(kBorvanSlaveAndWidthMissing)));

  const std::string markers = "0xfff8,0x6c,\r\n0xfffe,0x03,\r\n";
  lines.insert(lines.begin(), markers.begin(), markers.end());
  Select(kInPackets);
  ASSERT_TRUE(UsbI2cWrite(0x6C, 0x300A, 0x11, kBorvanI2cAddress16Data8, 0));
  ASSERT_TRUE(UsbI2cWrite(0x6C, 0x300B, 0x22, kBorvanI2cAddress16Data8, 0));
  ASSERT_TRUE(UsbI2CWriteFile(MakeFile("list.txt", lines).c_str(), 0));
  ASSERT_TRUE(test::ProgressBecomes(test::kDone));
  std::uint32_t value = 0;
  EXPECT_TRUE(UsbI2cRead(0x6C, 0x300A, &value, kBorvanI2cAddress16Data8, 0));
  EXPECT_EQ(value, 0x56U);
  EXPECT_TRUE(UsbI2cRead(0x6C, 0x300B, &value, kBorvanI2cAddress16Data8, 0));
  EXPECT_EQ(value, 0x40U);
}

TEST_F(DocumentLists, ADumpOf16BitValuesHoldsTheirLowHalves) {
  for (const std::int32_t camera : {kInPackets, kRegisterByRegister}) {
    Select(camera);
    const std::string dump = File("dump" + std::to_string(camera) + ".txt");
    // Register 0 of the sensor holds 0x2604.
    ASSERT_TRUE(UsbI2CReadFile(0, 0, dump.c_str(), 0x20, kBorvanI2cAddress16Data16));
    ASSERT_TRUE(test::ProgressBecomes(test::kDone));
    const test::Bytes lines = FinishedFile(dump);
    EXPECT_EQ(std::string(lines.begin(), lines.end()), "0x0000,0x0004,\r\n") << camera;
  }
}

TEST_F(DocumentLists, ADumpOfChipRegistersLoadsAsItIs) {
  Select(kInPackets);
  ASSERT_TRUE(UsbRegisterWrite(0x8000, 0x11, kBorvanRegisterByte));
  ASSERT_TRUE(UsbRegisterWrite(0x8001, 0x22, kBorvanRegisterByte));
  const std::string dump = File("dump.txt");
  ASSERT_TRUE(UsbRegisterReadFile(dump.c_str(), 0x8000, 0x8001));
  ASSERT_TRUE(test::ProgressBecomes(test::kDone));
  const test::Bytes lines = FinishedFile(dump);
  ASSERT_EQ(std::string(lines.begin(), lines.end()),
            "0xfffd, 0x00,\r\n0xfffe, 0x00,\r\n0x8000, 0x11,\r\n0x8001, 0x22,\r\n");

  Select(kRegisterByRegister);
  ASSERT_TRUE(UsbRegisterWriteFile(dump.c_str()));
  ASSERT_TRUE(test::ProgressBecomes(test::kDone));
  std::uint32_t value = 0;
  EXPECT_TRUE(UsbRegisterRead(0x8000, &value, kBorvanRegisterByte));
  EXPECT_EQ(value, 0x11U);
  EXPECT_TRUE(UsbRegisterRead(0x8001, &value, kBorvanRegisterByte));
  EXPECT_EQ(value, 0x22U);
}

}  // namespace
