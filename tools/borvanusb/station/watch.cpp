#include <cmath>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "base/width_modes.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
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

enum class Kind { kChip, kI2c };

// As results name it.
const char* NameOf(Kind kind) {
  return kind == Kind::kI2c ? "i2c" : "register";
}

struct Watched {
  Kind kind = Kind::kChip;
  std::uint32_t address = 0;
  int address_digits = 0;
  int value_digits = 0;
  std::optional<std::uint32_t> value;
};

std::string Seconds(double seconds) {
  return Format("{:.3f}", seconds);
}

void Add(std::vector<Watched>& watched, const std::vector<Range>& ranges, const Watched& model) {
  for (const Range& range : ranges) {
    if (watched.size() + range.Size() > kMostWatched) {
      throw Failure(ExitCode::kUsage,
                    Format("{}: with {} there are more than {} registers",
                           model.kind == Kind::kI2c ? "--i2c" : "--reg", Text(range), kMostWatched),
                    "Watch fewer registers.");
    }
    for (std::uint64_t address = range.first; address <= range.last; ++address) {
      watched.push_back(model);
      watched.back().address = static_cast<std::uint32_t>(address);
    }
  }
}

class Watcher {
 public:
  Watcher(const WatchCommand& command, Context& context) : command_(command), context_(context) {
    Add(watched_, command.registers, {Kind::kChip, 0, 4, command.wide ? 8 : 2, {}});
    if (!command.i2c_registers.empty()) {
      target_ = TargetOf(command.i2c);
      const WidthMode& mode = WidthModeOf(target_.mode);
      Add(watched_, command.i2c_registers,
          {Kind::kI2c, 0, mode.address_digits, mode.value_digits, {}});
    }
    if (watched_.empty()) {
      throw Failure(ExitCode::kUsage, "nothing to watch: give --reg or --i2c",
                    "borvanusb watch --reg 0x100-0x10f");
    }
  }

  void Run() {
    const auto camera = OpenChosenCamera(context_);
    if (!command_.csv.empty()) {
      csv_.emplace(command_.csv);
      csv_->Add("time,kind,slave,address,value");
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
      // Ctrl-C is how watching ends, in the middle of a poll, too.
      if (failure.Code() != ExitCode::kStopped) {
        throw;
      }
    }
    const double seconds = SinceStart(context_.host.Clock());
    context_.output.Note(Format("{} in {} s, {}", Count(polls_, "poll"), Seconds(seconds),
                                Count(changes_, "change")));
    if (late_ > 0) {
      context_.output.Note(Format("note: {} came late: reading takes longer than --rate allows",
                                  Count(late_, "poll")));
    }
  }

 private:
  double SinceStart(TimePoint time) const { return duration<double>(time - start_).count(); }

  void Poll(Camera& camera) {
    for (Watched& watched : watched_) {
      const std::uint32_t value = Read(camera, watched);
      if (watched.value != value) {
        Tell(watched, value);
        changes_ += watched.value.has_value() ? 1U : 0U;
        watched.value = value;
      }
    }
  }

  std::uint32_t Read(Camera& camera, const Watched& watched) const {
    if (watched.kind == Kind::kI2c) {
      return camera.ReadI2c(target_, watched.address);
    }
    return camera.ReadRegister(watched.address,
                               command_.wide ? RegisterWidth::kWide : RegisterWidth::kByte);
  }

  void Tell(const Watched& watched, std::uint32_t value) {
    const double time = SinceStart(context_.host.Clock());
    const bool is_i2c = watched.kind == Kind::kI2c;
    const std::string address = Hex(watched.address, watched.address_digits);
    const std::string now = Hex(value, watched.value_digits);
    const std::string before =
        watched.value ? Format("{} -> ", Hex(*watched.value, watched.value_digits)) : "";
    context_.output.Line(
        Format("+{} s  {}{}  {}{}", Seconds(time), is_i2c ? "i2c " : "", address, before, now));
    const nlohmann::ordered_json line = {
        {"time", std::round(time * 1e6) / 1e6},
        {"kind", NameOf(watched.kind)},
        {"slave", is_i2c ? nlohmann::ordered_json(target_.slave) : nlohmann::ordered_json()},
        {"address", watched.address},
        {"old", watched.value ? nlohmann::ordered_json(*watched.value) : nlohmann::ordered_json()},
        {"new", value}};
    context_.output.JsonLine(line.dump());
    if (csv_) {
      csv_->Add(Format("{},{},{},{},{}", Seconds(time), NameOf(watched.kind),
                       is_i2c ? Hex(target_.slave, kSlaveDigits) : "", address, now));
    }
  }

  // The polls keep to their times from the start, so that a slow one does not shift all others.
  void WaitForNext() {
    const double next = static_cast<double>(polls_ + skipped_) / command_.rate;
    const double now = SinceStart(context_.host.Clock());
    if (next > now) {
      context_.host.Sleep(milliseconds(static_cast<std::int64_t>(std::ceil((next - now) * 1000))));
      return;
    }
    ++late_;
    // What can't be caught up any more is left out.
    const auto due = static_cast<std::uint64_t>(now * command_.rate);
    skipped_ = due > polls_ ? due - polls_ : 0;
  }

  const WatchCommand& command_;
  Context& context_;
  I2cTarget target_;
  std::vector<Watched> watched_;
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
  if (command.registers.empty() && command.i2c_registers.empty()) {
    throw WrongUse("watch: what to watch is missing: --reg RANGE, --i2c RANGE or both");
  }
  if (command.registers.empty() && command.wide) {
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
  rule.Details("Goes on until Ctrl-C, or for --count polls.");
  rule.Example("borvanusb watch --reg 0x1a3 --i2c 0x3500-0x3502 --slave 0x6c --rate 10");
  return rule.Take();
}

}  // namespace borvanusb
