#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// A file of the page, as the program holds it.
struct PageFile {
  std::string_view path;  // "/page.js"
  std::string_view type;  // "text/javascript; charset=utf-8"
  std::span<const unsigned char> gzip;
};

struct StoredFile {
  std::string name;
  std::uint64_t size = 0;
};

// The run's files and the work, for the handler of requests. What fails throws Failure.
class WorkbenchServices {
 public:
  WorkbenchServices() = default;
  WorkbenchServices(const WorkbenchServices&) = delete;
  WorkbenchServices& operator=(const WorkbenchServices&) = delete;
  virtual ~WorkbenchServices() = default;

  virtual std::span<const PageFile> Page() const = 0;

  // Files of the run's folder; the names are plain ones.
  virtual void SaveFile(const std::string& name, std::string_view bytes) = 0;
  virtual std::vector<StoredFile> ListFiles() const = 0;
  // Nothing when there is no such file.
  virtual std::optional<std::string> ReadFile(const std::string& name) const = 0;

  // False when no such work is being done.
  virtual bool StopJob(const std::string& job) = 0;
  // What a job that has ended came to, as /api/run answers; nothing for one that is not known, an
  // object with "running" for one at work.
  virtual std::optional<std::string> JobText(const std::string& job) const = 0;
};

}  // namespace borvanusb
