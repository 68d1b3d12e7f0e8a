// The owner of a scratch file.
#include "dll/scratch_names.h"

#include <gtest/gtest.h>

namespace borvanusb::tool_test {
namespace {

TEST(ScratchNamesTest, NameTellsItsProcess) {
  EXPECT_EQ(ScratchName(1234, 5678, 9, "bin"), "borvanusb-1234-5678-9.bin");
  EXPECT_EQ(ScratchOwner("borvanusb-1234-5678-9.bin"), 1234U);
  EXPECT_EQ(ScratchOwner("borvanusb-4294967295-18446744073709551615-1.txt"), 4294967295U);
  EXPECT_EQ(ScratchOwner("borvanusb-1234-5678-9.bin.part123456"), 1234U);
}

TEST(ScratchNamesTest, OtherFilesHaveNoOwner) {
  for (const char* const name : {
           "",
           "borvanusb-",
           "borvanusb-1234.try",
           "borvanusb-1234-5678.bin",
           "borvanusb-1234-5678-9.json",
           "borvanusb-1234-5678-9.bin.bak",
           "borvanusb-1234-5678-9.bin.part",
           "borvanusb-1234-5678-9.bin.part12x",
           "borvanusb-1234-5678-9.binx",
           "borvanusb-x-5678-9.bin",
           "borvanusb--1234-5678-9.bin",
           "borvanusb-4294967296-5678-9.bin",
           "borvanusb-1234-5678-9",
           "my-borvanusb-1234-5678-9.bin",
           "journal-1234-5678-9.bin",
       }) {
    EXPECT_EQ(ScratchOwner(name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
