#include <cmath>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "base/width_modes.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "names/field_value.h"
#include "names/register_words.h"
#include "output/output.h"
#include "station/growing_file.h"
#include "station/watch.h"

namespace borvanusb {

namespace {

using std::chrono::duration;
using std::chrono::milliseconds;
using TimePoint = std::chrono::steady_clock::time_point;

constexpr int kSlaveDigits = 2;
constexpr std::uint64_t kMostWatched = 4096;

struct Watched {
  WordTarget at;
  std::optional<std::uint64_t> value;  // last value of the register or field
};

std::string Seconds(double seconds) {
  return Format("{:.3f}", seconds);
}

// The kind as written in results.
const char* KindOf(const WordTarget& at) {
  return at.access.on_i2c ? "i2c" : "register";
}

int AddressDigits(const RegisterAccess& access) {
  constexpr int kChipDigits = 4;
  return access.on_i2c ? WidthModeOf(access.target.mode).address_digits : kChipDigits;
}

std::string TextOf(const WordTarget& at, std::uint64_t value) {
  return at.target.of != nullptr ? ValueText(at.target, value) : Hex(value, ValueDigits(at.access));
}

std::string MeaningOf(const WordTarget& at, std::uint64_t value) {
  return at.target.field != nullptr ? borvanusb::MeaningOf(*at.target.field, value) : std::string();
}

void CheckNumber(std::uint64_t before, const Range& range, const char* option) {
  if (before + range.Size() > kMostWatched) {
    throw Failure(
        ExitCode::kUsage,
        Format("{}: with {} there are more than {} registers", option, Text(range), kMostWatched),
        "Watch fewer registers.");
  }
}

class Watcher {
 public:
  Watcher(const WatchCommand& command, Context& context) : command_(command), context_(context) {
    AddNumbers(command.registers, {command.wide, std::nullopt}, "--reg");
    if (!command.i2c_registers.empty()) {
      AddNumbers(command.i2c_registers, {false, TargetOf(command.i2c)}, "--i2c");
    }
    if (watched_.empty() && command.words.empty()) {
      throw Failure(ExitCode::kUsage, "nothing to watch: give --reg, --i2c or names",
                    "borvanusb watch --reg 0x100-0x10f");
    }
  }

  void Run() {
    const CameraIdentity identity = ChosenCamera(context_.host, context_.common.cameras);
    AddNames(identity);
    const auto camera = context_.host.OpenCamera(identity);
    if (!command_.csv.empty()) {
      csv_.emplace(command_.csv);
      csv_->Add(command_.words.empty() ? "time,kind,slave,address,value"
                                       : "time,kind,slave,address,value,name");
    }
    start_ = context_.host.Clock();
    try {
      while (!context_.host.StopRequested() && context_.output.TakesResults()) {
        Poll(*camera);
        ++polls_;
        if (command_.count && polls_ >= *command_.count) {
          break;
        }
        WaitForNext();
      }
    } catch (const Failure& failure) {
      // Ctrl-C is the normal way to end watching, also during a poll.
      if (failure.Code() != ExitCode::kStopped) {
        throw;
      }
    }
    const double seconds = SinceStart(context_.host.Clock());
    context_.output.Note(Format("{} in {} s, {}", Count(polls_, "poll"), Seconds(seconds),
                                Count(changes_, "change")));
    if (late_ > 0) {
      context_.output.Note(Format("note: {} {} late: reading takes longer than --rate allows",
                                  Count(late_, "poll"), late_ == 1 ? "was" : "were"));
    }
  }

 private:
  double SinceStart(TimePoint time) const { return duration<double>(time - start_).count(); }

  void AddNumbers(const std::vector<Range>& ranges, const NumberMeaning& numbers,
                  const char* option) {
    for (const Range& range : ranges) {
      CheckNumber(watched_.size(), range, option);
      for (const WordTarget& at : TargetsOf({Text(range)}, nullptr, numbers)) {
        watched_.push_back({at, {}});
      }
    }
  }

  void AddNames(const CameraIdentity& identity) {
    if (HasNames(command_.words)) {
      names_ = NamesNeededFor(FirstName(command_.words), identity, context_);
    }
    for (const WordTarget& at :
         TargetsOf(command_.words, names_.get(), {command_.wide, std::nullopt})) {
      if (watched_.size() == kMostWatched) {
        throw Failure(ExitCode::kUsage, Format("these are more than {} registers", kMostWatched),
                      "Watch fewer registers.");
      }
      watched_.push_back({at, {}});
    }
    for (const Watched& watched : watched_) {
      accesses_.push_back(watched.at.access);
    }
  }

  void Poll(Camera& camera) {
    const RegisterReading reading = ReadAll(accesses_, camera);
    for (std::size_t i = 0; i < watched_.size(); ++i) {
      Watched& watched = watched_[i];
      const std::uint64_t value = watched.at.target.of != nullptr
                                      ? PartOf(watched.at.target, reading.values[i])
                                      : reading.values[i];
      if (watched.value != value) {
        Tell(watched, value);
        changes_ += watched.value.has_value() ? 1U : 0U;
        watched.value = value;
      }
    }
  }

