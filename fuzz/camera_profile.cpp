// The reader of camera profiles: any text is a profile, or has errors with line numbers. A profile
// without errors has names that can be found, and can be checked.

#include <string>

#include "base/failure.h"
#include "names/register_names.h"
#include "profile/read_profile.h"
#include "profile_commands/check_profile.h"
#include "support/check.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;

constexpr const char* kMap = R"(<device><name>D</name><addressUnitBits>8</addressUnitBits>
<size>8</size><access>read-write</access><peripherals>
<peripheral><name>CHIP</name><baseAddress>0x100</baseAddress><registers>
<register><name>CTRL</name><addressOffset>0</addressOffset><fields>
<field><name>MODE</name><bitRange>[1:0]</bitRange><enumeratedValues><enumeratedValue><name>off</name>
<value>0</value></enumeratedValue></enumeratedValues></field></fields></register>
<register><name>WIDE</name><addressOffset>4</addressOffset><size>24</size></register>
<register><name>TOO_WIDE</name><addressOffset>8</addressOffset><size>128</size></register>
</registers></peripheral></peripherals></device>)";

std::string ReadFile(const std::string& name) {
  if (name.ends_with(".svd")) {
    return kMap;
  }
  if (name.ends_with(".txt")) {
    return "0xfff8, 0x6c,\n0xfffe, 0x03,\n0x3500, 0x01,\n";
  }
  throw Failure(ExitCode::kFile, "there is no such file");
}

void CheckProblems(const std::vector<ListProblem>& problems, std::uint64_t lines) {
  for (const ListProblem& problem : problems) {
    Check(problem.line <= lines, "a problem after the last line");
    Check(!problem.text.empty(), "a problem without a text");
  }
}

// Every register is found by its name, unless another one has the same name.
void CheckNames(const RegisterNames& names) {
  for (const NamedRegister& named : names.All()) {
    Check(named.accesses > 0, "a register without an access");
    Check(named.rule != nullptr, "a register without a rule");
    try {
      const NamedTarget found = names.Find(named.name);
      Check(found.of->name.size() == named.name.size(), "another register is found");
    } catch (const Failure& failure) {
      Check(failure.Code() == ExitCode::kUsage, "the code of a name that is not clear");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  std::uint64_t lines = 1;
  for (const char character : text) {
    lines += character == '\n' ? 1 : 0;
  }
  const auto reading =
      std::make_shared<const ProfileReading>(ReadProfileText(text, "m.camera.json", ReadFile));
  CheckProblems(reading->errors, lines);
  if (reading->errors.empty()) {
    Check(!reading->profile.name.empty(), "a profile without a name");
    Check(!reading->profile.cameras.empty(), "a profile without cameras");
    CheckNames(RegisterNames({reading, &reading->profile}));
  }
  const ProfileFindings findings = CheckProfile(text, reading, ReadFile, AllCommandRules());
  CheckProblems(findings.errors, lines);
  CheckProblems(findings.remarks, lines);
  return 0;
}
