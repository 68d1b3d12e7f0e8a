// The virtual camera's JSON configuration: any bytes give a configuration within the documented
// limits, or an error of one line that names the file.

#include <optional>
#include <string>

#include "core/configuration.h"
#include "core/names.h"
#include "support/check.h"
#include "support/memory_file.h"

namespace {

using borvan_fuzz::Check;
using virtual_camera::CameraConfiguration;
using virtual_camera::FaultConfiguration;

borvan_fuzz::MemoryFile& TheFile() {
  static auto& file = *new borvan_fuzz::MemoryFile;
  return file;
}

std::optional<virtual_camera::Configuration> Load(std::string& error) {
  try {
    return virtual_camera::LoadConfiguration(TheFile().Path());
  } catch (const virtual_camera::ConfigurationError& refused) {
    error = refused.what();
  } catch (const std::exception& foreign) {
    std::string what = "an error that is no ConfigurationError: ";
    borvan_fuzz::Fail(what + foreign.what());
  }
  return std::nullopt;
}

void CheckError(const std::string& error) {
  Check(error.starts_with(TheFile().Path() + ": "), "an error names the file: " + error);
  for (const char c : error) {
    const auto byte = static_cast<unsigned char>(c);
    Check(byte >= 0x20 && byte != 0x7F,
          "an error is one line without control characters: " + error);
  }
}

void CheckFault(const FaultConfiguration& fault) {
  Check(!fault.selector || (*fault.selector >= 1 && *fault.selector <= 7), "selector of a fault");
  const int conditions = (fault.at ? 1 : 0) + (fault.every ? 1 : 0) + (fault.probability ? 1 : 0);
  Check(conditions <= 1, "conditions of a fault");
  Check(fault.at.value_or(1) > 0 && fault.every.value_or(1) > 0, "counting starts at 1");
  const double probability = fault.probability.value_or(0);
  Check(probability >= 0 && probability <= 1, "probability");
  Check(fault.result || fault.wrong_tag || fault.length || fault.short_answer ||
            fault.delay_ms != 0 || fault.stuck_word || fault.lie || fault.unplug,
        "a fault that does nothing");
  Check(fault.delay_ms <= 600'000, "delay");
}

void CheckCamera(const CameraConfiguration& camera) {
  Check(!camera.path.empty() && !camera.state_file.empty() && !camera.flash.file.empty(),
        "names of a camera");
  Check(camera.state_file != camera.flash.file, "state and flash are two files");
  Check(camera.nodes.size() <= 255, "nodes");
  Check(camera.flash.size % 4096 == 0 && camera.flash.size >= virtual_camera::kFlashMinimum &&
            camera.flash.size <= virtual_camera::kFlashMaximum,
        "size of the flash");
  Check(camera.flash.erase_ms <= 60'000 && camera.flash.program_us <= 60'000'000, "busy times");
  for (const virtual_camera::SensorConfiguration& sensor : camera.sensors) {
    Check(sensor.mode <= 5, "width mode");
    for (const auto& [address, value] : sensor.registers) {
      Check(sensor.mode >= 3 || address <= (sensor.mode == 0 ? 0xFFU : 0xFFFFU), "an address");
      const bool byte = sensor.mode == 0 || sensor.mode == 1 || sensor.mode == 3;
      Check(sensor.mode == 5 || value <= (byte ? 0xFFU : 0xFFFFU), "a value");
    }
  }
  Check(camera.faults.size() <= virtual_camera::kMaxFaults, "number of faults");
  for (const FaultConfiguration& fault : camera.faults) {
    CheckFault(fault);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TheFile().Put({data, size});
  std::string error;
  const auto configuration = Load(error);
  if (!configuration) {
    CheckError(error);
    return 0;
  }
  for (std::size_t i = 0; i < configuration->cameras.size(); ++i) {
    CheckCamera(configuration->cameras[i]);
    for (std::size_t k = 0; k < i; ++k) {
      Check(!virtual_camera::SameDevicePath(configuration->cameras[i].path,
                                            configuration->cameras[k].path),
            "two paths alike");
    }
  }
  return 0;
}
