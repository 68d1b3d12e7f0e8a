#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/flash_memory.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "flash/engine/transfer_count.h"
#include "i2c/i2c_options.h"
#include "output/output.h"
#include "output/progress.h"
#include "station/bench.h"
#include "station/statistics.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kMicro = 1e6;
constexpr double kHighPercent = 99;

// A job consists of many packets, so a smaller number of jobs gives an equally good result.
constexpr std::uint64_t kJobRoundsShare = 10;
constexpr std::uint64_t kReadSize = std::uint64_t{32} << 10U;
// The registers of a run; whole blocks of 56.
constexpr Range kRun{0x100, 0x47F};
// Each read is made twice. A byte register takes a length query, two sets and a get; the other
// accesses take one set less.
constexpr std::uint64_t kRegisterTransfers = std::uint64_t{2} * 4;
constexpr std::uint64_t kSingleTransfers = std::uint64_t{2} * 3;

// Programming 1 MiB: packets of 60 bytes, erases of 4096 bytes, and reading before and after.
constexpr std::uint64_t kImageSize = std::uint64_t{1} << 20U;
constexpr std::uint64_t kProgramTransfers =
    (kImageSize + kWritePacket - 1) / kWritePacket + kImageSize / kSectorSize;

struct Measurement {
  int selector = 0;
  std::string what;
  std::uint64_t rounds = 0;
  std::uint64_t transfers = 0;  // per call
  std::function<void()> call;   // empty: not measured, see `note`
  std::string note;
  bool may_be_refused = false;  // true if there may be no device to answer
  std::vector<double> seconds{};
};

std::string Fixed(double number, int decimals) {
  return Format("{:.{}f}", number, decimals);
}

std::string Padded(const std::string& text, std::size_t width, bool right) {
  const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
  return right ? blanks + text : text + blanks;
}

// Measures selector 2. Without a slave, no device would answer, so it is not measured.
Measurement I2cMeasurement(Camera& camera, std::uint64_t rounds, const I2cOptions& i2c) {
  if (!i2c.slave) {
    return {2, "I2C read", 0, 0, {}, "not measured: requires --slave"};
  }
  const I2cTarget target{*i2c.slave, i2c.mode, i2c.option};
  return {
      2,  "I2C read", rounds, kSingleTransfers, [&camera, target] { camera.ReadI2c(target, 0); },
      "", true};
}

std::vector<Measurement> Measurements(Camera& camera, std::uint64_t rounds, const I2cOptions& i2c) {
  const std::uint64_t job_rounds = std::max<std::uint64_t>(1, rounds / kJobRoundsShare);
  std::vector<Measurement> list;
  list.push_back({1, "byte register read", rounds, kRegisterTransfers,
                  [&] { camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte); }, ""});
  list.push_back(I2cMeasurement(camera, rounds, i2c));
  list.push_back(
      {3, "flash word read", rounds, kSingleTransfers, [&] { camera.PeekFlashWord(0); }, ""});
  list.push_back({4, "flash program packet", 0, 0, {}, "not measured: it would write"});
  list.push_back({5, "flash read of 32 KiB", job_rounds, ReadTransfers(kReadSize, 0),
                  [&] { camera.ReadFlash(0, kReadSize, {}); }, "with the job's start and end"});
  list.push_back({6, "I2C block read", 0, 0, {}, "not measured: no command uses it"});
  list.push_back({7, "run of 896 registers", job_rounds, RunTransfers(kRun),
                  [&] { camera.ReadRegisterRun(kRun.first, kRun.last); },
                  "with the job's start and end"});
  return list;
}

void Measure(Measurement& measurement, Context& context) {
  for (std::uint64_t round = 0; round < measurement.rounds; ++round) {
    const auto before = context.host.Clock();
    try {
      measurement.call();
    } catch (const Failure& failure) {
      if (!measurement.may_be_refused || failure.Code() != ExitCode::kDevice) {
        throw;
      }
      // A refused access takes another time than an answer, so it is not counted.
      measurement.call = {};
      measurement.rounds = 0;
      measurement.note = "not measured: nothing answers at that slave";
      return;
    }
    measurement.seconds.push_back(
        std::chrono::duration<double>(context.host.Clock() - before).count());
  }
}

// Median of the time for one transfer, in seconds. 0 if the clock is too coarse.
double SecondsPerTransfer(const Measurement& measurement) {
  return Median(measurement.seconds) / static_cast<double>(measurement.transfers);
}

double PerSecond(const Measurement& measurement) {
  const double seconds = SecondsPerTransfer(measurement);
  return seconds > 0 ? 1 / seconds : 0;
}

