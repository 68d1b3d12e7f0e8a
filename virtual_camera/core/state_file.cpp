#include "core/state_file.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <system_error>
#include <thread>
#include <vector>

#include "core/configuration.h"
#include "core/format.h"

namespace virtual_camera {
namespace {

static_assert(std::endian::native == std::endian::little, "numbers are stored as they are");

constexpr std::uint64_t kSlotSize = 2048;
constexpr std::uint64_t kLogBase = 2 * kSlotSize;
using Magic = std::array<std::uint8_t, 8>;
constexpr Magic kMagic = {'v', 'c', 's', 't', 'a', 't', 'e', '2'};
// Version 1 differs only in its lock, which was a system lock on the file.
constexpr Magic kOldMagic = {'v', 'c', 's', 't', 'a', 't', 'e', '1'};
constexpr std::size_t kSequencePosition = 8;
constexpr std::size_t kLogNumberPosition = 16;
constexpr std::size_t kLogStartPosition = 24;
constexpr std::size_t kLogRecordsPosition = 32;
constexpr std::size_t kFieldsPosition = 40;
constexpr std::size_t kChecksumPosition = kFieldsPosition + kDeviceFieldsSize;
constexpr std::size_t kHeadSize = kChecksumPosition + 8;
constexpr std::size_t kLockPosition = 1984;  // in the first slot, in a cache line of its own
static_assert(kHeadSize <= kLockPosition && kLockPosition % 64 == 0 && kLockPosition < kSlotSize);

constexpr std::size_t kRecordSize = 12;  // key 8, value 4
// A log is rewritten if it contains many more records than there are registers.
constexpr std::uint64_t kSmallLog = 4096;
constexpr std::uint64_t kSlackFactor = 4;
constexpr std::uint64_t kGrowth = 16384;  // the file grows by at least this many bytes

using Slot = std::array<std::uint8_t, kHeadSize>;

void PutNumber(std::span<std::uint8_t> bytes, std::size_t position, std::uint64_t value) {
  std::memcpy(bytes.data() + position, &value, sizeof value);
}

std::uint64_t GetNumber(std::span<const std::uint8_t> bytes, std::size_t position) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes.data() + position, sizeof value);
  return value;
}

// Detects incomplete writes. A simple mix of whole words is sufficient for this, and it must be
// fast because it runs for every transfer.
std::uint64_t Checksum(std::span<const std::uint8_t> bytes) {
  std::uint64_t sum = 0x9E3779B97F4A7C15;
  for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
    sum = (sum ^ GetNumber(bytes, i)) * 0xD6E8FEB86659FD93;
    sum ^= sum >> 32;
  }
  return sum;
}
static_assert(kChecksumPosition % 8 == 0);

bool Begins(std::span<const std::uint8_t> bytes, const Magic& magic) {
  return std::equal(magic.begin(), magic.end(), bytes.begin());
}

// The content of the newest head.
struct Newest {
  StateHead head;
  DeviceFields fields;
  bool is_old = false;  // of version 1
};

// Whether the slot contains a complete head whose log lies within a file of `file_size` bytes.
bool IsValid(const Slot& slot, std::uint64_t file_size) {
  const std::uint64_t start = GetNumber(slot, kLogStartPosition);
  return (Begins(slot, kMagic) || Begins(slot, kOldMagic)) &&
         GetNumber(slot, kChecksumPosition) == Checksum(std::span(slot).first(kChecksumPosition)) &&
         start >= kLogBase && start <= file_size &&
         GetNumber(slot, kLogRecordsPosition) <= (file_size - start) / kRecordSize;
}

// Returns the newest complete head in the first bytes of the file.
std::optional<Newest> FindNewest(std::span<const std::uint8_t> begin, std::uint64_t file_size) {
  std::array<Slot, 2> slots{};
  for (std::size_t i = 0; i < slots.size(); ++i) {
    std::copy_n(begin.begin() + static_cast<std::ptrdiff_t>(i * kSlotSize), kHeadSize,
                slots[i].begin());
  }
  const bool second_is_newer =
      GetNumber(slots[1], kSequencePosition) > GetNumber(slots[0], kSequencePosition);
  for (const std::size_t i : {second_is_newer ? 1U : 0U, second_is_newer ? 0U : 1U}) {
    const Slot& slot = slots[i];
    if (IsValid(slot, file_size)) {
      return Newest{
          .head = {.sequence = GetNumber(slot, kSequencePosition),
                   .log_number = GetNumber(slot, kLogNumberPosition),
                   .log_start = GetNumber(slot, kLogStartPosition),
                   .log_records = GetNumber(slot, kLogRecordsPosition)},
          .fields = ReadDeviceFields(std::span(slot).subspan(kFieldsPosition, kDeviceFieldsSize)),
          .is_old = Begins(slot, kOldMagic)};
    }
  }
  return std::nullopt;
}

