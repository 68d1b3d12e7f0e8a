#include "output/make_progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "base/format.h"
#include "output/printable.h"
#include "output/progress_meter.h"
#include "output/progress_text.h"

namespace borvanusb {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Sink = std::function<void(std::string_view)>;
using Clock = std::function<std::chrono::steady_clock::time_point()>;

constexpr milliseconds kBetweenDrawings{100};

// The common part of all forms. It keeps the numbers, and it ignores calls if no bar is open.
class MeteredProgress : public Progress {
 public:
  MeteredProgress(Sink sink, Clock clock) : sink_(std::move(sink)), clock_(std::move(clock)) {}

  void Begin(std::string_view stage, std::uint64_t total, ProgressUnit unit) override {
    Break();
    open_ = true;
    meter_.Begin(Printable(stage), total, clock_(), unit);
    ShowBegin();
  }
  void Stage(std::string_view stage) override {
    if (open_) {
      meter_.SetStage(Printable(stage));
      Change(meter_.DoneUnits());
    }
  }
  void Advance(std::uint64_t done) override {
    if (open_) {
      Change(done);
    }
  }
  void Done() override {
    if (open_) {
      open_ = false;
      meter_.Finish(clock_());
      ShowEnd(true);
    }
  }
  void Break() override {
    if (open_) {
      open_ = false;
      ShowEnd(false);
    }
  }

 protected:
  virtual void ShowBegin() = 0;
  virtual void ShowChange(ProgressMeter::Time now) = 0;
  virtual void ShowEnd(bool complete) = 0;

  const ProgressMeter& Meter() const { return meter_; }
  void Write(std::string_view text) const { sink_(text); }
  ProgressMeter::Time Now() const { return clock_(); }

 private:
  void Change(std::uint64_t done) {
    const ProgressMeter::Time now = clock_();
    meter_.Advance(done, now);
    ShowChange(now);
  }

  Sink sink_;
  Clock clock_;
  ProgressMeter meter_;
  bool open_ = false;
};

class BarProgress : public MeteredProgress {
 public:
  BarProgress(std::function<int()> columns, Sink sink, Clock clock)
      : MeteredProgress(std::move(sink), std::move(clock)), columns_(std::move(columns)) {}

  void Hide() override {
    if (drawn_ > 0) {
      std::string blanks(drawn_ + 2, ' ');
      blanks.front() = '\r';
      blanks.back() = '\r';
      Write(blanks);
      drawn_ = 0;
    }
  }

 protected:
  void ShowBegin() override { Draw(BarText(Meter(), Width()), Now()); }
  void ShowChange(ProgressMeter::Time now) override {
    if (now - last_ >= kBetweenDrawings) {
      Draw(BarText(Meter(), Width()), now);
    }
  }
  void ShowEnd(bool complete) override {
    Draw(complete ? FinishedBarText(Meter(), Width()) : BarText(Meter(), Width()), Now());
    Write("\n");
    drawn_ = 0;
  }

 private:
  // Leaves the last column free, because some consoles start a new line when it is written.
  std::size_t Width() const {
    constexpr int kUsualColumns = 80;
    const int columns = columns_();
    return static_cast<std::size_t>((columns > 0 ? columns : kUsualColumns) - 1);
  }

  void Draw(std::string text, ProgressMeter::Time now) {
    const std::size_t length = text.size();
    // Blanks overwrite the rest of a longer previous text, but not beyond the terminal's width.
    const std::size_t before = std::min(drawn_, Width());
    if (before > length) {
      text.append(before - length, ' ');
    }
    Write(Format("\r{}", text));
    drawn_ = length;
    last_ = now;
  }

  std::function<int()> columns_;
  std::size_t drawn_ = 0;  // number of characters shown in the line
  ProgressMeter::Time last_;
};

class LinesProgress : public MeteredProgress {
 public:
  using MeteredProgress::MeteredProgress;

 protected:
  void ShowBegin() override {
    last_ = Now();
    quarter_ = 0;
    Write(Format("{}: {}\n", Meter().Stage(), TotalText(Meter())));
  }
  void ShowChange(ProgressMeter::Time now) override {
    // A short operation prints no lines between its first and its last.
    constexpr seconds kQuickly{1};
    constexpr seconds kLong{5};
    constexpr int kQuarter = 25;
    const int percent = Meter().Percent();
    const bool next_quarter = percent / kQuarter > quarter_ && now - last_ >= kQuickly;
    if (percent < 100 && (next_quarter || now - last_ >= kLong)) {
      last_ = now;
      quarter_ = percent / kQuarter;
      Write(Format("{}: {}\n", Meter().Stage(), State()));
    }
  }
  void ShowEnd(bool complete) override {
    if (!complete) {
      Write(Format("{}: ended at {}\n", Meter().Stage(), State()));
      return;
    }
    const std::string rate = LongRateText(Meter(), Meter().AverageRate());
    Write(Format("{}: done, {} in {}{}\n", Meter().Stage(), TotalText(Meter()),
                 DurationText(Meter().Elapsed()), rate.empty() ? "" : Format(", {}", rate)));
  }

