// The exports that start background jobs.

#include <borvan_usb.h>

#include <string>

#include "api/device_instance.h"
#include "api/guarded_call.h"
#include "base/hexadecimal_text.h"
#include "jobs/job_starters.h"
#include "jobs/progress.h"

using borvan::FormatHex;
using borvan::FormatHex8;
using borvan::GlobalInstance;
using borvan::Guarded;
using borvan::MakeProgressCallback;
using borvan::Succeeded;

namespace {

// A null name counts as empty, which every starter refuses.
std::string PathText(const char* file_name) {
  return file_name == nullptr ? "" : file_name;
}

}  // namespace

extern "C" {

bool UsbFlashWriteFile(const char* file_name, std::uint32_t start_address) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(borvan::StartFlashWriteJob(device, PathText(file_name),
                                                                     FormatHex8(start_address),
                                                                     MakeProgressCallback(device)));
  });
}

bool UsbFlashQuickReadFile(const char* file_name, std::uint32_t start_address,
                           std::uint32_t end_address) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(borvan::StartFlashQuickReadJob(
                                    device, PathText(file_name), FormatHex(start_address),
                                    FormatHex(end_address), MakeProgressCallback(device)));
  });
}

bool UsbRegisterReadFile(const char* file_name, std::uint32_t start_address,
                         std::uint32_t end_address) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(borvan::StartRegisterReadJob(
                                    device, PathText(file_name), FormatHex(start_address),
                                    FormatHex(end_address), MakeProgressCallback(device)));
  });
}

bool UsbRegisterWriteFile(const char* file_name) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(borvan::StartRegisterWriteJob(
                                    device, PathText(file_name), MakeProgressCallback(device)));
  });
}

bool UsbI2CReadFile(std::uint32_t start_address, std::uint32_t end_address, const char* file_name,
                    std::int32_t slave, std::uint32_t mode) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    // The slave keeps its sign: a negative one is read back as the largest number.
    const auto slave_bits = static_cast<std::uint64_t>(std::int64_t{slave});
    return device != nullptr &&
           Succeeded(borvan::StartI2cReadJob(device, PathText(file_name), FormatHex(slave_bits),
                                             FormatHex(start_address), FormatHex(end_address), mode,
                                             MakeProgressCallback(device)));
  });
}

bool UsbI2CWriteFile(const char* file_name, std::uint32_t option) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr &&
           Succeeded(borvan::StartI2cWriteJob(device, PathText(file_name), option,
                                              MakeProgressCallback(device)));
  });
}

}  // extern "C"
