#include "core/state_file.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "core/configuration.h"
#include "core/format.h"

namespace virtual_camera {
namespace {

constexpr std::uint64_t kSlotSize = 2048;
constexpr std::uint64_t kLogBase = 2 * kSlotSize;
constexpr std::array<std::uint8_t, 8> kMagic = {'v', 'c', 's', 't', 'a', 't', 'e', '1'};
constexpr std::size_t kSequencePosition = 8;
constexpr std::size_t kLogNumberPosition = 16;
constexpr std::size_t kLogStartPosition = 24;
constexpr std::size_t kLogRecordsPosition = 32;
constexpr std::size_t kFieldsPosition = 40;
constexpr std::size_t kChecksumPosition = kFieldsPosition + kDeviceFieldsSize;
constexpr std::size_t kHeadSize = kChecksumPosition + 8;
static_assert(kHeadSize <= kSlotSize);

constexpr std::size_t kRecordSize = 12;  // key 8, value 4
// A log is written anew when it holds many more records than there are registers.
constexpr std::uint64_t kSmallLog = 4096;
constexpr std::uint64_t kSlackFactor = 4;

using Slot = std::array<std::uint8_t, kHeadSize>;

void PutNumber(std::span<std::uint8_t> bytes, std::size_t position, std::uint64_t value,
               std::size_t size = 8) {
  for (std::size_t i = 0; i < size; ++i) {
    bytes[position + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

std::uint64_t GetNumber(std::span<const std::uint8_t> bytes, std::size_t position,
                        std::size_t size = 8) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    value |= static_cast<std::uint64_t>(bytes[position + i]) << (8 * i);
  }
  return value;
}

// Finds torn writes, so a simple mix of whole words is enough, and it runs at every transfer.
std::uint64_t Checksum(std::span<const std::uint8_t> bytes) {
  std::uint64_t sum = 0x9E3779B97F4A7C15;
  for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
    sum = (sum ^ GetNumber(bytes, i)) * 0xD6E8FEB86659FD93;
    sum ^= sum >> 32;
  }
  return sum;
}
static_assert(kChecksumPosition % 8 == 0);

bool IsValid(const Slot& slot) {
  return std::equal(kMagic.begin(), kMagic.end(), slot.begin()) &&
         GetNumber(slot, kChecksumPosition) == Checksum(std::span(slot).first(kChecksumPosition));
}

std::vector<std::uint8_t> LogBytes(std::span<const RegisterStore::Record> records) {
  std::vector<std::uint8_t> bytes(records.size() * kRecordSize);
  std::size_t position = 0;
  for (const RegisterStore::Record& record : records) {
    PutNumber(bytes, position, record.key);
    PutNumber(bytes, position + 8, record.value, 4);
    position += kRecordSize;
  }
  return bytes;
}

struct NewestHead {
  StateHead head;
  std::vector<std::uint8_t> fields;
};

// The last head that was written whole.
NewestHead FindNewestHead(const SharedFile& file, const std::string& path) {
  std::array<std::uint8_t, kSlotSize + kHeadSize> both{};
  file.ReadAt(0, both);
  const Slot* newest = nullptr;
  std::array<Slot, 2> slots;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const auto begin = both.begin() + static_cast<std::ptrdiff_t>(i * kSlotSize);
    std::copy(begin, begin + kHeadSize, slots[i].begin());
  }
  const bool second_is_newer =
      GetNumber(slots[1], kSequencePosition) > GetNumber(slots[0], kSequencePosition);
  for (const Slot* candidate : {&slots[second_is_newer ? 1 : 0], &slots[second_is_newer ? 0 : 1]}) {
    if (newest == nullptr && IsValid(*candidate)) {
      newest = candidate;
    }
  }
  if (newest == nullptr) {
    throw ConfigurationError(
        Format("state: the file \"{}\" is not a state file of a virtual camera; name another one "
               "or remove it",
               path));
  }
  const auto fields = std::span(*newest).subspan(kFieldsPosition, kDeviceFieldsSize);
  return {.head = {.sequence = GetNumber(*newest, kSequencePosition),
                   .log_number = GetNumber(*newest, kLogNumberPosition),
                   .log_start = GetNumber(*newest, kLogStartPosition),
                   .log_records = GetNumber(*newest, kLogRecordsPosition)},
          .fields = {fields.begin(), fields.end()}};
}

// Reads the records of the log from the `first` one on.
void RestoreRegisters(const SharedFile& file, const StateHead& head, std::uint64_t first,
                      RegisterStore& registers) {
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(head.log_records - first) * kRecordSize);
  const std::size_t read = file.ReadAt(head.log_start + first * kRecordSize, bytes);
  for (std::size_t i = 0; i + kRecordSize <= read; i += kRecordSize) {
    registers.Restore(
        {GetNumber(bytes, i), static_cast<std::uint32_t>(GetNumber(bytes, i + 8, 4))});
  }
}

// New, or a process died while it made the file: what the first slot has begins as a head.
bool IsUnmade(const SharedFile& file) {
  std::array<std::uint8_t, kMagic.size()> begin{};
  const std::uint64_t size = file.Size();
  const auto read = static_cast<std::ptrdiff_t>(file.ReadAt(0, begin));
  return size < kLogBase && std::equal(begin.begin(), begin.begin() + read, kMagic.begin());
}

