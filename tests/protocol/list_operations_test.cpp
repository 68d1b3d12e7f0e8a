// Runs and lists are not implemented on this device: hosts get the system's "not implemented", and
// nothing is sent.

#include <gmock/gmock.h>

#include "camera_with_script.h"

namespace borvan::test {
namespace {

constexpr Result kNotImplementedAnswer = Code(0x80004001);

class ListOperations : public CameraWithScript {};

TEST_F(ListOperations, AnswerNotImplementedAndSendNothing) {
  Play({});
  std::vector<ListEntry> list;
  EXPECT_EQ(device_.RegisterReadList(list, 0, 0x70, Recorder()), kNotImplementedAnswer);
  EXPECT_EQ(device_.I2cReadList(list, 0x6C, 0, 0xFF, 1, Recorder()), kNotImplementedAnswer);
  EXPECT_EQ(device_.RegisterWriteList({{0x3012, 0x5A}}, 0, Recorder()), kNotImplementedAnswer);
  EXPECT_EQ(device_.I2cWriteList({{0x3012, 0x5A}}, 0, Recorder()), kNotImplementedAnswer);
  EXPECT_THAT(list, ::testing::IsEmpty());
  EXPECT_THAT(reports_, ::testing::IsEmpty());
  EXPECT_EQ(control_->Count(), 0U);
}

TEST_F(ListOperations, ReservedOperationsAnswerNotImplemented) {
  EXPECT_EQ(device_.ReservedA("1", "2", "3"), kNotImplementedAnswer);
  EXPECT_EQ(device_.ReservedB("1", "2"), kNotImplementedAnswer);
  EXPECT_EQ(control_->Count(), 0U);
}

}  // namespace
}  // namespace borvan::test
