#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/services.h"

namespace borvanusb {

// The folder of one run of the workbench, with the uploaded files and the output files of commands.
// It is removed at the end of the run, together with those of runs that were killed. However, a
// folder remains while the journal of an unfinished change names a file in it, because the file may
// be the backup for undoing the change.
class RunFolder {
 public:
  // Creates the folder `id` in `base`, and removes leftovers of earlier runs. Throws Failure kFile.
  RunFolder(std::string base, const std::string& id, std::string journal_folder);
  ~RunFolder();
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  const std::string& Name() const { return name_; }

  // Files in the folder, given by plain names. Throw Failure kFile.
  void Save(const std::string& file, std::string_view bytes) const;
  std::vector<StoredFile> List() const;
  std::optional<std::string> Read(const std::string& file) const;

  // While this object exists, other runs do not remove the folder. The workers of a run hold it,
  // too, because they may outlive the workbench.
  class Hold {
   public:
    explicit Hold(const std::string& folder);

   private:
    std::ofstream file_;
  };

 private:
  const std::string base_;
  const std::string journal_folder_;
  const std::string name_;
  std::optional<Hold> hold_;
};

}  // namespace borvanusb