 private:
  std::string State() const {
    const std::string rate = LongRateText(Meter(), Meter().Rate());
    const auto left = Meter().SecondsLeft();
    return Format("{} %, {}{}{}", Meter().Percent(), AmountText(Meter(), " of "),
                  rate.empty() ? "" : Format(", {}", rate),
                  left ? Format(", {} left", TimeLeftText(*left)) : "");
  }

  ProgressMeter::Time last_;
  int quarter_ = 0;
};

class EndsProgress : public LinesProgress {
 public:
  using LinesProgress::LinesProgress;

 protected:
  void ShowBegin() override {}
  void ShowChange(ProgressMeter::Time /*now*/) override {}
};

class BothProgress : public Progress {
 public:
  BothProgress(std::unique_ptr<Progress> first, std::unique_ptr<Progress> second)
      : first_(std::move(first)), second_(std::move(second)) {}

  void Begin(std::string_view stage, std::uint64_t total, ProgressUnit unit) override {
    first_->Begin(stage, total, unit);
    second_->Begin(stage, total, unit);
  }
  void Stage(std::string_view stage) override {
    first_->Stage(stage);
    second_->Stage(stage);
  }
  void Advance(std::uint64_t done) override {
    first_->Advance(done);
    second_->Advance(done);
  }
  void Done() override {
    first_->Done();
    second_->Done();
  }
  void Break() override {
    first_->Break();
    second_->Break();
  }
  void Hide() override {
    first_->Hide();
    second_->Hide();
  }

 private:
  std::unique_ptr<Progress> first_;
  std::unique_ptr<Progress> second_;
};

class JsonProgress : public MeteredProgress {
 public:
  using MeteredProgress::MeteredProgress;

 protected:
  void ShowBegin() override { Print(Now()); }
  void ShowChange(ProgressMeter::Time now) override {
    if (now - last_ >= kBetweenDrawings || Meter().Stage() != stage_) {
      Print(now);
    }
  }
  void ShowEnd(bool) override { Print(Now()); }

 private:
  void Print(ProgressMeter::Time now) {
    last_ = now;
    stage_ = Meter().Stage();
    const auto rate = Meter().Rate();
    const auto left = Meter().SecondsLeft();
    nlohmann::ordered_json state;
    state["stage"] = Meter().Stage();
    state["done"] = Meter().DoneUnits();
    state["total"] = Meter().Total();
    state["unit"] = NameOf(Meter().Unit());
    state["percent"] = Meter().Percent();
    state["rate"] = nullptr;
    if (rate) {
      state["rate"] = std::llround(*rate);
    }
    state["seconds_left"] = nullptr;
    if (left) {
      state["seconds_left"] = *left;
    }
    const nlohmann::ordered_json line = {{"progress", state}};
    Write(Format("{}\n", line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)));
  }

  ProgressMeter::Time last_;
  std::string stage_;
};

class NoProgress : public Progress {
 public:
  void Begin(std::string_view, std::uint64_t, ProgressUnit) override {}
  void Stage(std::string_view) override {}
  void Advance(std::uint64_t) override {}
  void Done() override {}
  void Break() override {}
};

}  // namespace

std::unique_ptr<Progress> MakeProgress(
    ProgressMode mode, bool terminal, std::function<int()> columns,
    std::function<void(std::string_view)> sink,
    std::function<std::chrono::steady_clock::time_point()> clock) {
  if (mode == ProgressMode::kAuto) {
    mode = terminal ? ProgressMode::kBar : ProgressMode::kLines;
  }
  switch (mode) {
    case ProgressMode::kBar:
      return std::make_unique<BarProgress>(std::move(columns), std::move(sink), std::move(clock));
    case ProgressMode::kLines:
      return std::make_unique<LinesProgress>(std::move(sink), std::move(clock));
    case ProgressMode::kJson:
      return std::make_unique<JsonProgress>(std::move(sink), std::move(clock));
    case ProgressMode::kAuto:
    case ProgressMode::kNone:
      break;
  }
  return std::make_unique<NoProgress>();
}

std::unique_ptr<Progress> MakeProgressOfEnds(
    std::function<void(std::string_view)> sink,
    std::function<std::chrono::steady_clock::time_point()> clock) {
  return std::make_unique<EndsProgress>(std::move(sink), std::move(clock));
}

std::unique_ptr<Progress> ShowOnBoth(std::unique_ptr<Progress> first,
                                     std::unique_ptr<Progress> second) {
  return std::make_unique<BothProgress>(std::move(first), std::move(second));
}

}  // namespace borvanusb
