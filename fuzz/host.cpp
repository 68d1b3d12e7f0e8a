// A complete host: the exports in any order with any arguments, on cameras that are connected,
// disconnected and answer anything, with jobs that run, are interrupted by other calls and are
// asked to stop. The guarantees of the header about results and progress must always hold.

#include <borvan_usb.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "api/device_instance.h"
#include "support/check.h"
#include "support/hostile_control.h"
#include "support/input.h"
#include "support/memory_platform.h"
#include "support/temporary_folder.h"
#include "support/turns.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::Input;

constexpr std::uint32_t kUntouched = 0x5AA5C33C;
constexpr std::uint32_t kLongestRange = 300;
constexpr int kMostCalls = 60;
constexpr int kMostCallsInTransfers = 20;

bool HasInstance() {
  return borvan::GlobalInstance().Get() != nullptr;
}

class Host {
 public:
  explicit Host(Input& input) : input_(input), conversation_(input) {
    borvan_fuzz::TheSystem() = {};
    borvan_fuzz::TheSystem().devices = {{u"\\\\?\\usb#vid_1234&pid_5678", u"camera"}};
    conversation_.before_answer = [this] { DuringTransfer(); };
    borvan_fuzz::SetConversation(&conversation_);
  }
  ~Host() {
    while (turns_.RunNext()) {
    }
    CheckAtRest();
    borvan::GlobalInstance().Set(nullptr);
    borvan_fuzz::SetConversation(nullptr);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  void Run() {
    UsbIniDevice();
    Select(0);
    for (int i = 0; i < kMostCalls && !input_.Empty(); ++i) {
      Call(input_.Byte());
      CheckProgress();
    }
  }

 private:
  void Call(std::uint8_t kind);
  void CallOfInstance(std::uint32_t kind);
  void CallOfAccess(std::uint32_t kind);
  void CallOfJob(std::uint32_t kind);
  bool LastTransferWentWell() const;
  void ChangeSystem();
  void Select(std::int32_t index);
  void List();
  const char* TakeFileName();
  std::uint32_t EndOf(std::uint32_t start);
  void DuringTransfer();
  static void CheckProgress();
  static void CheckAtRest();

  Input& input_;
  borvan_fuzz::Conversation conversation_;
  borvan_fuzz::Turns turns_;
  bool in_job_ = false;
  bool in_call_of_transfer_ = false;
  int calls_in_transfers_ = 0;
  std::string file_name_;
};

void Host::Call(std::uint8_t kind) {
  conversation_.exchanges.clear();
  if (kind < 0x40) {
    CallOfInstance(kind % 8);
  } else if (kind < 0x80) {
    CallOfAccess(kind % 7);
  } else if (kind < 0xC0) {
    CallOfJob(kind % 6);
  } else if (kind < 0xE0) {
    if (!in_job_) {
      in_job_ = true;
      turns_.RunNext();
      in_job_ = false;
    }
  } else if (const auto device = borvan::GlobalInstance().Get(); device != nullptr) {
    device->Jobs().stop_requested = true;
  }
}

// While a job waits for the camera, the host's own thread continues.
void Host::DuringTransfer() {
  if (!in_job_ || in_call_of_transfer_ || calls_in_transfers_ >= kMostCallsInTransfers ||
      input_.Choice(16) != 15) {
    return;
  }
  ++calls_in_transfers_;
  in_call_of_transfer_ = true;
  Call(input_.Byte());
  CheckProgress();
  in_call_of_transfer_ = false;
}

void Host::CallOfInstance(std::uint32_t kind) {
  if (kind == 0) {
    UsbIniDevice();
    Check(HasInstance(), "an instance after UsbIniDevice");
  } else if (kind == 1) {
    Check(UsbUpdateDevice() <= HasInstance(), "a list without an instance");
  } else if (kind == 2) {
    ChangeSystem();
  } else if (!HasInstance()) {
    Check(!UsbSelectDevice(-1), "a negative index");
  } else if (kind == 3) {
    Check(UsbDestroyUSB() && !HasInstance(), "no instance after UsbDestroyUSB");
  } else if (kind == 4) {
    List();
  } else {
    Select(static_cast<std::int8_t>(input_.Byte()));
  }
}

void Host::Select(std::int32_t index) {
  try {
    const bool selected = UsbSelectDevice(index);
    Check(selected == (index >= 0 && index < UsbGetDeviceNum()), "result of a selection");
  } catch (const char* message) {
    Check(std::string(message).starts_with("ERROR: "), "message of a camera that refuses");
  }
}

void Host::List() {
  const std::int32_t count = UsbGetDeviceNum();
  Check(count >= 0 && static_cast<std::size_t>(count) <=
                          borvan::GlobalInstance().Get()->GetDeviceList().size(),
        "number of cameras");
  const std::unique_ptr<UsbDeviceInfo[]> records(UsbGetAllDeviceInfo());
  char text[kBorvanTextFieldSize + 1];
  for (std::int32_t i = 0; i < count; ++i) {
    borvan_copy_text(records[static_cast<std::size_t>(i)].path, text);
    Check(borvan_id_number(records[static_cast<std::size_t>(i)].product_id) >= 0, "an ID");
  }
  borvan_copy_text(UsbGetSelectDeviceInfo().name, text);
}

void Host::ChangeSystem() {
  borvan_fuzz::SystemScript& system = borvan_fuzz::TheSystem();
  const std::uint32_t outcome = input_.Choice(16);
  system.outcome = static_cast<borvan::VideoInputListing::Outcome>(outcome < 2 ? outcome : 2);
  system.result = static_cast<borvan::Result>(outcome < 4 ? input_.Word() : 1);
  system.devices.clear();
  const std::uint32_t count = input_.Choice(5);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t kind = input_.Byte();
    borvan_fuzz::ListedDevice device;
    device.path = kind % 8 == 7 ? u"pci#" : u"usb#vid_12";
    device.path->push_back(static_cast<char16_t>(u'0' + kind / 16));
    device.name = std::u16string(input_.Byte(), u'n');
    device.vendor_nodes = kind % 3;
    device.refuses = kind % 5 == 4;
    system.devices.push_back(device);
  }
}

