#include "base/files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>
#include <thread>

#include "base/failure.h"
#include "base/flush_file.h"
#include "base/format.h"

namespace borvanusb {

namespace {

namespace fs = std::filesystem;

// Converts a UTF-8 name to a path. A path constructed from a std::string would use the ANSI code
// page on Windows.
fs::path PathOf(const std::string& name) {
  return {std::u8string(name.begin(), name.end())};
}

[[noreturn]] void Fail(const std::string& doing, const std::string& name, const std::string& why,
                       const std::string& hint = {}) {
  throw Failure(ExitCode::kFile, Format("{} {}: {}", doing, name, why), hint);
}

std::string NameOf(const fs::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

std::string LastReason() {
  return errno != 0 ? std::generic_category().message(errno) : "the system gives no reason";
}

// Repeats an action on a file while another process has it open. On a production line, the process
// of the camera beside reads all journals of the folder, and virus scanners read each new file;
// both take only a moment.
template <typename Action>
std::error_code WhenFree(const Action& action) {
  constexpr int kTries = 40;
  constexpr std::chrono::milliseconds kPause{25};
  std::error_code error = action();
  for (int tried = 1; tried < kTries && error && IsInUse(error); ++tried) {
    std::this_thread::sleep_for(kPause);
    error = action();
  }
  return error;
}

// Opens a file to read it. The error is 0 if the system gives no reason.
std::error_code Open(std::ifstream& file, const fs::path& path) {
  errno = 0;
  file.open(path, std::ios::binary);
  return file ? std::error_code() : std::error_code(errno, std::generic_category());
}

template <typename Content>
Content ReadWhole(const std::string& name) {
  const fs::path path = PathOf(name);
  std::error_code error;
  if (fs::is_directory(path, error)) {
    Fail("can't read", name, "it is a folder");
  }
  std::ifstream file;
  WhenFree([&] { return Open(file, path); });
  if (!file) {
    Fail("can't read", name, LastReason(), "Check the name, and whether you may read the file.");
  }
  Content content;
  std::vector<char> part(std::size_t{1} << 16U);
  while (file.read(part.data(), static_cast<std::streamsize>(part.size())) || file.gcount() > 0) {
    content.insert(content.end(), part.begin(), part.begin() + file.gcount());
  }
  if (file.bad()) {
    Fail("can't read", name, LastReason());
  }
  return content;
}

fs::path TemporaryNameBeside(const fs::path& path) {
  std::random_device random;
  fs::path temporary = path;
  temporary += Format(".part{}", random() % 1000000);
  return temporary;
}

}  // namespace

void WriteFileInParts(const std::string& name, const std::function<void(std::ostream&)>& write,
                      Lasting lasting) {
  const fs::path path = PathOf(name);
  std::error_code error;
  if (fs::is_directory(path, error)) {
    Fail("can't write", name, "it is a folder");
  }
  const fs::path temporary = TemporaryNameBeside(path);
  errno = 0;
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  bool good = file.is_open();
  if (good) {
    try {
      write(file);
    } catch (...) {
      file.close();
      fs::remove(temporary, error);
      throw;
    }
    file.close();
    good = !file.fail();
  }
  std::string why = good ? "" : LastReason();
  if (good) {
    if (lasting == Lasting::kThroughPowerCut) {
      FlushFile(temporary);
      error = WhenFree([&] { return ReplaceThrough(temporary, path); });
    } else {
      error = WhenFree([&] {
        std::error_code renamed;
        fs::rename(temporary, path, renamed);
        return renamed;
      });
    }
    why = error ? error.message() : "";
  }
  if (!why.empty()) {
    file.close();
    fs::remove(temporary, error);
    Fail("can't write", name, why, "Check that the folder exists and that there is room in it.");
  }
}

std::vector<std::uint8_t> ReadWholeFile(const std::string& name) {
  return ReadWhole<std::vector<std::uint8_t>>(name);
}

std::string ReadWholeText(const std::string& name) {
  return ReadWhole<std::string>(name);
}

void WriteWholeFile(const std::string& name, std::span<const std::uint8_t> bytes, Lasting lasting) {
  WriteWholeText(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()}, lasting);
}

void WriteWholeText(const std::string& name, std::string_view text, Lasting lasting) {
  const auto write = [&](std::ostream& file) {
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
  };
  WriteFileInParts(name, write, lasting);
}

FileStamp StampOf(const std::string& name) {
  std::error_code error;
  const fs::path path = PathOf(name);
  const auto time = fs::last_write_time(path, error);
  const std::uintmax_t size = error ? 0 : fs::file_size(path, error);
  return error ? FileStamp{} : FileStamp{time.time_since_epoch().count(), size};
}

bool FileExists(const std::string& name) {
  std::error_code error;
  return fs::exists(PathOf(name), error);
}

void RemoveFile(const std::string& name) {
  const std::error_code error = WhenFree([&] {
    std::error_code removed;
    fs::remove(PathOf(name), removed);
    return removed;
  });
  if (error) {
    Fail("can't remove", name, error.message());
  }
}

void CheckWritable(const std::string& name) {
  const fs::path path = PathOf(name);
  std::error_code error;
  if (fs::is_directory(path, error)) {
    Fail("can't write", name, "it is a folder");
  }
  const fs::path temporary = TemporaryNameBeside(path);
  errno = 0;
  std::ofstream file(temporary, std::ios::binary);
  const std::string why = file ? "" : LastReason();
  file.close();
  fs::remove(temporary, error);
  if (!why.empty()) {
    Fail("can't write", name, why, "Check that the folder exists and that you may write to it.");
  }
}

std::string AbsoluteName(const std::string& name) {
  std::error_code error;
  const fs::path absolute = fs::absolute(PathOf(name), error);
  if (error) {
    return name;
  }
  const fs::path canonical = fs::weakly_canonical(absolute, error);
  return NameOf((error ? absolute : canonical).lexically_normal());
}

bool SameFile(const std::string& left, const std::string& right) {
  std::error_code error;
  if (fs::equivalent(PathOf(left), PathOf(right), error) && !error) {
    return true;
  }
  return SameName(PathOf(AbsoluteName(left)), PathOf(AbsoluteName(right)));
}

void MakeFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(PathOf(folder), error);
  if (error && !fs::is_directory(PathOf(folder))) {
    Fail("can't make the folder", folder, error.message());
  }
}

std::vector<std::string> FilesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(PathOf(folder), error), end; !error && entry != end;
       entry.increment(error)) {
    names.push_back(NameOf(entry->path().filename()));
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace borvanusb
