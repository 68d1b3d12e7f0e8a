#include <istream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "core/format.h"
#include "core/printable.h"
#include "core/result_codes.h"
#include "core/trace.h"
#include "core/trace_words.h"

namespace virtual_camera {
namespace {

struct TraceLine {
  std::string time;
  std::string camera;
  Direction direction = Direction::kSet;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;
  std::vector<std::uint8_t> bytes;
  std::int32_t result = 0;
  std::uint64_t missing = 0;  // not 0: a gap; this many transfers are not in the trace

  bool Failed() const {
    return result < 0 && !(direction == Direction::kLength && result == kMoreData);
  }
};

std::optional<std::vector<std::uint8_t>> ParseBytes(const std::string& text) {
  std::vector<std::uint8_t> bytes;
  if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdef") != std::string::npos) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < text.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

std::optional<Direction> ParseDirection(const std::string& text) {
  if (text == "set") {
    return Direction::kSet;
  }
  if (text == "get") {
    return Direction::kGet;
  }
  if (text == "length") {
    return Direction::kLength;
  }
  return std::nullopt;
}

std::optional<TraceLine> ParseLine(const std::string& text) {
  try {
    const nlohmann::json json = nlohmann::json::parse(text);
    if (json.contains("missing")) {
      const nlohmann::json& missing = json.at("missing");
      if (!missing.is_number_unsigned() || missing == 0) {
        return std::nullopt;
      }
      TraceLine gap;
      gap.time = Printable(json.at("time").get<std::string>());
      gap.camera = Printable(json.at("camera").get<std::string>());
      gap.missing = missing.get<std::uint64_t>();
      return gap;
    }
    const auto bytes = ParseBytes(json.at("bytes").get<std::string>());
    const auto direction = ParseDirection(json.at("direction").get<std::string>());
    if (!bytes || !direction) {
      return std::nullopt;
    }
    TraceLine line;
    line.time = Printable(json.at("time").get<std::string>());
    line.camera = Printable(json.at("camera").get<std::string>());
    line.direction = *direction;
    line.selector = json.at("selector").get<std::uint32_t>();
    line.length = json.at("length").get<std::uint32_t>();
    line.bytes = *bytes;
    line.result = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(std::stoull(json.at("result").get<std::string>(), nullptr, 16)));
    return line;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

const char* Name(Direction direction) {
  switch (direction) {
    case Direction::kSet:
      return "set";
    case Direction::kGet:
      return "get";
    case Direction::kLength:
      return "length";
  }
  return "";
}

// Counts by selector and purpose.
class Summary {
 public:
  void Add(const TraceLine& line, const std::string& purpose) {
    Count& count = counts_[{line.selector, purpose}];
    ++count.transfers;
    count.failed += line.Failed() ? 1U : 0U;
    count.bytes += line.bytes.size();
  }
  void AddMissing(std::uint64_t transfers) { missing_ += transfers; }

  void Print(std::ostream& output) const {
    const std::string rule = Format("{:->65}\n", "");
    output << "selector  purpose                   transfers  failed       bytes\n" << rule;
    Count total;
    for (const auto& [key, count] : counts_) {
      output << CountRow(key.first, key.second, count);
      total.transfers += count.transfers;
      total.failed += count.failed;
      total.bytes += count.bytes;
    }
    output << rule;
    output << CountRow("", "all", total);
    if (missing_ != 0) {
      output << Format("          {:<24}  {:>9}\n", "missing", missing_);
    }
  }

 private:
  struct Count {
    std::uint64_t transfers = 0;
    std::uint64_t failed = 0;
    std::uint64_t bytes = 0;
  };

  // A selector is a number, or nothing for all of them.
  template <typename Selector>
  static std::string CountRow(const Selector& selector, const std::string& purpose,
                              const Count& count) {
    return Format("{:>8}  {:<24}  {:>9}  {:>6}  {:>10}\n", selector, purpose, count.transfers,
                  count.failed, count.bytes);
  }

  std::map<std::pair<std::uint32_t, std::string>, Count> counts_;
  std::uint64_t missing_ = 0;
};

// One camera's part of a trace.
struct CameraTrace {
  TraceInterpreter interpreter;
  std::optional<TraceLine> undecided;
};

// The result of a command before the gap is unknown.
void PrintGap(std::ostream& output, Summary& summary, CameraTrace& camera, const TraceLine& gap) {
  output << gap.time << "  " << gap.missing
         << (gap.missing == 1 ? " transfer before this line is" : " transfers before this line are")
         << " missing: the file could not be written\n";
  if (camera.undecided) {
    summary.Add(*camera.undecided, "register byte read");
  }
  summary.AddMissing(gap.missing);
  camera = CameraTrace();
}

void Count(Summary& summary, CameraTrace& camera, const TraceLine& line,
           const TransferWords& words) {
  if (camera.undecided && line.selector == camera.undecided->selector) {
    const bool continues = words.purpose == "feature register read";
    summary.Add(*camera.undecided, continues ? words.purpose : "register byte read");
    camera.undecided.reset();
  }
  if (words.undecided) {
    camera.undecided = line;
  } else {
    summary.Add(line, words.purpose);
  }
}

}  // namespace

bool PrintTrace(std::istream& input, std::ostream& output) {
  Summary summary;
  bool has_strange_lines = false;
  std::map<std::string, CameraTrace> cameras;
  std::string shown_camera;
  std::string text;
  for (std::uint64_t number = 1; std::getline(input, text); ++number) {
    if (text.empty()) {
      continue;
    }
    const std::optional<TraceLine> line = ParseLine(text);
    if (!line) {
      output << "line " << number << ": not a line of a trace\n";
      has_strange_lines = true;
      continue;
    }
    if (line->camera != shown_camera) {
      shown_camera = line->camera;
      output << "camera " << shown_camera << "\n";
    }
    CameraTrace& camera = cameras[line->camera];
    if (line->missing != 0) {
      PrintGap(output, summary, camera, *line);
      continue;
    }
    const TransferWords words =
        camera.interpreter.Explain(line->direction, line->selector, line->bytes, line->length);
    output << Format("{}  {:<6}  {}  {}{}{}", line->time, Name(line->direction), line->selector,
                     words.purpose, words.detail.empty() ? "" : ": ", words.detail);
    if (line->Failed()) {
      output << Format("  [failed 0x{:08x}]", static_cast<std::uint32_t>(line->result));
    } else if (line->result != kSuccess && line->direction != Direction::kLength) {
      output << Format("  [answered 0x{:08x}]", static_cast<std::uint32_t>(line->result));
    }
    output << "\n";
    Count(summary, camera, *line, words);
  }
  for (const auto& [name, camera] : cameras) {
    if (camera.undecided) {
      summary.Add(*camera.undecided, "register byte read");
    }
  }
  output << "\n";
  summary.Print(output);
  return !has_strange_lines || !cameras.empty();
}

}  // namespace virtual_camera
