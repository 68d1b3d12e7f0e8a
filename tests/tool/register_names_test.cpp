// Finding registers and fields by name.
#include "names/register_names.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "names_support.h"

namespace borvanusb::tool_test {
namespace {

class RegisterNamesTest : public testing::Test {
 protected:
  std::string Found(const std::string& name) const { return NameOf(names_.Find(name)); }
  std::string Message(const std::string& name) const {
    try {
      names_.Find(name);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Code(), ExitCode::kUsage);
      return failure.Message();
    }
    return "found";
  }
  std::string All(const std::string& pattern) const {
    std::string text;
    for (const NamedTarget& target : names_.Match(pattern)) {
      text += NameOf(target) + " ";
    }
    return text;
  }

  const RegisterNames names_{TestProfile()};
};

TEST_F(RegisterNamesTest, WholeAndShortNames) {
  EXPECT_EQ(Found("CHIP.CTRL"), "CHIP.CTRL");
  EXPECT_EQ(Found("chip.ctrl.mode"), "CHIP.CTRL.MODE");
  EXPECT_EQ(Found("EXPOSURE"), "SENSOR.EXPOSURE");
  EXPECT_EQ(Found("FLAGS.ON"), "CHIP.FLAGS.ON");
}

TEST_F(RegisterNamesTest, AddressesAndAccesses) {
  const NamedRegister& exposure = *names_.Find("EXPOSURE").of;
  EXPECT_EQ(exposure.address, 0x3500U);
  EXPECT_EQ(exposure.accesses, 3U);
  EXPECT_EQ(exposure.Mask(), 0xFFFFFFU);
  EXPECT_EQ(names_.Find("SERIAL").of->accesses, 4U);
}

TEST_F(RegisterNamesTest, NamesThatMeanNothingOrTooMuch) {
  EXPECT_EQ(Message("CTRL"), "CTRL is ambiguous: CHIP.CTRL, SENSOR.CTRL");
  EXPECT_EQ(
      Message("SENSOR.EXPOSUR"),
      "the profile \"M\" has no register or field SENSOR.EXPOSUR; did you mean SENSOR.EXPOSURE?");
  EXPECT_EQ(Message("XYZ"), "the profile \"M\" has no register or field XYZ");
  EXPECT_EQ(Message("HIP.CTRL"),
            "the profile \"M\" has no register or field HIP.CTRL; did you mean CHIP.CTRL?");
}

TEST_F(RegisterNamesTest, Patterns) {
  EXPECT_EQ(All("CTRL*"), "CHIP.CTRL CHIP.CTRL2 SENSOR.CTRL ");
  EXPECT_EQ(All("CHIP.CTRL.*"), "CHIP.CTRL.MODE CHIP.CTRL.GAIN CHIP.CTRL.STATE ");
  EXPECT_EQ(All("SENSOR.*"), "SENSOR.EXPOSURE SENSOR.CTRL ");
  EXPECT_THROW(names_.Match("X*"), Failure);
}

TEST(RegisterNamesUnreachableTest, RegistersBeyondTheAddressesOfTheirDevice) {
  const RegisterNames names(TestProfile("\"base\": \"0xd000\""));
  ASSERT_EQ(names.Unreachable().size(), 2U);
  EXPECT_EQ(names.Unreachable()[0], "SENSOR.EXPOSURE: its address, 0x3500, is beyond 0xffff");
  EXPECT_THROW(names.Find("SENSOR.EXPOSURE"), Failure);
}

}  // namespace
}  // namespace borvanusb::tool_test