ConfigurationError NoStateFile(const std::string& path) {
  return ConfigurationError(
      Format("state: the file \"{}\" is not a state file of a virtual camera; name another one "
             "or remove it",
             path));
}

// Reads a file without its lock, while other processes may change it. They write one slot at a
// time, but may reach the second one while the first is being read. The file therefore counts as
// damaged only if it is wrong twice.
Newest ReadNewest(const SharedFile& file, const std::string& path) {
  std::array<std::uint8_t, kLogBase> before{};
  for (bool is_again = false;; is_again = true) {
    std::array<std::uint8_t, kLogBase> begin{};
    file.ReadAt(0, begin);
    if (const auto newest = FindNewest(begin, file.Size()); newest) {
      return *newest;
    }
    if (is_again && begin == before) {
      throw NoStateFile(path);
    }
    before = begin;
  }
}

// Restores registers from the records of a log, as they are in the file.
void RestoreRegisters(std::span<const std::uint8_t> bytes, RegisterStore& registers) {
  for (std::size_t i = 0; i + kRecordSize <= bytes.size(); i += kRecordSize) {
    RegisterStore::Record record{};
    std::memcpy(&record.key, bytes.data() + i, 8);
    std::memcpy(&record.value, bytes.data() + i + 8, 4);
    registers.Restore(record);
  }
}

// Whether the file is new or incomplete because a process died while it created the file. The
// content of the first slot must then be the beginning of a head.
bool IsUnmade(const SharedFile& file) {
  Magic begin{};
  const std::uint64_t size = file.Size();
  const auto read = static_cast<std::ptrdiff_t>(file.ReadAt(0, begin));
  return size < kLogBase && (std::equal(begin.begin(), begin.begin() + read, kMagic.begin()) ||
                             std::equal(begin.begin(), begin.begin() + read, kOldMagic.begin()));
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

Slot MakeSlot(const StateHead& head, const DeviceFields& fields) {
  Slot slot;  // all of it is filled
  std::copy(kMagic.begin(), kMagic.end(), slot.begin());
  PutNumber(slot, kSequencePosition, head.sequence);
  PutNumber(slot, kLogNumberPosition, head.log_number);
  PutNumber(slot, kLogStartPosition, head.log_start);
  PutNumber(slot, kLogRecordsPosition, head.log_records);
  WriteDeviceFields(fields, std::span(slot).subspan(kFieldsPosition, kDeviceFieldsSize));
  PutNumber(slot, kChecksumPosition, Checksum(std::span(slot).first(kChecksumPosition)));
  return slot;
}

// A slot's sequence number as the processes share it.
std::atomic_ref<std::uint64_t> SequenceOf(std::span<std::uint8_t> file, std::uint64_t slot) {
  return std::atomic_ref(
      *reinterpret_cast<std::uint64_t*>(file.data() + slot * kSlotSize + kSequencePosition));
}

}  // namespace

DeviceState LookAtState(const std::string& path_utf8, bool starts_plugged) try {
  const std::unique_ptr<SharedFile> file = SharedFile::OpenForReading(path_utf8);
  if (!file) {
    return NewDevice(starts_plugged);
  }
  const FileLock lock(*file);  // no other process creates the file meanwhile
  if (IsUnmade(*file)) {
    return NewDevice(starts_plugged);
  }
  while (true) {
    const Newest newest = ReadNewest(*file, path_utf8);
    std::vector<std::uint8_t> log(static_cast<std::size_t>(newest.head.log_records) * kRecordSize);
    file->ReadAt(newest.head.log_start, log);
    // Records are only appended to a log, until the next log may replace it.
    if (ReadNewest(*file, path_utf8).head.log_number == newest.head.log_number) {
      DeviceState state;
      state.fields = newest.fields;
      RestoreRegisters(log, state.registers);
      return state;
    }
    std::this_thread::yield();
  }
} catch (const std::system_error& error) {
  throw Unusable(path_utf8, error);
}

StateFile::StateFile(const std::string& path_utf8, bool starts_plugged) try
    : path_(path_utf8), file_(path_utf8) {
  Open(starts_plugged);
} catch (const std::system_error& error) {
  throw Unusable(path_utf8, error);
}

void StateFile::Open(bool starts_plugged) {
  // Only one process at a time opens the file. Programs of version 1 hold this lock all the time.
  const FileLock opening(file_);
  if (IsUnmade(file_)) {
    Create(starts_plugged);
  }
  const bool is_old = ReadNewest(file_, path_).is_old;
  ShowUpTo(file_.Size());
  lock_.emplace(file_, LockWord());
  const StateLock lock(*this);
  if (is_old) {
    // Writes both slots, so that programs that know only version 1 reject the file.
    WriteHead();
    WriteHead();
  }
}

void StateFile::Create(bool starts_plugged) {
  // The first head is written to the first slot, so that an incomplete file can be recognized.
  const StateHead head{.sequence = 2, .log_number = 1, .log_start = kLogBase, .log_records = 0};
  file_.WriteAt(0, MakeSlot(head, NewDevice(starts_plugged).fields));
  std::array<std::uint8_t, kLogBase - kHeadSize> rest{};
  file_.WriteAt(kHeadSize, rest);
}

