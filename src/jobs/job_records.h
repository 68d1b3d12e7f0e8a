#pragma once

// The data that each job passes to its thread. Addresses are hexadecimal text.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/list_entry.h"
#include "base/progress_callback.h"
#include "device/borvan_usb_base.h"

namespace borvan {

struct FlashWriteJob {
  std::string path;
  std::shared_ptr<BorvanUSBBase> device;
  ProgressCallback progress;
  std::string start_address;
};

struct FlashQuickReadJob {
  std::string path;
  std::shared_ptr<BorvanUSBBase> device;
  ProgressCallback progress;
  std::string start_address;
  std::string end_address;
};

struct RegisterWriteJob {
  std::shared_ptr<BorvanUSBBase> device;
  std::vector<ListEntry> list;
  std::uint32_t ignored = 0;
  ProgressCallback progress;
};

struct RegisterReadJob {
  std::string path;
  std::shared_ptr<BorvanUSBBase> device;
  ProgressCallback progress;
  std::string start_address;
  std::string end_address;
};

struct I2cWriteJob {
  std::shared_ptr<BorvanUSBBase> device;
  std::string path;
  ProgressCallback progress;
  std::uint32_t option = 0;
};

struct I2cReadJob {
  std::string path;
  std::shared_ptr<BorvanUSBBase> device;
  ProgressCallback progress;
  std::string slave;
  std::string start_address;
  std::string end_address;
  std::uint32_t mode = 0;
};

}  // namespace borvan
