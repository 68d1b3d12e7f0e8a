#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Files by UTF-8 names, of any characters. All throw Failure kFile that names the file and why.

std::vector<std::uint8_t> ReadWholeFile(const std::string& name);
std::string ReadWholeText(const std::string& name);

// What a written file outlives: a cut of the computer's own power, or this process alone (files
// that are gone in a moment anyway).
enum class Lasting { kThroughPowerCut, kThroughProcess };

// Writes a file under a temporary name beside it and renames it when all is there and closed, so
// that nobody ever finds half of it. An existing file is replaced.
void WriteWholeFile(const std::string& name, std::span<const std::uint8_t> bytes,
                    Lasting lasting = Lasting::kThroughPowerCut);
void WriteWholeText(const std::string& name, std::string_view text,
                    Lasting lasting = Lasting::kThroughPowerCut);

// The same for content that is made while it is written: `write` puts it into the stream.
void WriteFileInParts(const std::string& name, const std::function<void(std::ostream&)>& write,
                      Lasting lasting = Lasting::kThroughPowerCut);

bool FileExists(const std::string& name);
// What tells that a file has changed: its time and size, zeros when there is no such file.
struct FileStamp {
  std::int64_t time = 0;
  std::uint64_t size = 0;

  bool operator==(const FileStamp&) const = default;
};
FileStamp StampOf(const std::string& name);
// Removes a file; one that is not there is no failure.
void RemoveFile(const std::string& name);
// Throws unless a file by that name could be written: before a long job, not after it.
void CheckWritable(const std::string& name);

// The full name, without "." and "..", links followed as far as they exist: one file, one name,
// wherever the process stands.
std::string AbsoluteName(const std::string& name);
// Whether two names are of one file, in whatever spelling. Neither file needs to exist.
bool SameFile(const std::string& left, const std::string& right);
// Makes a folder and those above it where they are missing.
void MakeFolder(const std::string& folder);
// The names of a folder's files, without the folder, sorted; none when there is no such folder.
std::vector<std::string> FilesIn(const std::string& folder);

}  // namespace borvanusb
