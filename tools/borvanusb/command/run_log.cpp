#include "command/run_log.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "base/time_text.h"

namespace borvanusb {

namespace {

constexpr std::string_view NameOf(RunLog::Kind kind) {
  switch (kind) {
    case RunLog::Kind::kRun:
      return "run";
    case RunLog::Kind::kOutput:
      return "out";
    case RunLog::Kind::kError:
      return "err";
    case RunLog::Kind::kEnd:
      return "end";
  }
  return "";
}

}  // namespace

RunLog::RunLog(std::string name, Clock clock) : name_(std::move(name)), clock_(std::move(clock)) {
  const std::filesystem::path path(std::u8string(name_.begin(), name_.end()));
  std::error_code error;
  const bool is_folder = std::filesystem::is_directory(path, error);
  errno = 0;
  if (!is_folder) {
    file_.open(path, std::ios::binary | std::ios::app);
  }
  if (!file_.is_open()) {
    const std::string why =
        errno != 0 ? std::generic_category().message(errno) : "the system gives no reason";
    throw Failure(ExitCode::kFile,
                  Format("--log: can't write {}: {}", name_, is_folder ? "it is a folder" : why),
                  "Check that the folder exists and that you may write to it.");
  }
}

void RunLog::Add(Kind kind, std::string_view text) {
  const std::string before = Format("{} {}  ", TimeText(clock_()), NameOf(kind));
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    file_ << before << text.substr(0, end) << '\n';
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  file_.flush();
}

}  // namespace borvanusb
