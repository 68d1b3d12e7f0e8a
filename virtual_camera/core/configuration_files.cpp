#include "core/configuration_files.h"

#include "core/format.h"
#include "core/names.h"
#include "core/printable.h"

namespace virtual_camera {
namespace {

// A file that a configuration needs for itself.
struct OwnFile {
  FileIdentity identity;
  std::string title;
};

std::string Quoted(const std::string& file) {
  return Format("\"{}\"", Printable(file));
}

std::string KeyOf(std::size_t position, const char* key) {
  return Format("cameras[{}].{}", position, key);
}

// Throws ConfigurationError if `file`, named by `key`, is one of `others`.
void CheckDiffers(const std::string& key, const std::string& file, const FileIdentity& identity,
                  const std::vector<OwnFile>& others) {
  for (const OwnFile& other : others) {
    if (identity == other.identity) {
      throw ConfigurationError(
          Format("{}: {} is {}; must be a file of its own", key, Quoted(file), other.title));
    }
  }
}

// Returns the configuration itself and every state and flash file. Throws ConfigurationError if two
// are the same file.
std::vector<OwnFile> OwnFiles(const Configuration& configuration) {
  std::vector<OwnFile> files = {
      {IdentifyFile(configuration.file), "the configuration file"},
  };
  const auto add = [&](const std::string& key, const std::string& file) {
    const FileIdentity identity = IdentifyFile(file);
    CheckDiffers(Format("{}: {}", configuration.file, key), file, identity, files);
    files.push_back({identity, Format("the same file as {}", key)});
  };
  for (std::size_t i = 0; i < configuration.cameras.size(); ++i) {
    add(KeyOf(i, "flash.file"), configuration.cameras[i].flash.file);
    add(KeyOf(i, "state"), configuration.cameras[i].state_file);
  }
  return files;
}

}  // namespace

void CheckFiles(const Configuration& configuration) {
  const std::vector<OwnFile> files = OwnFiles(configuration);
  for (std::size_t i = 0; i < configuration.cameras.size(); ++i) {
    const std::string& trace = configuration.cameras[i].trace_file;
    if (!trace.empty()) {
      CheckDiffers(Format("{}: {}", configuration.file, KeyOf(i, "trace")), trace,
                   IdentifyFile(trace), files);
    }
  }
}

void CheckProcessTrace(const Configuration& configuration, const std::string& trace_file_utf8) {
  if (trace_file_utf8.empty()) {
    return;
  }
  std::vector<OwnFile> files = OwnFiles(configuration);
  for (OwnFile& file : files) {
    file.title += &file == &files.front() ? "" : Format(" of {}", Quoted(configuration.file));
  }
  CheckDiffers(kTraceVariable, trace_file_utf8, IdentifyFile(trace_file_utf8), files);
}

}  // namespace virtual_camera