void Host::CallOfAccess(std::uint32_t kind) {
  const std::uint32_t address = input_.Word();
  const std::uint32_t number = input_.Word();
  const std::uint8_t flag = input_.Byte();
  const auto mode = static_cast<std::int32_t>(flag) - 1;
  std::uint32_t value = kUntouched;
  std::uint32_t* const target = flag == 0xFF ? nullptr : &value;
  bool done = false;
  switch (kind) {
    case 0:
      done = UsbRegisterRead(address, target, flag);
      Check(done || value == kUntouched, "the value of a read that failed");
      break;
    case 1:
      done = UsbRegisterWrite(address, number, flag);
      break;
    case 2:
      done = UsbI2cRead(number, address, target, mode, number);
      Check(done || value == kUntouched, "the value of a read that failed");
      break;
    case 3:
      done = UsbI2cWrite(number, address, number, mode, number);
      break;
    case 4:
      done = UsbFlashRead(address, target);
      Check(done == HasInstance(), "a flash read succeeds whenever there is an instance");
      break;
    case 5:
      done = UsbFlashWrite(address, number);
      break;
    default:
      done = UsbFlashErase(address);
      break;
  }
  Check(!done || HasInstance(), "an access without an instance");
  Check(kind == 4 || done == LastTransferWentWell(), "the result is not that of the last transfer");
}

// False if there was none, or only a length query.
bool Host::LastTransferWentWell() const {
  if (conversation_.exchanges.empty()) {
    return false;
  }
  const borvan_fuzz::Exchange& last = conversation_.exchanges.back();
  return last.direction != borvan_fuzz::Direction::kLengthQuery && last.result >= 0;
}

