// The manual page.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "command/command.h"
#include "command/command_line.h"
#include "command/context.h"
#include "command/manual.h"
#include "support/fake_camera.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class ManualTest : public testing::Test {
 protected:
  ManualTest() {
    const CommonArguments common;
    FakeHost host;
    FakeProgress progress;
    Context context{common, host, output, progress, result};
    EXPECT_EQ(RunValues(ManualCommand(), context), ExitCode::kDone);
  }

 public:
  FakeOutput output;
  nlohmann::ordered_json result;
};

TEST_F(ManualTest, HasTheSectionsOfAManualPage) {
  EXPECT_THAT(output.out,
              StartsWith(".TH BORVANUSB 1 \"\" \"borvanusb " BORVAN_VERSION "\"\n.SH NAME\n"
                         "borvanusb \\- "));
  std::size_t place = 0;
  for (const char* section : {"NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS",
                              "ENVIRONMENT", "EXIT STATUS", "FILES"}) {
    const std::size_t found = output.out.find(std::string("\n.SH ") + section + "\n");
    ASSERT_NE(found, std::string::npos) << section;
    EXPECT_GT(found, place) << section;
    place = found;
  }
  EXPECT_THAT(output.out, HasSubstr("BORVANUSB_CAMERA"));
  EXPECT_THAT(output.out, HasSubstr("BORVANUSB_DLL"));
}

TEST_F(ManualTest, TellsOfACommandItsOptionsAndItsExample) {
  EXPECT_THAT(
      output.out,
      HasSubstr(".TP\n"
                "\\fBborvanusb flash word\\fR \\fIADDR\\fR [\\fIVALUE\\fR] [\\fIOPTIONS\\fR]\n"
                "Reads or writes four bytes of the flash.\n"
                ".RS\n"
                ".TP\n"
                "\\fIADDR\\fR\n"
                "flash address of the first byte.\n"
                ".TP\n"
                "\\fIVALUE\\fR\n"
                "what to write; its highest byte goes to ADDR.\n"
                ".TP\n"
                "\\fB\\-\\-flash\\-size\\fR \\fISIZE\\fR\n"
                "size of the flash, such as 1M, if the tool can't find it.\n"
                ".TP\n"
                "\\fB\\-\\-yes\\fR\n"
                "write without asking.\n"
                ".TP\n"
                "\\fB\\-\\-force\\fR\n"
                "write into a read\\-only region, too.\n"
                ".TP\n"
                "\\fB\\-\\-backup\\fR \\fIFILE\\fR\n"
                "where the old bytes go; default in this folder.\n"
                ".TP\n"
                "\\fB\\-\\-no\\-backup\\fR\n"
                "don't keep the old bytes.\n"
                ".PP\n"
                "Example:\n"
                ".PP\n"
                ".EX\n"
                "borvanusb flash word 0x40000\n"
                ".EE\n"
                ".RE\n"));
}

TEST_F(ManualTest, OptionHasAllItsNames) {
  EXPECT_THAT(output.out, HasSubstr(".TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\n"));
}

TEST_F(ManualTest, NoTextIsTakenForARequest) {
  std::size_t begin = 0;
  while (begin < output.out.size()) {
    const std::size_t end = output.out.find('\n', begin);
    const std::string line = output.out.substr(begin, end - begin);
    if (line.starts_with('.')) {
      EXPECT_THAT(line, testing::MatchesRegex("\\.(TH|SH|SS|TP|PP|RS|RE|EX|EE|br)( .*)?"));
    }
    EXPECT_FALSE(line.starts_with('\'')) << line;
    begin = end + 1;
  }
}

TEST_F(ManualTest, JsonHoldsThePage) {
  EXPECT_EQ(result["manual"], output.out);
}

TEST_F(ManualTest, NamesTheCommonOptionsThatACommandDoesNotTake) {
  EXPECT_THAT(output.out, HasSubstr("\nTakes no \\fB\\-\\-camera\\fR, \\fB\\-\\-wait\\fR, "
                                    "\\fB\\-\\-profile\\fR, \\fB\\-\\-force\\-profile\\fR, "
                                    "\\fB\\-\\-progress\\fR and \\fB\\-\\-trace\\fR.\n"));
  EXPECT_THAT(output.out, HasSubstr("\nTakes no \\fB\\-\\-progress\\fR.\n"));
}

}  // namespace
}  // namespace borvanusb::tool_test
