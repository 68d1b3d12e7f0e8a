#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/host.h"
#include "output/output.h"

namespace borvanusb {

// Shows the progress of several cameras on standard error: a table of bars that is redrawn on a
// terminal, or plain lines at intervals.
class CameraTable {
 public:
  enum class Mode { kBars, kLines, kNone };

  CameraTable(const std::vector<CameraIdentity>& cameras, Output& output, const Host& host,
              Mode mode);

  // `percent` is 0 to 100. `rate` is in bytes per second, 0 if unknown.
  void SetProgress(std::size_t camera, const std::string& stage, int percent, double rate);
  // Shows the result instead of a stage.
  void SetEnd(std::size_t camera, bool well);
  // A line from a camera's process. With bars, it is shown after the table is complete.
  void Remark(std::size_t camera, const std::string& text);
  // Draws the table for the last time and prints the remarks.
  void End();

 private:
  struct Row {
    std::string camera;
    std::string stage;
    int percent = 0;
    double rate = 0;
    std::string told_stage;  // of the last plain line
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
