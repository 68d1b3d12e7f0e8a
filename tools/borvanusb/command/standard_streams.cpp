#include "command/standard_streams.h"

#include "base/files.h"

namespace borvanusb {

std::string ShownName(const std::string& file, const std::string& stream) {
  return IsStandardStream(file) ? stream : file;
}

std::string ReadTextOrInput(const std::string& file, Host& host) {
  return IsStandardStream(file) ? host.ReadStandardInput() : ReadWholeText(file);
}

void CheckStandardOutput(const std::string& file, const GivenOptions& given) {
  if (IsStandardStream(file) && given.Has("--json")) {
    throw WrongUse(
        "--json: prints its object on standard output, where FILE - writes the result; give a "
        "file name");
  }
}

}  // namespace borvanusb