void Print(const Measurement& measurement, Output& output) {
  std::string line = Format("{}  {}", Padded(std::to_string(measurement.selector), 8, true),
                            Padded(measurement.what, 22, false));
  if (measurement.call) {
    line += Padded(Fixed(Median(measurement.seconds) * kMicro, 1), 11, true) +
            Padded(Fixed(Percentile(measurement.seconds, kHighPercent) * kMicro, 1), 11, true) +
            Padded(std::to_string(measurement.transfers), 10, true) +
            Padded(Fixed(PerSecond(measurement), 0), 12, true);
  }
  output.Line(
      Format("{}{}", line, measurement.note.empty() ? "" : Format("  {}", measurement.note)));
}

Json MeasurementJson(const Measurement& measurement) {
  Json json = {{"selector", measurement.selector},
               {"what", measurement.what},
               {"measured", static_cast<bool>(measurement.call)},
               {"rounds", measurement.rounds},
               {"transfers", measurement.transfers},
               {"median_us", nullptr},
               {"p99_us", nullptr},
               {"transfers_per_second", nullptr},
               {"note", measurement.note}};
  if (measurement.call) {
    json["median_us"] = Median(measurement.seconds) * kMicro;
    json["p99_us"] = Percentile(measurement.seconds, kHighPercent) * kMicro;
    json["transfers_per_second"] = PerSecond(measurement);
  }
  return json;
}

void Estimate(const std::vector<Measurement>& list, Context& context) {
  const auto read = std::find_if(list.begin(), list.end(), [](const Measurement& measurement) {
    return measurement.selector == 5;
  });
  const double transfer = SecondsPerTransfer(*read);
  const std::uint64_t image_read = ReadTransfers(kImageSize, 0);
  const double program = transfer * static_cast<double>(kProgramTransfers);
  const double reading = transfer * static_cast<double>(image_read);
  Output& output = context.output;
  output.Line("");
  output.Line(Format("Programming 1 MiB: about {} s", Fixed(program + 2 * reading, 1)));
  output.Line(
      Format("  read before and after  {} s, 2 x {} transfers", Fixed(2 * reading, 1), image_read));
  output.Line(Format("  erase and program      {} s, {} erases and {} packets", Fixed(program, 1),
                     kImageSize / kSectorSize, kProgramTransfers - kImageSize / kSectorSize));
  output.Line(
      "Assumed: an erase or a packet takes as long as one transfer of selector 5; the time");
  output.Line("that the flash itself takes to erase and program is not included.");
  context.result["estimate"] = {{"bytes", kImageSize},
                                {"seconds_per_transfer", transfer},
                                {"program_transfers", kProgramTransfers},
                                {"program_seconds", program},
                                {"read_transfers", image_read},
                                {"read_seconds", reading},
                                {"total_seconds", program + 2 * reading}};
}

}  // namespace

ExitCode Run(const BenchCommand& command, Context& context) {
  const ReservedCamera camera = ReserveChosenCamera(context);
  std::vector<Measurement> list =
      Measurements(*camera.camera, std::max<std::uint64_t>(1, command.rounds), command.i2c);
  context.progress.Begin("measure", list.size(), ProgressUnit::kMeasurements);
  std::uint64_t done = 0;
  for (Measurement& measurement : list) {
    Measure(measurement, context);
    context.progress.Advance(++done);
  }
  context.progress.Done();
  context.output.Line(CameraLine(camera->Identity()));
  context.output.Line(
      "selector  call                     median us     99 % us transfers  transfers/s");
  auto selectors = Json::array();
  for (const Measurement& measurement : list) {
    Print(measurement, context.output);
    selectors.push_back(MeasurementJson(measurement));
  }
  context.result = {{"camera", CameraJson(camera->Identity())},
                    {"rounds", command.rounds},
                    {"selectors", std::move(selectors)}};
  Estimate(list, context);
  return ExitCode::kDone;
}

CommandRule BenchRule() {
  RuleOf<BenchCommand> rule({"bench"}, "Measures how fast the camera answers.");
  rule.Add(Option("--rounds", "N", "transfers of each kind, 1 to 1000000, default 200"),
           [](BenchCommand& command, const std::string& text) {
             command.rounds = NumberValue(text, 1, 1000000);
           });
  AddSlave(rule, false);
  AddMode(rule);
  rule.Check([](const BenchCommand& command, const GivenOptions& given) {
    if (given.Has("--mode") && !command.i2c.slave) {
      throw WrongUse("--mode: describes a sensor's registers; needs --slave, the sensor's address");
    }
  });
  rule.Details("Shows transfers per second, and how long programming 1 MiB would take.");
  rule.Example("borvanusb bench --rounds 1000 --slave 0x6c");
  return rule.Take();
}

}  // namespace borvanusb
