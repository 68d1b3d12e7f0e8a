#include "windows/pipe_lines.h"

#include <string_view>
#include <vector>

namespace borvanusb {

namespace {

constexpr std::size_t kPart = 65536;

}  // namespace

void ReadPipeLines(HANDLE pipe, const std::function<void(const std::string&)>& on_line) {
  std::string rest;
  std::vector<char> part(kPart);
  DWORD count = 0;
  while (ReadFile(pipe, part.data(), static_cast<DWORD>(part.size()), &count, nullptr) != FALSE &&
         count > 0) {
    // Only the new part can contain a line end.
    std::size_t searched = rest.size();
    rest.append(part.data(), count);
    std::size_t begin = 0;
    for (std::size_t end = rest.find('\n', searched); end != std::string::npos;
         end = rest.find('\n', searched)) {
      on_line(rest.substr(begin, end - begin));
      begin = searched = end + 1;
    }
    rest.erase(0, begin);
  }
}

void PipeWriter::Write(const std::string& line) {
  const std::lock_guard lock(mutex_);
  std::string_view rest = line;
  while (!rest.empty()) {
    DWORD written = 0;
    if (WriteFile(pipe_.get(), rest.data(), static_cast<DWORD>(rest.size()), &written, nullptr) ==
            FALSE ||
        written == 0) {
      return;
    }
    rest.remove_prefix(written);
  }
}

}  // namespace borvanusb
