#include "profile/profile_folder.h"

#include <algorithm>
#include <map>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::string_view kEnding = ".camera.json";

// Time stamps of the files, to detect changes.
using Stamps = std::map<std::string, FileStamp>;

struct KeptProfile {
  Stamps stamps;
  std::shared_ptr<const ProfileReading> reading;
};

// The cache has no size limit: a process works with one or a few cameras.
std::map<std::string, KeptProfile>& KeptProfiles() {
  static std::map<std::string, KeptProfile> kept;
  return kept;
}

bool IsUnchanged(const Stamps& stamps) {
  return std::ranges::all_of(stamps,
                             [](const auto& file) { return StampOf(file.first) == file.second; });
}

}  // namespace

std::string ProfileFolder(const Host& host) {
  std::string given = host.Environment("BORVANUSB_PROFILES");
  if (!given.empty()) {
    return given;
  }
  const std::string data = host.Environment("APPDATA");
  return data.empty() ? "" : Format("{}\\BorvanUSB\\profiles", data);
}

std::vector<std::string> ProfileFiles(const Host& host) {
  std::vector<std::string> files;
  const std::string folder = ProfileFolder(host);
  if (folder.empty()) {
    return files;
  }
  for (const std::string& name : FilesIn(folder)) {
    if (name.ends_with(kEnding)) {
      files.push_back(AbsoluteName(Format("{}/{}", folder, name)));
    }
  }
  return files;
}

void ForgetKeptProfile(const std::string& file) {
  KeptProfiles().erase(AbsoluteName(file));
}

std::shared_ptr<const ProfileReading> ReadKeptProfile(const std::string& file) {
  auto& kept = KeptProfiles();
  const std::string name = AbsoluteName(file);
  const auto found = kept.find(name);
  if (found != kept.end() && IsUnchanged(found->second.stamps)) {
    return found->second.reading;
  }
  // Takes the time stamp before reading. If the file changes while it is read, it is read again
  // next time.
  KeptProfile profile;
  profile.stamps[name] = StampOf(name);
  const std::string text = ReadWholeText(name);
  profile.reading = std::make_shared<const ProfileReading>(
      ReadProfileText(text, name, [&](const std::string& map) {
        profile.stamps[map] = StampOf(map);
        return ReadWholeText(map);
      }));
  return (kept[name] = std::move(profile)).reading;
}

std::shared_ptr<const CameraProfile> LoadProfile(const std::string& file) {
  auto reading = ReadKeptProfile(file);
  if (!reading->errors.empty()) {
    const ListProblem& first = reading->errors.front();
    const std::size_t more = reading->errors.size() - 1;
    throw Failure(ExitCode::kFile,
                  Format("{}{}: {}{}", file, first.line == 0 ? "" : Format(":{}", first.line),
                         first.text, more == 0 ? "" : Format(" (and {} more)", more)),
                  Format("borvanusb profile check {} lists everything that is wrong.", file));
  }
  return {reading, &reading->profile};
}

}  // namespace borvanusb
