#include "core/configuration_faults.h"

#include "core/format.h"

namespace virtual_camera {
namespace {

constexpr std::uint64_t kAnyCount = 0xFFFFFFFFFFFFFFFF;
constexpr std::uint64_t kLongestDelayMs = 600'000;

void ReadWhich(const JsonReader& reader, FaultConfiguration& fault) {
  if (const auto selector = reader.Find("selector"); selector && !selector->IsText("any")) {
    fault.selector = static_cast<std::uint32_t>(selector->Number(1, kSelectorCount));
  }
  if (const auto direction = reader.Find("direction"); direction) {
    fault.direction = direction->Choice<std::optional<Direction>>({{"set", Direction::kSet},
                                                                   {"get", Direction::kGet},
                                                                   {"length", Direction::kLength},
                                                                   {"any", std::nullopt}});
  }
}

void ReadWhen(const JsonReader& reader, FaultConfiguration& fault) {
  int conditions = 0;
  if (const auto at = reader.Find("at"); at) {
    fault.at = at->Number(1, kAnyCount);
    ++conditions;
  }
  if (const auto every = reader.Find("every"); every) {
    fault.every = every->Number(1, kAnyCount);
    ++conditions;
  }
  if (const auto probability = reader.Find("probability"); probability) {
    fault.probability = probability->Fraction();
    ++conditions;
  }
  if (const auto unplug = reader.Find("unplug"); unplug) {
    unplug->CheckKeys({"after", "back_after_ms"});
    fault.unplug.emplace();
    if (const auto after = unplug->Find("after"); after) {
      fault.at = after->Number(1, kAnyCount);
      ++conditions;
    }
    if (const auto back = unplug->Find("back_after_ms"); back) {
      fault.unplug->back_after_ms = static_cast<std::uint32_t>(back->Number(0, kLongestDelayMs));
    }
  }
  if (conditions > 1) {
    reader.Fail("may hold only one of at, every, probability and unplug.after");
  }
}

// Sets the direction of a fault that makes sense in one direction only. Any other direction in the
// file is an error.
void Bind(const JsonReader& reader, FaultConfiguration& fault, Direction direction,
          const std::string& key, const std::string& name) {
  if (fault.direction && *fault.direction != direction) {
    reader.Fail(Format("with {} the direction must be \"{}\"", key, name));
  }
  fault.direction = direction;
}

void ReadWhat(const JsonReader& reader, FaultConfiguration& fault) {
  if (const auto result = reader.Find("result"); result) {
    fault.result = result->Result();
  }
  if (const auto delay = reader.Find("delay_ms"); delay) {
    fault.delay_ms = static_cast<std::uint32_t>(delay->Number(1, kLongestDelayMs));
  }
  if (const auto length = reader.Find("length"); length) {
    fault.length = length->Number32();
    Bind(reader, fault, Direction::kLength, "length", "length");
  }
  if (const auto wrong_tag = reader.Find("wrong_tag"); wrong_tag && wrong_tag->Truth()) {
    fault.wrong_tag = true;
    Bind(reader, fault, Direction::kGet, "wrong_tag", "get");
  }
  if (const auto short_answer = reader.Find("short"); short_answer) {
    fault.short_answer = short_answer->Number32();
    Bind(reader, fault, Direction::kGet, "short", "get");
  }
  if (const auto stuck = reader.Find("stuck_word"); stuck) {
    fault.stuck_word = stuck->Number32();
    Bind(reader, fault, Direction::kSet, "stuck_word", "set");
  }
  if (const auto lie = reader.Find("lie"); lie && lie->Truth()) {
    fault.lie = true;
    Bind(reader, fault, Direction::kSet, "lie", "set");
  }
  if (!fault.result && fault.delay_ms == 0 && !fault.length && !fault.wrong_tag &&
      !fault.short_answer && !fault.stuck_word && !fault.lie && !fault.unplug) {
    reader.Fail(
        "must say what happens: result, wrong_tag, length, short, delay_ms, stuck_word, lie or "
        "unplug");
  }
}

}  // namespace

std::vector<FaultConfiguration> ReadFaults(const JsonReader& faults) {
  const std::vector<JsonReader> elements = faults.Elements("a list of faults");
  if (elements.size() > kMaxFaults) {
    faults.Fail(Format("must hold at most {} faults", kMaxFaults));
  }
  std::vector<FaultConfiguration> result;
  for (const JsonReader& element : elements) {
    element.CheckKeys({"selector", "direction", "at", "every", "probability", "result", "wrong_tag",
                       "length", "short", "delay_ms", "stuck_word", "lie", "unplug"});
    FaultConfiguration fault;
    ReadWhich(element, fault);
    ReadWhen(element, fault);
    ReadWhat(element, fault);
    result.push_back(fault);
  }
  return result;
}

}  // namespace virtual_camera
