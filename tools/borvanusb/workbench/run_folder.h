#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/services.h"

namespace borvanusb {

// The folder of one run of the workbench: what pages uploaded and what commands wrote. It is
// removed at the end, with those of runs that were killed. A folder stays as long as the journal of
// an unfinished change names a file in it: it holds the backup that the change can be undone with.
class RunFolder {
 public:
  // Makes a folder in `base` named by `id`, and removes what earlier runs left there. Throws
  // Failure kFile.
  RunFolder(std::string base, const std::string& id, std::string journal_folder);
  ~RunFolder();
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  const std::string& Name() const { return name_; }

  // Files by plain names. Throw Failure kFile.
  void Save(const std::string& file, std::string_view bytes) const;
  std::vector<StoredFile> List() const;
  std::optional<std::string> Read(const std::string& file) const;

  // Keeps a run's folder from being removed by other runs while this object lives; the workers of a
  // run hold it, too, because they may outlive the workbench.
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
