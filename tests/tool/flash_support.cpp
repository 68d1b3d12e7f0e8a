#include "flash_support.h"

#include <algorithm>
#include <random>

#include "base/files.h"

namespace borvanusb::tool_test {

Bytes Pattern(std::size_t size, std::uint32_t seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(1 + random() % 254);
  }
  return bytes;
}

Bytes Overlaid(Bytes bytes, std::size_t offset, const Bytes& part) {
  std::copy(part.begin(), part.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
  return bytes;
}

FlashTest::FlashTest() {
  const auto* info = testing::UnitTest::GetInstance()->current_test_info();
  // In memory if possible: flushing journals to a disk would take most of the time.
  const std::filesystem::path in_memory = "/dev/shm";
  folder_ = (std::filesystem::is_directory(in_memory) ? in_memory
                                                      : std::filesystem::temp_directory_path()) /
            ("borvanusb-" + std::string(info->test_suite_name()) + "-" + info->name() + "-" +
             std::to_string(std::random_device()()));
  std::filesystem::create_directories(folder_);
  host.journal_folder = File("journals");
  // Backups without a given name are written to the current folder.
  former_folder_ = std::filesystem::current_path();
  std::filesystem::current_path(folder_);
}

FlashTest::~FlashTest() {
  std::error_code error;
  std::filesystem::current_path(former_folder_, error);
  std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, error);
  std::filesystem::remove_all(folder_, error);
}

std::string FlashTest::WriteFile(const std::string& name, const Bytes& bytes) const {
  std::ofstream file(folder_ / name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return File(name);
}

Bytes FlashTest::ReadFile(const std::string& name) const {
  std::ifstream file(folder_ / name, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << name;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> FlashTest::FilesWith(const std::string& part) const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
    const std::string name = entry.path().filename().string();
    if (name.find(part) != std::string::npos) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> FlashTest::Journals() const {
  std::vector<std::string> names;
  for (const std::string& name : FilesIn(host.journal_folder)) {
    names.push_back(host.journal_folder + "/" + name);
  }
  return names;
}

void FlashTest::FailFrom(std::uint64_t transfer, ExitCode code) {
  const std::uint64_t first = Chip().transfers + transfer;
  Chip().before_transfer = [first, code](std::uint64_t number) {
    if (number >= first) {
      throw Failure(code, "the camera is gone");
    }
  };
}

void FlashTest::FailAt(std::uint64_t transfer, ExitCode code) {
  const std::uint64_t only = Chip().transfers + transfer;
  Chip().before_transfer = [only, code](std::uint64_t number) {
    if (number == only) {
      throw Failure(code, "the transfer failed");
    }
  };
}

void FlashTest::Heal() {
  Chip().before_transfer = {};
  Chip().after_programming = {};
  host.stop_requested = false;
}

}  // namespace borvanusb::tool_test
