#pragma once

// What the commands that work with one camera share.

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>

#include "base/numbers.h"
#include "camera/camera.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/context.h"

namespace borvanusb {

// A camera that no other borvanusb process uses meanwhile.
struct ReservedCamera {
  std::unique_ptr<Host::Reservation> reservation;
  std::unique_ptr<Camera> camera;

  Camera* operator->() const { return camera.get(); }
};

// The chosen camera, for single accesses. Throws as ChosenCamera and Host::OpenCamera do.
std::unique_ptr<Camera> OpenChosenCamera(Context& context);
// The same for work of several accesses that belong together. Throws as Host::ReserveCamera, too.
ReservedCamera ReserveChosenCamera(Context& context);

// [{"address", "value"}…] of registers in a row.
nlohmann::ordered_json ValuesJson(const Range& range, std::span<const std::uint32_t> values);

// "14 registers", "1 register".
std::string Count(std::uint64_t number, const std::string& thing);

// Throws Failure kUsage for more registers than one command takes: reading them would take hours.
void CheckRegisterCount(const Range& range);

// The progress of reading registers one by one, which only many show.
class RowProgress {
 public:
  RowProgress(Context& context, std::uint64_t registers);
  void Advance(std::uint64_t done);
  void Done();

 private:
  Progress* progress_;  // null: none is shown
};

// Reads single registers of a row with progress.
std::vector<std::uint32_t> ReadEach(Context& context, const Range& range,
                                    const std::function<std::uint32_t(std::uint32_t)>& read);

// Tells on standard error that a command that did its work did not end well:
// "borvanusb: reg diff: 2 registers differ".
void TellOutcome(Context& context, const std::string& command, const std::string& outcome);

// Prints a text of several lines.
void PrintLines(std::string_view text, Output& output);
// Writes a dump: to standard output when `file` is empty or "-", else to the file.
void WriteDump(Context& context, const std::string& file, const std::string& text);
// Whether a dump to this file is to hold raw bytes: names that end in .bin.
bool IsRawFileName(const std::string& file);

}  // namespace borvanusb
