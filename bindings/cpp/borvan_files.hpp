#pragma once

// What the Camera needs of the file system: whether a job's file is complete, and temporary files.
// Names are in the ANSI code page, as the library takes them.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#ifdef _WIN32
// Five functions of Windows; windows.h as a whole would bring its macros to every program.
#ifndef _WINDOWS_
struct _SECURITY_ATTRIBUTES;
extern "C" {
__declspec(dllimport) void* __stdcall CreateFileA(const char* name, unsigned long access,
                                                  unsigned long share,
                                                  struct _SECURITY_ATTRIBUTES* security,
                                                  unsigned long disposition, unsigned long flags,
                                                  void* sample);
__declspec(dllimport) int __stdcall CloseHandle(void* handle);
__declspec(dllimport) unsigned long __stdcall GetFileSize(void* file, unsigned long* high);
__declspec(dllimport) unsigned long __stdcall GetTempPathA(unsigned long size, char* folder);
__declspec(dllimport) unsigned int __stdcall GetTempFileNameA(const char* folder,
                                                              const char* prefix,
                                                              unsigned int number, char* name);
}
#endif
#else
#include <unistd.h>

#include <cstdlib>
#endif

namespace borvan {
namespace detail {

// Whether a file has exactly this size and nobody has it open. Elsewhere than on Windows, where the
// binding is only tested, the size decides.
inline bool IsFileComplete(const std::string& name, std::uint64_t size) {
#ifdef _WIN32
  const unsigned long read_access = 0x80000000UL;
  const unsigned long open_existing = 3;
  void* const file = CreateFileA(name.c_str(), read_access, 0, nullptr, open_existing, 0, nullptr);
  if (reinterpret_cast<std::intptr_t>(file) == -1) {
    return false;
  }
  unsigned long high = 0;
  const unsigned long low = GetFileSize(file, &high);
  CloseHandle(file);
  return ((std::uint64_t{high} << 32) | low) == size;
#else
  std::FILE* const file = std::fopen(name.c_str(), "rb");
  if (file == nullptr) {
    return false;
  }
  std::fseek(file, 0, SEEK_END);
  const long length = std::ftell(file);
  std::fclose(file);
  return length >= 0 && static_cast<std::uint64_t>(length) == size;
#endif
}

// Makes an empty file and returns its name; empty when that fails.
inline std::string MakeTemporaryFile() {
#ifdef _WIN32
  char folder[261] = "";
  char name[261] = "";
  if (GetTempPathA(sizeof folder, folder) == 0 || GetTempFileNameA(folder, "bvn", 0, name) == 0) {
    return {};
  }
  return name;
#else
  char name[] = "/tmp/borvan-XXXXXX";
  const int file = mkstemp(name);
  if (file < 0) {
    return {};
  }
  close(file);
  return name;
#endif
}

// The bytes of a file, at most `size`.
inline std::vector<std::uint8_t> ReadFileBytes(const std::string& name, std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  std::size_t count = 0;
  if (std::FILE* const file = std::fopen(name.c_str(), "rb")) {
    count = std::fread(bytes.data(), 1, size, file);
    std::fclose(file);
  }
  bytes.resize(count);
  return bytes;
}

inline bool WriteFileBytes(const std::string& name, const std::uint8_t* bytes, std::size_t size) {
  std::FILE* const file = std::fopen(name.c_str(), "wb");
  if (file == nullptr) {
    return false;
  }
  const bool written = std::fwrite(bytes, 1, size, file) == size;
  return std::fclose(file) == 0 && written;
}

// An empty file that is removed in the end; while a job has it open, that fails and the file stays.
class TemporaryFile {
 public:
  TemporaryFile() : name_(MakeTemporaryFile()) {}
  ~TemporaryFile() { std::remove(name_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& Name() const { return name_; }

 private:
  std::string name_;
};

// Whether the library would write text into a file of this name.
inline bool IsTextName(const std::string& name) {
  return name.substr(name.rfind('.') + 1) == "txt";
}

}  // namespace detail
}  // namespace borvan
