#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "command/context.h"
#include "flash/engine/image.h"
#include "flash/engine/program_steps.h"
#include "flash/image_files.h"
#include "flash/program.h"
#include "flash/report.h"

namespace borvanusb {

// Programs one image into one camera: runs the steps of flash/engine/program_steps.h and reports
// them. Use one object per run.
class FlashProgrammer {
 public:
  FlashProgrammer(const FlashProgramCommand& command, Context& context);
  ~FlashProgrammer();
  FlashProgrammer(const FlashProgrammer&) = delete;
  FlashProgrammer& operator=(const FlashProgrammer&) = delete;

  // Throws Failure. Its message has the state of the flash, its hint how to continue or restore.
  ExitCode Run();

 private:
  class Site;

  void CheckNames() const;
  void LoadWanted();
  void PlaceWanted(const CameraIdentity& camera);
  void Work();
  void Change(const ProgramPlan& plan);
  void PlanWaysOn(const ProgramPlan& plan);
  [[noreturn]] void Fail(const Failure& failure);
  void WriteReport() const;

  const FlashProgramCommand& command_;
  Context& context_;
  const std::shared_ptr<WorkState> state_ = std::make_shared<WorkState>();
  ProgramOutcome outcome_;
  std::vector<ImageFile> files_;  // until their positions are known
  Image image_;
  std::unique_ptr<Site> site_;  // null until the camera is open
  FlashExamination seen_;
  Security security_;
  ToldSize told_size_;
  bool touches_read_only_ = false;  // allowed with --force
};

}  // namespace borvanusb
