#include "command/camera_table.h"

#include <algorithm>

#include "base/format.h"
#include "output/columns.h"

namespace borvanusb {

namespace {

constexpr std::size_t kNameWidth = 27;
constexpr std::size_t kStageWidth = 8;
constexpr int kBarWidth = 20;
constexpr int kWhole = 100;
constexpr int kPercentBetweenLines = 25;
constexpr double kKibi = 1024;
constexpr std::chrono::milliseconds kRedraw{100};

std::string RateText(double rate) {
  if (rate <= 0) {
    return "";
  }
  return Format("  {:.1f} KiB/s", rate / kKibi);
}

}  // namespace

CameraTable::CameraTable(const std::vector<CameraIdentity>& cameras, Output& output,
                         const Host& host, Mode mode)
    : output_(output), host_(host), mode_(mode) {
  for (const CameraIdentity& camera : cameras) {
    rows_.push_back(
        {.camera = Format("{}  {}:{}  {}", camera.index, camera.vid, camera.pid, camera.name),
         .stage = "waiting",
         .percent = 0,
         .rate = 0,
         .told_stage = {},
         .told_percent = 0});
  }
  Draw(true);
}

void CameraTable::SetProgress(std::size_t camera, const std::string& stage, int percent,
                              double rate) {
  Row& row = rows_.at(camera);
  row.stage = stage;
  row.percent = std::clamp(percent, 0, kWhole);
  row.rate = rate;
  TellLine(row);
  Draw(false);
}

void CameraTable::SetEnd(std::size_t camera, bool well) {
  Row& row = rows_.at(camera);
  row.stage = well ? "done" : "failed";
  row.percent = well ? kWhole : row.percent;
  row.rate = 0;
  TellLine(row);
  Draw(true);
}

void CameraTable::Remark(std::size_t camera, const std::string& text) {
  const std::string line = Format("{}: {}", rows_.at(camera).camera, text);
  if (mode_ == Mode::kBars) {
    remarks_.push_back(line);
  } else {
    output_.Note(line);
  }
}

void CameraTable::End() {
  Draw(true);
  for (const std::string& remark : remarks_) {
    output_.Note(remark);
  }
  remarks_.clear();
}

void CameraTable::TellLine(Row& row) {
  if (mode_ != Mode::kLines) {
    return;
  }
  if (row.stage == row.told_stage && row.percent < row.told_percent + kPercentBetweenLines) {
    return;
  }
  row.told_stage = row.stage;
  row.told_percent = row.percent / kPercentBetweenLines * kPercentBetweenLines;
  output_.Note(Format("{}: {} {} %", row.camera, row.stage, row.percent));
}

void CameraTable::Draw(bool at_once) {
  if (mode_ != Mode::kBars) {
    return;
  }
  const auto now = host_.Clock();
  if (!at_once && drawn_ && now - drawn_at_ < kRedraw) {
    return;
  }
  if (drawn_) {
    output_.MoveUp(static_cast<int>(rows_.size()));
  }
  // Keeps the last column free: on some terminals a full row would wrap and shift the others.
  const auto width = static_cast<std::size_t>(std::max(output_.ErrorColumns() - 1, 1));
  for (const Row& row : rows_) {
    output_.Row(Fitted(RowText(row), width));
  }
  drawn_ = true;
  drawn_at_ = now;
}

std::string CameraTable::RowText(const Row& row) const {
  const int filled = row.percent * kBarWidth / kWhole;
  return Format("{} {} [{:=<{}}{:<{}}] {:3} %{}", Fitted(row.camera, kNameWidth),
                Fitted(row.stage, kStageWidth), "", filled, "", kBarWidth - filled, row.percent,
                RateText(row.rate));
}

}  // namespace borvanusb
