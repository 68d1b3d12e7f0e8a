#include "registers/list_verify.h"

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>

#include "base/chip_register.h"
#include "base/failure.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/width_modes.h"
#include "camera/i2c_failure.h"
#include "command/camera_work.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

constexpr std::size_t kMostNamed = 4;
// The minimum number of adjacent registers for a job, and the maximum for one job: a multiple of
// the 56 registers that the chip delivers at once.
constexpr std::uint64_t kLeastInJob = 65;
constexpr std::uint64_t kMostInJob = 3584;

// Ranges of adjacent registers; a range stays within one page.
std::vector<Range> RowsOf(const RegisterValues& written) {
  constexpr std::uint32_t kInPage = 0xFFFF;
  std::vector<Range> rows;
  for (const auto& [address, value] : written) {
    const bool goes_on = !rows.empty() && rows.back().last + 1 == address &&
                         (address & kInPage) != 0 && rows.back().Size() < kMostInJob;
    if (goes_on) {
      rows.back().last = address;
    } else {
      rows.push_back({address, address});
    }
  }
  return rows;
}

std::vector<std::uint32_t> ReadRow(const Range& row, Camera& camera) {
  if (row.Size() >= kLeastInJob) {
    const std::vector<std::uint8_t> bytes = camera.ReadRegisterRun(row.first, row.last);
    return {bytes.begin(), bytes.end()};
  }
  std::vector<std::uint32_t> values;
  for (std::uint64_t address = row.first; address <= row.last; ++address) {
    values.push_back(
        camera.ReadRegister(static_cast<std::uint32_t>(address), RegisterWidth::kByte));
  }
  return values;
}

// Extends error messages, so that a failure here does not look as if the list had not been written.
void WhileWritten(const std::function<void()>& read) {
  try {
    read();
  } catch (const Failure& failure) {
    throw Failure(
        failure.Code(),
        Format("{}; the list is written, but could not be read back completely", failure.Message()),
        failure.Hint());
  }
}

std::string NameOf(const WrongRegister& wrong) {
  if (!wrong.i2c) {
    return Hex(wrong.address, kAddressDigits);
  }
  return Format("{} of slave {}", Hex(wrong.address, WidthModeOf(wrong.i2c->mode).address_digits),
                Hex(wrong.i2c->slave, 2));
}

std::string TextOf(const WrongRegister& wrong) {
  const int digits = wrong.i2c ? WidthModeOf(wrong.i2c->mode).value_digits : kByteDigits;
  return Format("{} is {} (expected {})", NameOf(wrong), Hex(wrong.found, digits),
                Hex(wrong.expected, digits));
}

nlohmann::ordered_json JsonOf(const WrongRegister& wrong) {
  nlohmann::ordered_json json;
  if (wrong.i2c) {
    json["slave"] = wrong.i2c->slave;
    json["mode"] = WidthModeOf(wrong.i2c->mode).name;
  }
  json["address"] = wrong.address;
  json["expected"] = wrong.expected;
  json["found"] = wrong.found;
  return json;
}

}  // namespace

ReadBack ReadBackRegisters(const RegisterValues& written, Camera& camera, Context& context) {
  ReadBack read_back;
  context.progress.Begin("verify", written.size(), ProgressUnit::kRegisters);
  WhileWritten([&] {
    for (const Range& row : RowsOf(written)) {
      const std::vector<std::uint32_t> values = ReadRow(row, camera);
      for (std::size_t i = 0; i < values.size(); ++i) {
        const auto address = static_cast<std::uint32_t>(row.first + i);
        const std::uint32_t expected = written.at(address);
        if (values[i] != expected) {
          read_back.wrong.push_back({std::nullopt, address, expected, values[i]});
        }
      }
      read_back.compared += values.size();
      context.progress.Advance(read_back.compared);
    }
  });
  context.progress.Done();
  return read_back;
}

ReadBack ReadBackI2c(const WrittenI2cRegisters& written, std::uint32_t option, Camera& camera,
                     Context& context) {
  for (const auto& [place, line] : written.uncertain) {
    context.output.Note(
        Format("note: the width code in line {} overwrites register {} of slave {} on chips that "
               "take lists register by register: it is not compared",
               line, Hex(place.address, 2), Hex(place.slave, 2)));
  }
  ReadBack read_back;
  context.progress.Begin("verify", written.values.size(), ProgressUnit::kRegisters);
  WhileWritten([&] {
    for (const auto& [place, expected] : written.values) {
      const I2cTarget target{place.slave, place.mode, option};
      const std::uint32_t address = place.address;
      const std::uint32_t found =
          ExplainingI2c(camera, target, [&] { return camera.ReadI2c(target, address); });
      if (found != expected) {
        read_back.wrong.push_back({place, place.address, expected, found});
      }
      context.progress.Advance(++read_back.compared);
    }
  });
  context.progress.Done();
  return read_back;
}

std::string ReadBackText(const ReadBack& read_back) {
  return read_back.wrong.empty()
             ? Format(", {} read back equal", Count(read_back.compared, "register"))
             : "";
}

ExitCode ReportReadBack(const std::string& command, const std::string& file,
                        const ReadBack& read_back, Context& context) {
  const std::vector<WrongRegister>& wrong = read_back.wrong;
  auto list = nlohmann::ordered_json::array();
  std::string named;
  for (std::size_t i = 0; i < wrong.size(); ++i) {
    list.push_back(JsonOf(wrong[i]));
    if (i < kMostNamed) {
      named += Format("{}{}", i == 0 ? "" : ", ", TextOf(wrong[i]));
    }
  }
  context.result["verified"] = wrong.empty();
  context.result["compared"] = read_back.compared;
  context.result["wrong"] = std::move(list);
  if (wrong.empty()) {
    return ExitCode::kDone;
  }
  const std::size_t more = wrong.size() - std::min(wrong.size(), kMostNamed);
  TellOutcome(context, command,
              Format("{}: {} of {} read back differently: {}{}", file, wrong.size(),
                     Count(read_back.compared, "register"), named,
                     more == 0 ? "" : Format(", and {} more", more)));
  context.output.Note(
      "note: registers that are read-only, that change by themselves or that are in a bank that is "
      "not selected also read back differently");
  return ExitCode::kVerify;
}

}  // namespace borvanusb
