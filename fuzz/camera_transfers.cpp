// A hostile host at the virtual camera: any selectors, blocks and lengths. Two objects that serve
// one device alternately answer like one object, and no answer exceeds its buffer.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "core/camera.h"
#include "support/check.h"
#include "support/input.h"
#include "support/memory_file.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::Input;
using virtual_camera::Answer;
using virtual_camera::Camera;

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t Code(std::uint32_t bits) {
  return static_cast<std::int32_t>(bits);
}
constexpr std::int32_t kGeneralFailure = Code(0x8007001F);
constexpr std::int32_t kBufferTooSmall = Code(0x8007007A);
constexpr std::int32_t kUnknownSelector = Code(0x80070490);
constexpr std::int32_t kMoreData = Code(0x800700EA);
constexpr std::uint8_t kUntouched = 0xEE;
constexpr std::size_t kMostTransfers = 20;

// The files of a device, reused for each input.
class DeviceFiles {
 public:
  virtual_camera::CameraConfiguration Renew(virtual_camera::CameraConfiguration configuration) {
    state_.Put({});
    if (flash_changed) {
      flash_.Put(Bytes(virtual_camera::kFlashMinimum, 0xFF));
      flash_changed = false;
    }
    configuration.flash.size = virtual_camera::kFlashMinimum;
    configuration.flash.file = flash_.Path();
    configuration.state_file = state_.Path();
    return configuration;
  }
  Bytes Flash() const { return flash_.Content(); }

  // Set it after transfers that may change the flash. Most inputs do not change it.
  bool flash_changed = true;

 private:
  borvan_fuzz::MemoryFile state_;
  borvan_fuzz::MemoryFile flash_;
};

virtual_camera::CameraConfiguration TakeConfiguration(Input& input) {
  virtual_camera::CameraConfiguration configuration;
  configuration.path = "\\\\?\\usb#vid_1234&pid_5678#fuzz";
  for (std::uint8_t mode = 0; mode <= 5; ++mode) {
    configuration.sensors.push_back(
        {.slave = static_cast<std::uint8_t>(0x40 + mode), .mode = mode, .registers = {{1, mode}}});
  }
  configuration.registers = {{0x1A3, 0x20}, {0xFFFFFFFF, 0x12345678}};
  const std::uint8_t kind = input.Byte();
  configuration.absent_slave = static_cast<virtual_camera::AbsentSlave>(kind % 3);
  configuration.list_header = static_cast<virtual_camera::ListHeader>(kind / 4 % 2);
  configuration.flash.beyond_end = static_cast<virtual_camera::BeyondEnd>(kind / 8 % 2);
  if (kind / 16 % 2 != 0) {
    for (std::uint32_t& length : configuration.lengths) {
      length = input.Byte();
    }
  }
  return configuration;
}

struct Transfer {
  std::uint32_t kind = 0;  // 0 and 1: set, 2: get, 3: length query
  std::uint32_t selector = 0;
  Bytes bytes;
};

// Most selectors are those of the chip, and most lengths those of its blocks.
Transfer TakeTransfer(Input& input) {
  constexpr std::array<std::size_t, 8> kLengths = {4, 12, 11, 64, 64, 64, 64, 4};
  Transfer transfer;
  const std::uint8_t head = input.Byte();
  transfer.kind = head % 4;
  transfer.selector = head / 4 % 8;
  const std::size_t usual = kLengths[(transfer.selector + 7) % 8];
  if (head / 32 == 7) {
    transfer.selector = input.Word();
  }
  const std::size_t length = head / 32 >= 6 ? input.Byte() : usual;
  if (transfer.kind < 2) {
    transfer.bytes = input.Bytes(head / 32 >= 4 ? length : input.Choice(12) + 1U);
  }
  transfer.bytes.resize(length, transfer.kind < 2 ? 0x00 : kUntouched);
  return transfer;
}

Answer Make(Camera& camera, const Transfer& transfer, Bytes& bytes) {
  bytes = transfer.bytes;
  switch (transfer.kind) {
    case 2:
      return camera.Get(transfer.selector, bytes);
    case 3:
      return camera.QueryLength(transfer.selector);
    default:
      return camera.Set(transfer.selector, bytes);
  }
}

void CheckAnswer(const Transfer& transfer, const Answer& answer, const Bytes& bytes,
                 const virtual_camera::CameraConfiguration& configuration) {
  if (transfer.selector < 1 || transfer.selector > 7) {
    CheckEqual(static_cast<std::uint32_t>(answer.result),
               static_cast<std::uint32_t>(kUnknownSelector), "answer to an unknown selector");
    return;
  }
  const std::uint32_t length = configuration.lengths[transfer.selector - 1];
  if (transfer.kind == 3) {
    Check(answer.result == kMoreData && answer.bytes == length, "answer to a length query");
    return;
  }
  if (transfer.kind != 2) {
    Check(answer.bytes == 0, "a set answers no bytes");
    Check(answer.result == 0 || answer.result == kGeneralFailure, "result of a set");
    return;
  }
  if (transfer.bytes.size() < length) {
    Check(answer.result == kBufferTooSmall, "a buffer that is too small");
  } else {
    Check(answer.result == 0 || answer.result == kGeneralFailure, "result of a get");
  }
  CheckEqual(answer.bytes, answer.result == 0 ? length : 0, "bytes answered");
  Check(std::all_of(bytes.begin() + answer.bytes, bytes.end(),
                    [](std::uint8_t byte) { return byte == kUntouched; }),
        "bytes behind the answer were touched");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static auto& alone_files = *new DeviceFiles;
  static auto& shared_files = *new DeviceFiles;
  Input input(data, size);
  const auto configuration = TakeConfiguration(input);
  Camera alone(alone_files.Renew(configuration));
  const auto shared = shared_files.Renew(configuration);
  Camera first(shared);
  Camera second(shared);
  for (std::size_t i = 0; i < kMostTransfers && !input.Empty(); ++i) {
    const Transfer transfer = TakeTransfer(input);
    if (transfer.kind < 2 && (transfer.selector == 3 || transfer.selector == 4)) {
      alone_files.flash_changed = true;
      shared_files.flash_changed = true;
    }
    Bytes expected;
    const Answer answer = Make(alone, transfer, expected);
    CheckAnswer(transfer, answer, expected, configuration);
    Bytes found;
    const Answer same = Make(i % 2 == 0 ? first : second, transfer, found);
    Check(same.result == answer.result && same.bytes == answer.bytes && found == expected,
          "two objects in turn answer otherwise than one");
  }
  Check(!alone_files.flash_changed || alone_files.Flash() == shared_files.Flash(),
        "two objects leave another flash than one");
  return 0;
}
