// A camera lasts longer than the processes that use it, and serves several at once.

#include "fixture.h"
#include "host.h"

namespace {

using test::Control;
using test::FirstCamera;
using test::kFirstPath;
using test::Process;

constexpr wchar_t kProgram[] = L"virtual_camera_com_test.exe";

std::wstring ProgramArguments(const std::wstring& address, const std::wstring& count) {
  return L"--program \"" + std::wstring(kFirstPath) + L"\" " + address + L" " + count;
}

class Processes : public test::CameraTest {};

TEST_F(Processes, TwoAtOnceProgramEveryWordOfTheirs) {
  Register({FirstCamera()});
  constexpr std::uint32_t kWords = 500;
  Process one(kProgram, ProgramArguments(L"0x0", L"500"));
  Process two(kProgram, ProgramArguments(L"0x8000", L"500"));
  EXPECT_EQ(one.Wait().exit_code, 0U);
  EXPECT_EQ(two.Wait().exit_code, 0U);

  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  for (std::uint32_t i = 0; i < kWords; ++i) {
    std::uint32_t value = 0xEEEEEEEE;
    ASSERT_TRUE(host::ReadWord(control.Get(), 4 * i, &value));
    ASSERT_EQ(value, i) << "word of the first process";
    ASSERT_TRUE(host::ReadWord(control.Get(), 0x8000 + 4 * i, &value));
    ASSERT_EQ(value, i) << "word of the second process";
  }
}

TEST_F(Processes, RegistersAndFlashSurviveTheProcess) {
  Register({FirstCamera()});
  {
    const auto control = host::OpenCamera(kFirstPath);
    ASSERT_TRUE(control);
    ASSERT_TRUE(host::WriteRegister(control.Get(), 0x100, 0x77));
  }
  ASSERT_EQ(Process(kProgram, ProgramArguments(L"0x40", L"3")).Wait().exit_code, 0U);

  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  std::uint8_t value = 0;
  ASSERT_TRUE(host::ReadRegister(control.Get(), 0x100, &value));
  EXPECT_EQ(value, 0x77);
  std::uint32_t word = 0;
  ASSERT_TRUE(host::ReadWord(control.Get(), 0x48, &word));
  EXPECT_EQ(word, 2U);
}

TEST_F(Processes, AKilledOneLeavesTheCameraUsable) {
  Register({FirstCamera()});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  Process other(kProgram, ProgramArguments(L"0x0", L"16000"));
  std::uint32_t word = 0xFFFFFFFF;
  // Until it is in the midst of its work.
  for (int i = 0; i < 500 && word == 0xFFFFFFFF; ++i) {
    Sleep(10);
    // The other's command may come between ours and its reply, as with a real device.
    std::uint32_t answered = 0;
    if (host::ReadWord(control.Get(), 0x28, &answered)) {
      word = answered;
    }
  }
  other.Kill();
  ASSERT_EQ(word, 10U);
  ASSERT_TRUE(host::WriteRegister(control.Get(), 0x100, 0x42));
  std::uint8_t value = 0;
  ASSERT_TRUE(host::ReadRegister(control.Get(), 0x100, &value));
  EXPECT_EQ(value, 0x42);
}

TEST_F(Processes, APowerCycleResetsRegistersAndKeepsTheFlash) {
  Register({FirstCamera(R"(, "registers": {"0x100": "0x12"})")});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  std::uint8_t value = 0;
  ASSERT_TRUE(host::ReadRegister(control.Get(), 0x100, &value));
  EXPECT_EQ(value, 0x12);
  ASSERT_TRUE(host::WriteRegister(control.Get(), 0x100, 0x34));
  ASSERT_TRUE(host::ProgramWord(control.Get(), 0x1000, 0x01020304));

  EXPECT_EQ(Control(L"power-cycle").exit_code, 0U);
  ASSERT_TRUE(host::ReadRegister(control.Get(), 0x100, &value));
  EXPECT_EQ(value, 0x12);
  std::uint32_t word = 0;
  ASSERT_TRUE(host::ReadWord(control.Get(), 0x1000, &word));
  EXPECT_EQ(word, 0x01020304U);
}

}  // namespace