const borvan_test::TemporaryFolder& Folder() {
  static const borvan_test::TemporaryFolder kFolder;
  return kFolder;
}

// Null, empty, missing, a folder, a file to write, or a file to read with content from the input.
const char* Host::TakeFileName() {
  const std::uint8_t kind = input_.Byte();
  switch (kind % 16) {
    case 0:
      return nullptr;
    case 1:
      file_name_.clear();
      break;
    case 2:
      file_name_ = Folder().Path("missing/file");
      break;
    case 3:
      file_name_ = Folder().Path("");
      break;
    case 4:
    case 5:
      file_name_ = Folder().Path("dump.txt");
      break;
    case 6:
    case 7:
      file_name_ = Folder().Path("dump.bin");
      break;
    default: {
      const std::string content = input_.Text();
      std::string repeated;
      for (int i = 0; i <= kind / 16; ++i) {
        repeated += content;
      }
      file_name_ = Folder().Put("input", repeated);
      break;
    }
  }
  return file_name_.c_str();
}

// Ranges that such a device can process quickly, and ranges that end before they begin.
std::uint32_t Host::EndOf(std::uint32_t start) {
  const std::uint32_t end = start - 2 + input_.Half() % kLongestRange;
  return end >= start && end - start > kLongestRange ? start : end;
}

void Host::CallOfJob(std::uint32_t kind) {
  const char* const file_name = TakeFileName();
  const std::uint32_t start = input_.Word();
  bool started = false;
  switch (kind) {
    case 0:
      started = UsbFlashWriteFile(file_name, start);
      break;
    case 1:
      started = UsbFlashQuickReadFile(file_name, start, EndOf(start));
      break;
    case 2:
      started = UsbRegisterReadFile(file_name, start, EndOf(start));
      break;
    case 3:
      started = UsbRegisterWriteFile(file_name);
      break;
    case 4: {
      const auto slave = static_cast<std::int32_t>(input_.Word());
      started = UsbI2CReadFile(start, EndOf(start), file_name, slave, input_.Byte());
      break;
    }
    default:
      started = UsbI2CWriteFile(file_name, start);
      break;
  }
  const bool named = file_name != nullptr && *file_name != '\0';
  Check(!started || (named && HasInstance()), "a job without an instance or a file");
}

// Here, jobs never run at the same time, so a value never combines two reports.
void Host::CheckProgress() {
  const std::uint64_t progress = GetProgressInfo();
  const std::int32_t percent = borvan_progress_percent(progress);
  const std::int32_t status = borvan_progress_status(progress);
  Check(percent >= 0 && percent <= 100, "a percentage");
  Check(status == 0 || percent == 0, "a percentage beside a status");
  Check(HasInstance() || progress == 0, "progress without an instance");
  switch (borvan_progress_state(progress)) {
    case kBorvanProgressRunning:
      Check(status == 0 && percent < 100, "running");
      break;
    case kBorvanProgressDone:
      Check(status == 0 && percent == 100, "done");
      break;
    case kBorvanProgressFailed:
      Check(status < 0, "failed");
      break;
    case kBorvanProgressNotice:
      Check(status > 0, "a notice");
      break;
  }
}

// Called when every job has ended and every 100 was cleared.
void Host::CheckAtRest() {
  CheckProgress();
  const auto device = borvan::GlobalInstance().Get();
  if (device == nullptr) {
    return;
  }
  Check(!device->Jobs().job_running, "a job still counts as running");
  Check(borvan_progress_percent(GetProgressInfo()) < 100, "100 stays");
}

}  // namespace

namespace borvan {

std::unique_ptr<DevicePlatform> MakeDevicePlatform() {
  return borvan_fuzz::MakeMemoryPlatform();
}

}  // namespace borvan

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Folder();
  Input input(data, size);
  Host(input).Run();
  return 0;
}
