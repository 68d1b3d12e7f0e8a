#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "command/context.h"
#include "registers/written_registers.h"

namespace borvanusb {

// How `reg load` and `i2c load` verify that the camera has the values of a list.

struct WrongRegister {
  std::optional<I2cRegister> i2c;  // nothing: a register of the chip
  std::uint32_t address = 0;
  std::uint32_t expected = 0;
  std::uint32_t found = 0;
};

struct ReadBack {
  std::uint64_t compared = 0;
  std::vector<WrongRegister> wrong;  // sorted by address
};

// Read each register back, and show progress. Throw Failure as the camera does; the message says
// that the list has been written.
ReadBack ReadBackRegisters(const RegisterValues& written, Camera& camera, Context& context);
ReadBack ReadBackI2c(const WrittenI2cRegisters& written, std::uint32_t option, Camera& camera,
                     Context& context);

// Adds "verified", "compared" and "wrong" to the result. If registers are wrong, prints them to
// standard error and returns kVerify.
//   command  "reg load"
ExitCode ReportReadBack(const std::string& command, const std::string& file,
                        const ReadBack& read_back, Context& context);

// ", all read back equal", for the line about the written list.
std::string ReadBackText(const ReadBack& read_back);

}  // namespace borvanusb