  void Tell(const Watched& watched, std::uint64_t value) {
    const double time = SinceStart(context_.host.Clock());
    const WordTarget& at = watched.at;
    const bool is_i2c = at.access.on_i2c;
    const std::string address = Hex(at.access.address, AddressDigits(at.access));
    const std::string now = TextOf(at, value);
    const std::string before = watched.value ? Format("{} -> ", TextOf(at, *watched.value)) : "";
    const std::string meaning = MeaningOf(at, value);
    const std::string name = at.target.of != nullptr ? NameOf(at.target) : "";
    const std::string place = name.empty() ? Format("{}{}", is_i2c ? "i2c " : "", address) : name;
    context_.output.Line(Format("+{} s  {}  {}{}{}", Seconds(time), place, before, now,
                                meaning.empty() ? "" : Format("  {}", meaning)));
    nlohmann::ordered_json line = {
        {"time", std::round(time * 1e6) / 1e6},
        {"kind", KindOf(at)},
        {"slave",
         is_i2c ? nlohmann::ordered_json(at.access.target.slave) : nlohmann::ordered_json()},
        {"address", at.access.address},
        {"old", watched.value ? nlohmann::ordered_json(*watched.value) : nlohmann::ordered_json()},
        {"new", value}};
    if (!name.empty()) {
      line["name"] = name;
      line["meaning"] =
          meaning.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(meaning);
    }
    context_.output.JsonLine(line.dump());
    if (csv_) {
      csv_->Add(Format("{},{},{},{},{}{}", Seconds(time), KindOf(at),
                       is_i2c ? Hex(at.access.target.slave, kSlaveDigits) : "", address, now,
                       command_.words.empty() ? "" : Format(",{}", name)));
    }
  }

  // Poll times are computed from the start, so a slow poll does not delay all later ones.
  void WaitForNext() {
    const double next = static_cast<double>(polls_ + skipped_) / command_.rate;
    const double now = SinceStart(context_.host.Clock());
    if (next > now) {
      context_.host.Sleep(milliseconds(static_cast<std::int64_t>(std::ceil((next - now) * 1000))));
      return;
    }
    ++late_;
    // Skips polls whose time has passed.
    const auto due = static_cast<std::uint64_t>(now * command_.rate);
    skipped_ = due > polls_ ? due - polls_ : 0;
  }

  const WatchCommand& command_;
  Context& context_;
  std::shared_ptr<const RegisterNames> names_;
  std::vector<Watched> watched_;
  std::vector<RegisterAccess> accesses_;
  std::optional<GrowingFile> csv_;
  TimePoint start_;
  std::uint64_t polls_ = 0;
  std::uint64_t skipped_ = 0;
  std::uint64_t late_ = 0;
  std::uint64_t changes_ = 0;
};

}  // namespace

ExitCode Run(const WatchCommand& command, Context& context) {
  Watcher(command, context).Run();
  return ExitCode::kDone;
}

namespace {

void CheckWatch(const WatchCommand& command, const GivenOptions& given) {
  if (command.registers.empty() && command.i2c_registers.empty() && command.words.empty()) {
    throw WrongUse("watch: what to watch is missing: names, --reg RANGE or --i2c RANGE");
  }
  if (command.registers.empty() && command.words.empty() && command.wide) {
    throw WrongUse("--wide: is for the chip's registers; --reg must say which");
  }
  if (!command.i2c_registers.empty() && !command.i2c.slave) {
    throw WrongUse("--i2c: needs --slave N, the device's address on the bus, 0 to 255");
  }
  for (const char* const option : {"--slave", "--mode", "--option"}) {
    if (command.i2c_registers.empty() && given.Has(option)) {
      throw WrongUse(Format("{}: is for registers over I2C; --i2c must say which", option));
    }
  }
  for (const Range& range : command.i2c_registers) {
    CheckI2cAddress("--i2c", range.last, command.i2c);
  }
}

}  // namespace

CommandRule WatchRule() {
  RuleOf<WatchCommand> rule({"watch"}, "Polls registers and shows what changes.");
  rule.Add(NamesOf("registers", Optional(Repeated(Argument("WHAT", kWhatText)))),
           [](WatchCommand& command, const std::string& text) {
             command.words.push_back(RegisterWord(text));
           });
  rule.Add(Repeated(Option("--reg", "RANGE", "registers of the chip; may be given several times")),
           [](WatchCommand& command, const std::string& text) {
             command.registers.push_back(RangeValue(text));
           });
  rule.AddFlag("--wide", "--reg means registers of 32 bits", &WatchCommand::wide);
  rule.Add(
      Repeated(Option("--i2c", "RANGE", "registers of an I2C device; may be given several times")),
      [](WatchCommand& command, const std::string& text) {
        command.i2c_registers.push_back(RangeValue(text));
      });
  AddSlave(rule, false);
  AddMode(rule);
  AddOption(rule);
  rule.Add(Option("--rate", "N", "polls per second, 0.1 to 1000, default 2"),
           [](WatchCommand& command, const std::string& text) {
             command.rate = DecimalValue(text, 0.1, 1000);
           });
  rule.Add(Option("--count", "N", "stop after N polls"),
           [](WatchCommand& command, const std::string& text) {
             command.count = NumberValue(text, 1, kHighestNumber);
           });
  rule.Add(
      File(Option("--csv", "FILE", "write what is shown to a file, too: first values and changes")),
      [](WatchCommand& command, const std::string& text) { command.csv = FileValue(text); });
  rule.Check(CheckWatch);
  rule.Refuse("--progress", kNoProgress);
  rule.Details("Runs until Ctrl-C, or for --count polls.");
  rule.Example("borvanusb watch --reg 0x1a3 --i2c 0x3500-0x3502 --slave 0x6c --rate 10");
  return rule.Take();
}

}  // namespace borvanusb
