#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Reads and writes files. Names are UTF-8 and may contain any characters. Functions that fail throw
// Failure kFile, with the file's name and the reason.

std::vector<std::uint8_t> ReadWholeFile(const std::string& name);
std::string ReadWholeText(const std::string& name);

// How durable a written file is.
//   kThroughPowerCut  it survives a power failure of the computer
//   kThroughProcess   it survives the end of this process; sufficient for files that are removed
//                     soon
enum class Lasting { kThroughPowerCut, kThroughProcess };

// Writes a file atomically. It writes the content to a temporary file in the same folder, closes it
// and renames it, so no other program can see a partial file. Replaces an existing file.
void WriteWholeFile(const std::string& name, std::span<const std::uint8_t> bytes,
                    Lasting lasting = Lasting::kThroughPowerCut);
void WriteWholeText(const std::string& name, std::string_view text,
                    Lasting lasting = Lasting::kThroughPowerCut);

// The same for content that is generated while it is written. `write` writes it to the stream. If
// `write` throws, the file keeps its old content and the exception is passed on.
void WriteFileInParts(const std::string& name, const std::function<void(std::ostream&)>& write,
                      Lasting lasting = Lasting::kThroughPowerCut);

bool FileExists(const std::string& name);
// Shows whether a file has changed: its modification time and size. Both are 0 if the file does not
// exist or can't be examined.
struct FileStamp {
  std::int64_t time = 0;
  std::uint64_t size = 0;

  bool operator==(const FileStamp&) const = default;
};
FileStamp StampOf(const std::string& name);
// Removes a file. Does nothing if the file does not exist.
void RemoveFile(const std::string& name);
// Checks that a file with this name can be written, and throws if not. A command calls this before
// a long job, so that the job's result is not lost at its end.
void CheckWritable(const std::string& name);

// Returns the full name, without "." and ".." and with symbolic links resolved as far as they
// exist. The result does not depend on how the name was written. If the system can't resolve a
// relative name, the function returns the name unchanged.
std::string AbsoluteName(const std::string& name);
// Whether two names refer to the same file. The files need not exist.
bool SameFile(const std::string& left, const std::string& right);
// Creates a folder and its missing parent folders.
void MakeFolder(const std::string& folder);
// Returns the names of all entries of a folder, sorted and without the folder's name. Returns none
// if the folder does not exist or can't be read.
std::vector<std::string> FilesIn(const std::string& folder);

}  // namespace borvanusb
