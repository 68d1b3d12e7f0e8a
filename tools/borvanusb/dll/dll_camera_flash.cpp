// Reads and programs flash by jobs of the library, and compensates for their limits.
#include <algorithm>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "camera/flash_readings.h"
#include "dll/dll_camera.h"

namespace borvanusb {

namespace {

constexpr unsigned kWordBytes = 4;
// The time that a slow flash may need to erase a sector. The job reports no progress meanwhile.
constexpr std::chrono::milliseconds kSilencePerSector{500};

// A temporary file for one data exchange with the library. The destructor removes it.
class Exchange {
 public:
  Exchange(LibraryPlatform& platform, std::string_view extension)
      : platform_(platform), file_(platform.NewScratchFile(extension)) {}
  ~Exchange() { platform_.RemoveScratchFile(file_); }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  const LibraryPlatform::ScratchFile& File() const { return file_; }

 private:
  LibraryPlatform& platform_;
  const LibraryPlatform::ScratchFile file_;
};

}  // namespace

JobEnd DllCamera::SendFile(const std::string& what, std::span<const std::uint8_t> bytes,
                           std::string_view extension, Job job, const StartWithFile& start) const {
  const Exchange exchange(library_.Platform(), extension);
  const LibraryPlatform::ScratchFile& file = exchange.File();
  job.start = [&](const Exports& exports) { return start(exports, file.library_name.c_str()); };
  WriteWholeFile(file.name, bytes, Lasting::kThroughProcess);
  return Finish(what, job);
}

std::vector<std::uint8_t> DllCamera::Dump(const std::string& what, std::uint64_t size, Job job,
                                          const StartWithFile& start) const {
  const Exchange exchange(library_.Platform(), "bin");
  const LibraryPlatform::ScratchFile& file = exchange.File();
  job.start = [&](const Exports& exports) { return start(exports, file.library_name.c_str()); };
  job.file = &file;
  job.file_size = size;
  if (Finish(what, job).outcome == JobEnd::Outcome::kUnknown) {
    throw Failure(ExitCode::kDevice,
                  Format("{}: not all bytes arrived, and the reason was lost", what), kAgain);
  }
  return ReadWholeFile(file.name);
}

std::vector<std::uint8_t> DllCamera::ReadFlashByJob(std::uint32_t address, std::uint64_t size,
                                                    const Advance& advance) const {
  const auto last = static_cast<std::uint32_t>(address + size - 1);
  Job job;
  job.doing = "reading flash";
  job.total = size;
  job.advance = &advance;
  return Dump(Format("reading flash {}", Text(Range{address, last})), size, job,
              [&](const Exports& exports, const char* name) {
                return exports.UsbFlashQuickReadFile(name, address, last);
              });
}

// Reads the single byte at `address`. `before` contains the bytes directly before it. They check
// the result: the four bytes of a flash word are read, and the first three must match.
std::uint8_t DllCamera::LastByte(std::uint32_t address,
                                 std::span<const std::uint8_t> before) const {
  constexpr unsigned kOthers = kWordBytes - 1;
  std::uint32_t word = 0;
  {
    const Supervisor::Call call(library_.Watch(), "reading a flash word");
    library_.Functions().UsbFlashRead(address - kOthers, &word);
  }
  const auto others = before.last(kOthers);
  bool agrees = word != 0;
  for (unsigned i = 0; i < kOthers; ++i) {
    agrees = agrees && others[i] == static_cast<std::uint8_t>(word >> (8 * (kOthers - i)));
  }
  // A word of 0 may also be a failed read; a job then reads the byte.
  return agrees ? static_cast<std::uint8_t>(word) : ReadFlashByJob(address, 1, {}).front();
}

// Reads once, without confirmation.
std::vector<std::uint8_t> DllCamera::ReadFlashOnce(std::uint32_t address, std::uint64_t size,
                                                   std::uint32_t shift, bool ends_range,
                                                   const Advance& advance) const {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(size);
  for (const FlashPiece& piece : CutReading(address, size, shift, ends_range)) {
    const std::uint64_t done = bytes.size();
    const Advance piece_advance = [&](std::uint64_t piece_done) {
      advance(std::min(size, done + piece_done));
    };
    std::vector<std::uint8_t> read =
        ReadFlashByJob(piece.address, piece.size - (piece.last_byte_apart ? 1 : 0), piece_advance);
    if (piece.last_byte_apart) {
      read.push_back(LastByte(static_cast<std::uint32_t>(piece.address + piece.size - 1), read));
    }
    const std::uint64_t skipped = piece.address < address ? address - piece.address : 0;
    bytes.insert(bytes.end(), read.begin() + static_cast<std::ptrdiff_t>(skipped), read.end());
  }
  return bytes;
}

// Reads a part until two readings agree on each packet.
std::vector<std::uint8_t> DllCamera::ReadFlashPart(std::uint32_t address, std::uint64_t size,
                                                   bool ends_range, const Advance& advance) {
  FlashReadings readings(size);
  std::uint64_t done = 0;
  for (const std::uint32_t shift : kReadingShifts) {
    const auto open = readings.Open();
    if (!open) {
      break;
    }
    // A part needs two readings. In the progress, each of them counts as half of the part.
    const Advance reading_advance = [&](std::uint64_t reading_done) {
      advance(std::min(size, (done + reading_done) / 2));
    };
    const auto first = static_cast<std::uint32_t>(address + open->offset);
    const bool at_end = ends_range && open->offset + open->size == size;
    readings.Add(open->offset, ReadFlashOnce(first, open->size, shift, at_end, reading_advance));
    disagreements_ += done == 2 * size ? 1 : 0;
    done = std::min(done + size, 2 * size);
  }
  if (const auto open = readings.Open()) {
    const auto first = static_cast<std::uint32_t>(address + open->offset);
    const Range range{first, static_cast<std::uint32_t>(first + open->size - 1)};
    throw Failure(ExitCode::kDevice,
                  Format("reading flash {}: the flash reads differently each time", Text(range)),
                  "Check the cable and the camera's supply, and repeat the command.");
  }
  return readings.Take();
}

std::vector<std::uint8_t> DllCamera::ReadFlash(std::uint32_t address, std::uint64_t size,
                                               const Advance& advance) {
  const auto lock = Lock();
  std::vector<std::uint8_t> bytes;
  bytes.reserve(size);
  while (bytes.size() < size) {
    const std::uint64_t done = bytes.size();
    const std::uint64_t part = std::min(size - done, kReadPart);
    const Advance part_advance = [&](std::uint64_t part_done) {
      if (advance) {
        advance(done + part_done);
      }
    };
    const std::vector<std::uint8_t> read = ReadFlashPart(static_cast<std::uint32_t>(address + done),
                                                         part, done + part == size, part_advance);
    bytes.insert(bytes.end(), read.begin(), read.end());
  }
  if (advance) {
    advance(size);
  }
  return bytes;
}

void DllCamera::ProgramFlash(std::uint32_t address, std::span<const std::uint8_t> bytes,
                             const Advance& advance) {
  const auto lock = Lock();
  Job job;
  job.doing = "programming flash";
  job.silence = kSilencePerSector * static_cast<std::int64_t>(1 + bytes.size() / kSectorSize);
  job.total = bytes.size();
  job.advance = &advance;
  const Range range{address, static_cast<std::uint32_t>(address + bytes.size() - 1)};
  const std::string what = Format("programming flash {}", Text(range));
  const JobEnd end =
      SendFile(what, bytes, "bin", job, [&](const Exports& exports, const char* name) {
        return exports.UsbFlashWriteFile(name, address);
      });
  if (end.outcome == JobEnd::Outcome::kUnknown &&
      !std::ranges::equal(ReadFlash(address, bytes.size(), {}), bytes)) {
    throw Failure(ExitCode::kDevice, Format("{}: it failed, and the reason was lost", what),
                  kAgain);
  }
}

}  // namespace borvanusb
