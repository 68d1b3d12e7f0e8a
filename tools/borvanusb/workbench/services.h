#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// A file of the page, stored in the program.
struct PageFile {
  std::string_view path;  // "/page.js"
  std::string_view type;  // "text/javascript; charset=utf-8"
  std::span<const unsigned char> gzip;
};

struct StoredFile {
  std::string name;
  std::uint64_t size = 0;
};

// The functions that handle_request.h needs: files of the run, and work. They throw Failure.
class WorkbenchServices {
 public:
  WorkbenchServices() = default;
  WorkbenchServices(const WorkbenchServices&) = delete;
  WorkbenchServices& operator=(const WorkbenchServices&) = delete;
  virtual ~WorkbenchServices() = default;

  virtual std::span<const PageFile> Page() const = 0;

  // Files in the run's folder, given by plain names.
  virtual void SaveFile(const std::string& name, std::string_view bytes) = 0;
  virtual std::vector<StoredFile> ListFiles() const = 0;
  // Returns nothing if there is no such file.
  virtual std::optional<std::string> ReadFile(const std::string& name) const = 0;

  // Returns false if there is no such job.
  virtual bool StopJob(const std::string& job) = 0;
  // The answer of /api/run for a job that has ended, or an object with "running" while it runs.
  // Returns nothing for an unknown job.
  virtual std::optional<std::string> JobText(const std::string& job) const = 0;
};

}  // namespace borvanusb