ConfigurationError Unusable(const std::string& path, const std::system_error& error) {
  return ConfigurationError(Format(
      "state: can't use the file \"{}\" ({}); it must be a file that can be read and written", path,
      error.what()));
}

DeviceState NewDevice(bool starts_plugged) {
  DeviceState state;
  state.fields.plugged = starts_plugged;
  return state;
}

}  // namespace

DeviceState LookAtState(const std::string& path_utf8, bool starts_plugged) try {
  DeviceState state = NewDevice(starts_plugged);
  const std::unique_ptr<SharedFile> file = SharedFile::OpenForReading(path_utf8);
  if (!file) {
    return state;
  }
  const FileLock lock(*file);
  if (!IsUnmade(*file)) {
    const NewestHead newest = FindNewestHead(*file, path_utf8);
    state.fields = ReadDeviceFields(newest.fields);
    RestoreRegisters(*file, newest.head, 0, state.registers);
  }
  return state;
} catch (const std::system_error& error) {
  throw Unusable(path_utf8, error);
}

StateFile::StateFile(const std::string& path_utf8, bool starts_plugged) try
    : path_(path_utf8), file_(path_utf8), committed_fields_(kDeviceFieldsSize) {
  const FileLock lock(file_);
  if (IsUnmade(file_)) {
    Create(starts_plugged);
  }
  ReadHead();
} catch (const std::system_error& error) {
  throw Unusable(path_utf8, error);
}

void StateFile::Create(bool starts_plugged) {
  // The first head goes into the first slot, so that a file that is half made can be told.
  head_ = {.sequence = 1, .log_number = 1, .log_start = kLogBase, .log_records = 0};
  state_ = NewDevice(starts_plugged);
  WriteHead();
  const std::uint8_t zero = 0;
  file_.WriteAt(kLogBase - 1, std::span(&zero, 1));
}

void StateFile::ReadHead() {
  NewestHead newest = FindNewestHead(file_, path_);
  head_ = newest.head;
  committed_fields_ = std::move(newest.fields);
  state_.fields = ReadDeviceFields(committed_fields_);
}

void StateFile::ReadLog() {
  if (dirty_ || cached_log_number_ != head_.log_number || cached_log_records_ > head_.log_records) {
    state_.registers.DropAll();
    cached_log_number_ = head_.log_number;
    cached_log_records_ = 0;
  }
  if (cached_log_records_ != head_.log_records) {
    RestoreRegisters(file_, head_, cached_log_records_, state_.registers);
    cached_log_records_ = head_.log_records;
  }
}

void StateFile::Lock() {
  file_.Lock();
  try {
    ReadHead();
    ReadLog();
    dirty_ = true;
  } catch (...) {
    file_.Unlock();
    throw;
  }
}

void StateFile::Commit() {
  RegisterStore& registers = state_.registers;
  bool changed = true;
  const std::uint64_t records = head_.log_records + registers.Written().size();
  if (registers.Cleared() ||
      (records > kSmallLog && records > kSlackFactor * registers.Values().size())) {
    RewriteLog();
  } else if (!registers.Written().empty()) {
    AppendLog();
  } else {
    std::array<std::uint8_t, kDeviceFieldsSize> fields;
    WriteDeviceFields(state_.fields, fields);
    changed = !std::equal(fields.begin(), fields.end(), committed_fields_.begin());
  }
  if (changed) {
    WriteHead();
  }
  registers.ForgetChanges();
  cached_log_number_ = head_.log_number;
  cached_log_records_ = head_.log_records;
  dirty_ = false;
}

void StateFile::Unlock() noexcept {
  file_.Unlock();
}

void StateFile::AppendLog() {
  const std::vector<RegisterStore::Record>& written = state_.registers.Written();
  file_.WriteAt(head_.log_start + head_.log_records * kRecordSize, LogBytes(written));
  head_.log_records += written.size();
}

// The last committed head must stay true until the new one is written, so the new log never
// overlaps the old one: it goes before it where it fits, else behind it.
void StateFile::RewriteLog() {
  std::vector<RegisterStore::Record> records;
  for (const auto& [key, value] : state_.registers.Values()) {
    records.push_back({key, value});
  }
  const std::uint64_t old_end = head_.log_start + head_.log_records * kRecordSize;
  const std::uint64_t size = records.size() * kRecordSize;
  head_.log_start = kLogBase + size <= head_.log_start ? kLogBase : old_end;
  head_.log_number += 1;
  head_.log_records = records.size();
  file_.WriteAt(head_.log_start, LogBytes(records));
}

void StateFile::WriteHead() {
  head_.sequence += 1;
  Slot slot{};
  std::copy(kMagic.begin(), kMagic.end(), slot.begin());
  PutNumber(slot, kSequencePosition, head_.sequence);
  PutNumber(slot, kLogNumberPosition, head_.log_number);
  PutNumber(slot, kLogStartPosition, head_.log_start);
  PutNumber(slot, kLogRecordsPosition, head_.log_records);
  WriteDeviceFields(state_.fields, committed_fields_);
  std::copy(committed_fields_.begin(), committed_fields_.end(), slot.begin() + kFieldsPosition);
  PutNumber(slot, kChecksumPosition, Checksum(std::span(slot).first(kChecksumPosition)));
  file_.WriteAt((head_.sequence % 2) * kSlotSize, slot);
}

}  // namespace virtual_camera
