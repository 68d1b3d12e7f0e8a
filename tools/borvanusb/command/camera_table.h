#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/host.h"
#include "output/output.h"

namespace borvanusb {

// How far several cameras are, on standard error: a table of bars that is drawn over and over on a
// terminal, or plain lines now and then.
class CameraTable {
 public:
  enum class Mode { kBars, kLines, kNone };

  CameraTable(const std::vector<CameraIdentity>& cameras, Output& output, const Host& host,
              Mode mode);

  // `percent` 0 to 100; `rate` in bytes a second, 0 when it is not known.
  void SetProgress(std::size_t camera, const std::string& stage, int percent, double rate);
  // How it ended, in place of a stage.
  void SetEnd(std::size_t camera, bool well);
  // A line that a camera's process wrote; with bars it waits until the table is complete.
  void Remark(std::size_t camera, const std::string& text);
  // Draws the table for the last time and shows the remarks.
  void End();

 private:
  struct Row {
    std::string camera;
    std::string stage;
    int percent = 0;
    double rate = 0;
    std::string told_stage;  // in the last plain line
    int told_percent = 0;
  };

  void Draw(bool at_once);
  void TellLine(Row& row);
  std::string RowText(const Row& row) const;

  Output& output_;
  const Host& host_;
  Mode mode_;
  std::vector<Row> rows_;
  std::vector<std::string> remarks_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point drawn_at_;
};

}  // namespace borvanusb