std::uint64_t& StateFile::LockWord() const {
  return *reinterpret_cast<std::uint64_t*>(view_.Bytes().data() + kLockPosition);
}

void StateFile::ShowUpTo(std::uint64_t size) {
  if (view_.Bytes().size() < size) {
    view_.Map(file_, file_.Size());
  }
}

// Writes the new bytes before they are mapped. On a full disk a write fails with an error, whereas
// an access to mapped memory without disk space ends the process.
void StateFile::ReserveUpTo(std::uint64_t size) {
  if (size <= view_.Bytes().size()) {
    return;
  }
  const std::uint64_t old_size = file_.Size();
  if (size > old_size) {
    const std::uint64_t new_size = std::max(size, old_size + std::max(kGrowth, old_size / 4));
    file_.WriteAt(old_size,
                  std::vector<std::uint8_t>(static_cast<std::size_t>(new_size - old_size)));
  }
  ShowUpTo(size);
}

void StateFile::ReadHead() {
  const std::optional<Newest> newest = FindNewest(view_.Bytes(), file_.Size());
  if (!newest) {
    throw NoStateFile(path_);
  }
  head_ = newest->head;
  committed_fields_ = newest->fields;
  state_.fields = newest->fields;
}

void StateFile::ReadLog() {
  if (dirty_ || cached_log_number_ != head_.log_number || cached_log_records_ > head_.log_records) {
    state_.registers.DropAll();
    cached_log_number_ = head_.log_number;
    cached_log_records_ = 0;
  }
  if (cached_log_records_ != head_.log_records) {
    const std::uint64_t begin = head_.log_start + cached_log_records_ * kRecordSize;
    const std::uint64_t end = head_.log_start + head_.log_records * kRecordSize;
    ShowUpTo(end);
    RestoreRegisters(view_.Bytes().subspan(static_cast<std::size_t>(begin),
                                           static_cast<std::size_t>(end - begin)),
                     state_.registers);
    cached_log_records_ = head_.log_records;
  }
}

void StateFile::Lock() {
  lock_->Lock(LockWord());
  try {
    // The head that this object last wrote or read is usually still the newest one. If a process
    // was killed while it wrote a head, the sequence number of that slot is 0.
    const std::uint64_t newest =
        std::max(SequenceOf(view_.Bytes(), 0).load(std::memory_order_acquire),
                 SequenceOf(view_.Bytes(), 1).load(std::memory_order_acquire));
    if (dirty_ || newest != head_.sequence) {
      ReadHead();
    }
    ReadLog();
    dirty_ = true;
  } catch (...) {
    Unlock();
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
    WriteLog(head_.log_start + head_.log_records * kRecordSize, registers.Written());
    head_.log_records = records;
  } else {
    changed = state_.fields != committed_fields_;
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
  WordLock::Unlock(LockWord());
}

void StateFile::WriteLog(std::uint64_t position, std::span<const RegisterStore::Record> records) {
  ReserveUpTo(position + records.size() * kRecordSize);
  std::uint8_t* place = view_.Bytes().data() + position;
  for (const RegisterStore::Record& record : records) {
    std::memcpy(place, &record.key, 8);
    std::memcpy(place + 8, &record.value, 4);
    place += kRecordSize;
  }
}

// The last committed head must stay valid until the new one is written. The new log therefore never
// overlaps the old one: it is placed before the old one if it fits there, otherwise after it.
void StateFile::RewriteLog() {
  std::vector<RegisterStore::Record> records;
  for (const auto& [key, value] : state_.registers.Values()) {
    records.push_back({key, value});
  }
  const std::uint64_t old_end = head_.log_start + head_.log_records * kRecordSize;
  const std::uint64_t size = records.size() * kRecordSize;
  const std::uint64_t start = kLogBase + size <= head_.log_start ? kLogBase : old_end;
  WriteLog(start, records);
  head_.log_start = start;
  head_.log_number += 1;
  head_.log_records = records.size();
}

void StateFile::WriteHead() {
  head_.sequence += 1;
  const Slot slot = MakeSlot(head_, state_.fields);
  const std::uint64_t place = head_.sequence % 2;
  const std::span<std::uint8_t> file = view_.Bytes();
  const std::atomic_ref<std::uint64_t> sequence = SequenceOf(file, place);
  // The slot is invalid until the last store, and the other slot is used until then.
  sequence.store(0, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  std::uint8_t* const target = file.data() + place * kSlotSize;
  std::memcpy(target, slot.data(), kSequencePosition);
  std::memcpy(target + kLogNumberPosition, slot.data() + kLogNumberPosition,
              kHeadSize - kLogNumberPosition);
  sequence.store(head_.sequence, std::memory_order_release);
  committed_fields_ = state_.fields;
}

}  // namespace virtual_camera
