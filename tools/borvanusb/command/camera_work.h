#pragma once

// Common functions of commands that work with one camera.

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

// A camera that no other borvanusb process can use at the same time.
struct ReservedCamera {
  std::unique_ptr<Host::Reservation> reservation;
  std::unique_ptr<Camera> camera;

  Camera* operator->() const { return camera.get(); }
};

// Opens the chosen camera for single accesses. Throws the exceptions of ChosenCamera and
// Host::OpenCamera.
std::unique_ptr<Camera> OpenChosenCamera(Context& context);
// Opens and reserves it for accesses that belong together. Also throws the exceptions of
// Host::ReserveCamera.
ReservedCamera ReserveChosenCamera(Context& context);

// [{"address", "value"}…] of adjacent registers.
nlohmann::ordered_json ValuesJson(const Range& range, std::span<const std::uint32_t> values);

// "14 registers", "1 register".
std::string Count(std::uint64_t number, const std::string& thing);

// Throws Failure kUsage if there are more registers than a command accepts, because reading them
// would take hours.
void CheckRegisterCount(const Range& range);

// Progress of reading registers one by one. It is only shown if there are many.
class RowProgress {
 public:
  RowProgress(Context& context, std::uint64_t registers);
  void Advance(std::uint64_t done);
  void Done();

 private:
  Progress* progress_;  // null: not shown
};

// Reads adjacent registers one by one, with progress.
std::vector<std::uint32_t> ReadEach(Context& context, const Range& range,
                                    const std::function<std::uint32_t(std::uint32_t)>& read);

// For a command that did its work with a negative result: prints it to standard error, as in
// "borvanusb: reg diff: 2 registers differ".
void TellOutcome(Context& context, const std::string& command, const std::string& outcome);

// Prints a text of several lines.
void PrintLines(std::string_view text, Output& output);
// Prints each line of a hint, indented, below its failure.
void PrintHint(std::string_view hint, Output& output);
// Writes a dump to the file, or to standard output if `file` is empty or "-".
void WriteDump(Context& context, const std::string& file, const std::string& text);
// Whether a dump to this file contains raw bytes, because its name ends in .bin.
bool IsRawFileName(const std::string& file);

}  // namespace borvanusb
