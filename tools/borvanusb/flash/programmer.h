#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/failure.h"
#include "camera/host.h"
#include "command/context.h"
#include "flash/engine/image.h"
#include "flash/engine/journal_store.h"
#include "flash/engine/recovery.h"
#include "flash/engine/sector_plan.h"
#include "flash/engine/sector_writer.h"
#include "flash/engine/work_journal.h"
#include "flash/engine/work_state.h"
#include "flash/program.h"
#include "flash/report.h"

namespace borvanusb {

// Programs one image into one camera: exactly the image's bytes change. Lives for one run.
class FlashProgrammer {
 public:
  FlashProgrammer(const FlashProgramCommand& command, Context& context);
  ~FlashProgrammer();
  FlashProgrammer(const FlashProgrammer&) = delete;
  FlashProgrammer& operator=(const FlashProgrammer&) = delete;

  // Throws Failure; its message tells the state of the flash, its hint how to go on or back.
  ExitCode Run();

 private:
  class LastWords;

  void Work();
  void CheckNames() const;
  void CheckSize();
  void Look();
  void Expect();
  void Safeguard();
  void KeepBackup();
  void BeginJournal();
  void PlanWaysOn();
  void Program();
  void Verify();
  void End();
  [[noreturn]] void Fail(const Failure& failure);
  void SettleOpenSector(ExitCode code);
  std::string RestoreOldBytes();
  void WriteReport();

  SectorWriter Writer();
  Content Truth() const { return {sectors_.address, recovery_.truth}; }
  Content Before() const { return {sectors_.address, recovery_.before}; }
  Content After() const { return {sectors_.address, after_}; }

  const FlashProgramCommand& command_;
  Context& context_;
  std::shared_ptr<WorkState> state_ = std::make_shared<WorkState>();
  std::unique_ptr<LastWords> last_words_;
  ProgramOutcome outcome_;
  Image image_;
  CameraIdentity identity_;
  std::unique_ptr<Host::Reservation> reservation_;
  std::unique_ptr<Camera> camera_;

  SectorSpan sectors_;
  std::vector<std::uint8_t> now_;  // what the sectors hold when the work begins
  Recovery recovery_;
  std::vector<std::uint8_t> after_;  // what they shall hold

  std::optional<JournalStore> store_;
  std::optional<WorkJournal> journal_;
  std::optional<BackupRecord> backup_;
  SharedSectors shared_;
  Ranges vouched_;  // read back after all else was written
};

}  // namespace borvanusb
