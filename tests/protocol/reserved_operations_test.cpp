// Two places of the interface hold no operation: they answer the system's "not implemented" and
// send nothing.

#include "camera_with_script.h"

namespace borvan::test {
namespace {

constexpr Result kNotImplementedAnswer = Code(0x80004001);

TEST_F(CameraWithScript, ReservedOperationsAnswerNotImplemented) {
  EXPECT_EQ(device_.ReservedA("1", "2", "3"), kNotImplementedAnswer);
  EXPECT_EQ(device_.ReservedB("1", "2"), kNotImplementedAnswer);
  EXPECT_EQ(control_->Count(), 0U);
}

}  // namespace
}  // namespace borvan::test
