#include "command/camera_work.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "command/standard_streams.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kMostRegisters = std::uint64_t{1} << 20U;
constexpr std::uint64_t kShortRow = 64;  // too fast for a progress bar
constexpr std::size_t kRawEnding = 4;    // ".bin"

}  // namespace

std::unique_ptr<Camera> OpenChosenCamera(Context& context) {
  return context.host.OpenCamera(ChosenCamera(context.host, context.common.cameras));
}

ReservedCamera ReserveChosenCamera(Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  ReservedCamera reserved;
  reserved.reservation = context.host.ReserveCamera(identity);
  reserved.camera = context.host.OpenCamera(identity);
  return reserved;
}

nlohmann::ordered_json ValuesJson(const Range& range, std::span<const std::uint32_t> values) {
  auto list = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < values.size(); ++i) {
    list.push_back({{"address", range.first + i}, {"value", values[i]}});
  }
  return list;
}

std::string Count(std::uint64_t number, const std::string& thing) {
  return Format("{} {}{}", number, thing, number == 1 ? "" : "s");
}

void CheckRegisterCount(const Range& range) {
  if (range.Size() > kMostRegisters) {
    throw Failure(ExitCode::kUsage,
                  Format("RANGE: {} has {}; the limit for one command is {}", Text(range),
                         Count(range.Size(), "register"), kMostRegisters),
                  "Use a smaller range.");
  }
}

RowProgress::RowProgress(Context& context, std::uint64_t registers)
    : progress_(registers > kShortRow ? &context.progress : nullptr) {
  if (progress_ != nullptr) {
    progress_->Begin("read", registers, ProgressUnit::kRegisters);
  }
}

void RowProgress::Advance(std::uint64_t done) {
  if (progress_ != nullptr) {
    progress_->Advance(done);
  }
}

void RowProgress::Done() {
  if (progress_ != nullptr) {
    progress_->Done();
  }
}

std::vector<std::uint32_t> ReadEach(Context& context, const Range& range,
                                    const std::function<std::uint32_t(std::uint32_t)>& read) {
  RowProgress progress(context, range.Size());
  std::vector<std::uint32_t> values;
  for (std::uint64_t address = range.first; address <= range.last; ++address) {
    values.push_back(read(static_cast<std::uint32_t>(address)));
    progress.Advance(values.size());
  }
  progress.Done();
  return values;
}

void TellOutcome(Context& context, const std::string& command, const std::string& outcome) {
  context.output.Error(Format("borvanusb: {}: {}", command, outcome));
}

void WriteDump(Context& context, const std::string& file, const std::string& text) {
  if (!file.empty() && !IsStandardStream(file)) {
    WriteWholeText(file, text);
    return;
  }
  PrintLines(text, context.output);
}

void PrintLines(std::string_view text, Output& output) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    output.Line(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
}

void PrintHint(std::string_view hint, Output& output) {
  while (!hint.empty()) {
    const std::size_t end = hint.find('\n');
    output.Error(Format("  {}", hint.substr(0, end)));
    hint.remove_prefix(end == std::string_view::npos ? hint.size() : end + 1);
  }
}

bool IsRawFileName(const std::string& file) {
  if (file.size() < kRawEnding) {
    return false;
  }
  const std::string ending = file.substr(file.size() - kRawEnding);
  return ending == ".bin" || ending == ".BIN";
}

}  // namespace borvanusb
