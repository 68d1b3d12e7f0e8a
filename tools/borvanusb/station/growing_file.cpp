#include "station/growing_file.h"

#include <filesystem>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"

namespace borvanusb {

GrowingFile::GrowingFile(std::string name) : name_(std::move(name)) {
  CheckWritable(name_);
  file_.open(std::filesystem::path(std::u8string(name_.begin(), name_.end())),
             std::ios::binary | std::ios::trunc);
  if (!file_) {
    throw Failure(ExitCode::kFile, Format("can't write {}", name_),
                  "Check that you may write to it and that no other program has it open.");
  }
}

void GrowingFile::Add(std::string_view line) {
  file_ << line << '\n' << std::flush;
  if (!file_) {
    throw Failure(ExitCode::kFile, Format("can't write {} any more", name_),
                  "Check that there is room on the disk; the lines before are in the file.");
  }
}

}  // namespace borvanusb
