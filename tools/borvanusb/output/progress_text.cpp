#include "output/progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "base/format.h"

namespace borvanusb {

namespace {

struct Unit {
  std::string name;  // with a leading blank
  double size = 1;
};

Unit UnitOf(ProgressUnit counted, double number) {
  if (counted == ProgressUnit::kBytes) {
    const std::array<Unit, 3> units = {{{" GiB", 1073741824}, {" MiB", 1048576}, {" KiB", 1024}}};
    for (const Unit& unit : units) {
      if (number >= unit.size) {
        return unit;
      }
    }
  }
  return {Format(" {}", NameOf(counted)), 1};
}

Unit UnitOfTotal(const ProgressMeter& meter) {
  return UnitOf(meter.Unit(), static_cast<double>(meter.Total()));
}

// Returns the unit of a rate. If the total is shown in KiB, MiB or GiB, the rate is also shown in
// one of these units, but not necessarily in the same one.
Unit UnitOfRate(const ProgressMeter& meter, double rate) {
  constexpr double kKibi = 1024;
  const Unit of_total = UnitOfTotal(meter);
  return of_total.size > 1 ? UnitOf(meter.Unit(), std::max(rate, kKibi)) : of_total;
}

std::string Decimal(double number, int digits) {
  return Format("{:.{}f}", number, digits);
}

std::string Number(double number, const Unit& unit) {
  return Decimal(number / unit.size, unit.size > 1 ? 1 : 0);
}

std::string TwoDigits(std::uint64_t number) {
  return Format("{:02}", number);
}

std::string PaddedLeft(const std::string& text, std::size_t width) {
  std::string padded(width > text.size() ? width - text.size() : 0, ' ');
  padded += text;
  return padded;
}

// Returns a stage's name, cut or padded with blanks to `columns`. Each character outside of ASCII
// counts as two columns, because it may be a wide one.
std::string StageText(const std::string& stage, std::size_t columns) {
  std::string text;
  std::size_t used = 0;
  for (std::size_t i = 0; i < stage.size();) {
    std::size_t length = 1;
    while (i + length < stage.size() &&
           (static_cast<unsigned char>(stage[i + length]) & 0xC0U) == 0x80U) {
      ++length;
    }
    const auto first = static_cast<unsigned char>(stage[i]);
    const std::size_t width = first < 0x80U ? 1 : 2;
    if (used + width > columns) {
      break;
    }
    if (first < ' ' || first == 0x7FU) {
      text += '?';
    } else {
      text += stage.substr(i, length);
    }
    used += width;
    i += length;
  }
  return text + std::string(columns - used, ' ');
}

// Returns the columns of the amount at the end, which is its greatest width.
std::size_t WidestAmount(const ProgressMeter& meter) {
  return Number(static_cast<double>(meter.Total()), UnitOfTotal(meter)).size() + 1 +
         TotalText(meter).size();
}

constexpr std::size_t kLeastBar = 10;
constexpr std::size_t kWidestBar = 40;
constexpr std::size_t kStageColumns = 8;

std::string Bar(const ProgressMeter& meter, std::size_t inside) {
  const double share = meter.Total() > 0 ? static_cast<double>(meter.DoneUnits()) /
                                               static_cast<double>(meter.Total())
                                         : 0;
  const bool complete = meter.Percent() == 100;
  const std::size_t full =
      complete
          ? inside
          : std::min(static_cast<std::size_t>(share * static_cast<double>(inside)), inside - 1);
  std::string bar(inside + 2, ' ');
  bar.front() = '[';
  bar.back() = ']';
  std::fill_n(bar.begin() + 1, full, '=');
  if (!complete) {
    bar[full + 1] = '>';
  }
  return bar;
}

// Returns the stage, the bar, the percentage and as many of `texts` as fit. The most important text
// comes first. The texts have fixed widths, so the width of the bar does not change between calls.
std::string Composed(const ProgressMeter& meter, std::size_t width,
                     const std::vector<std::string>& texts) {
  const std::string percent = Format("{} %", PaddedLeft(std::to_string(meter.Percent()), 3));
  // The two brackets, and one blank on each side of the bar.
  const std::size_t fixed = kStageColumns + 1 + 2 + 1 + percent.size();
  if (fixed + kLeastBar > width) {
    if (width <= percent.size()) {
      return percent.substr(percent.size() - width);
    }
    const std::size_t room = width - percent.size() - 1;
    return Format("{} {}", StageText(meter.Stage(), std::min(room, kStageColumns)), percent);
  }
  std::string after;
  for (const std::string& text : texts) {
    if (fixed + kLeastBar + after.size() + 2 + text.size() > width) {
      break;
    }
    after += Format("  {}", text);
  }
  const std::size_t inside = std::min(width - fixed - after.size(), kWidestBar);
  return Format("{} {} {}{}", StageText(meter.Stage(), kStageColumns), Bar(meter, inside), percent,
                after);
}

}  // namespace

std::string RateText(const ProgressMeter& meter, std::optional<double> rate) {
  if (!rate) {
    return "";
  }
  const Unit unit = UnitOfRate(meter, *rate);
  return Format("{}{}/s", Number(*rate, unit), unit.size > 1 ? unit.name : "");
}

std::string LongRateText(const ProgressMeter& meter, std::optional<double> rate) {
  if (!rate) {
    return "";
  }
  const Unit unit = UnitOfRate(meter, *rate);
  return Format("{}{}/s", Number(*rate, unit), unit.name);
}

std::string AmountText(const ProgressMeter& meter, const char* between) {
  return Number(static_cast<double>(meter.DoneUnits()), UnitOfTotal(meter)) + between +
         TotalText(meter);
}

std::string TotalText(const ProgressMeter& meter) {
  const Unit unit = UnitOfTotal(meter);
  return Number(static_cast<double>(meter.Total()), unit) + unit.name;
}

std::string TimeLeftText(std::uint64_t seconds) {
  const std::uint64_t hours = seconds / 3600;
  const std::uint64_t minutes = seconds / 60 % 60;
  const std::string before =
      hours > 0 ? Format("{}:{}", hours, TwoDigits(minutes)) : std::to_string(minutes);
  return Format("{}:{}", before, TwoDigits(seconds % 60));
}

std::string DurationText(std::chrono::duration<double> time) {
  constexpr double kMinute = 59.95;
  if (time.count() < kMinute) {
    return Format("{} s", Decimal(time.count(), 1));
  }
  return TimeLeftText(static_cast<std::uint64_t>(std::llround(time.count())));
}

std::string BarText(const ProgressMeter& meter, std::size_t width) {
  // The widths of the longest texts: "1023.9 KiB/s", "59:59 left".
  constexpr std::size_t kRateColumns = 12;
  constexpr std::size_t kLeftColumns = 10;
  const auto left = meter.SecondsLeft();
  return Composed(meter, width,
                  {PaddedLeft(AmountText(meter), WidestAmount(meter)),
                   PaddedLeft(left ? Format("{} left", TimeLeftText(*left)) : "", kLeftColumns),
                   PaddedLeft(RateText(meter, meter.Rate()), kRateColumns)});
}

std::string FinishedBarText(const ProgressMeter& meter, std::size_t width) {
  std::vector<std::string> texts = {
      Format("{} in {}", TotalText(meter), DurationText(meter.Elapsed()))};
  if (meter.AverageRate()) {
    texts.push_back(RateText(meter, meter.AverageRate()));
  }
  return Composed(meter, width, texts);
}

}  // namespace borvanusb
