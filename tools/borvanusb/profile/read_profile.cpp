#include "profile/read_profile.h"

#include <algorithm>
#include <cctype>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "profile/profile_sections.h"

namespace borvanusb {

namespace {

constexpr std::size_t kLargestProfile = std::size_t{1} << 20U;

// The folder of the profile with a trailing separator; empty for a name without folder.
std::string FolderOf(const std::string& file) {
  const std::size_t end = file.find_last_of("/\\");
  return end == std::string::npos ? "" : file.substr(0, end + 1);
}

bool IsFullName(const std::string& name) {
  return name.starts_with('/') || name.starts_with('\\') || (name.size() > 1 && name[1] == ':');
}

// "1D6B" for "1d6b" or "0x1d6b". Empty for anything else.
std::string UsbId(std::string text) {
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.erase(0, 2);
  }
  constexpr std::size_t kDigits = 4;
  const bool good = text.size() == kDigits && std::ranges::all_of(text, [](unsigned char digit) {
                      return std::isxdigit(digit) != 0;
                    });
  std::ranges::transform(text, text.begin(), [](unsigned char digit) {
    return static_cast<char>(std::toupper(digit));
  });
  return good ? text : "";
}

std::string ReadUsbId(const JsonNode& object, std::string_view key, ValueReader& values) {
  const auto text = values.Text(object, key);
  if (!text) {
    return {};
  }
  std::string id = UsbId(*text);
  if (id.empty()) {
    values.Wrong(*object.Find(key), "must have four hexadecimal digits, such as \"1d6b\"");
  }
  return id;
}

std::vector<CameraPattern> ReadCameras(const JsonNode& root, ValueReader& values) {
  std::vector<CameraPattern> cameras;
  const JsonNode* const node = root.Find("cameras");
  for (const JsonNode& item : values.Items(node)) {
    if (!values.IsObject(item, {"vid", "pid", "name"})) {
      continue;
    }
    if (item.members.empty()) {
      values.Wrong(item, "needs at least one of vid, pid, name: it would fit every camera");
    }
    cameras.push_back({ReadUsbId(item, "vid", values), ReadUsbId(item, "pid", values),
                       values.Text(item, "name").value_or("")});
  }
  if (cameras.empty() && (node == nullptr || node->items.empty())) {
    values.Wrong(root, "the key \"cameras\" must list at least one kind of camera");
  }
  return cameras;
}

std::vector<std::pair<std::string, std::string>> ReadOptions(const JsonNode* node,
                                                             ValueReader& values) {
  std::vector<std::pair<std::string, std::string>> options;
  if (node == nullptr) {
    return options;
  }
  if (node->kind != JsonNode::Kind::kObject) {
    values.Wrong(*node, "must be an object: {…}");
    return options;
  }
  for (const auto& [key, value] : node->members) {
    if (value.kind != JsonNode::Kind::kText && value.kind != JsonNode::Kind::kNumber) {
      values.Wrong(value, "must be a text or a number");
    } else {
      options.emplace_back(Format("--{}", key), value.text);
    }
  }
  return options;
}

}  // namespace

bool IsPlainName(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](unsigned char letter) {
    return std::isalnum(letter) != 0 || letter == '_' || letter == '-' || letter == '.';
  });
}

ProfileReading ReadProfileText(std::string_view text, const std::string& file,
                               const ProfileFileReader& read) {
  ProfileReading reading;
  reading.profile.file = file;
  if (text.size() > kLargestProfile) {
    reading.errors.push_back({0, Format("is larger than {}", SizeText(kLargestProfile))});
    return reading;
  }
  JsonNode root;
  try {
    root = ReadJsonTree(text);
  } catch (const JsonTextError& error) {
    reading.errors.push_back({error.Line(), error.what()});
    return reading;
  }
  ValueReader values(reading.errors);
  if (!values.IsObject(root, {"$schema", "name", "description", "cameras", "maps", "flash",
                              "presets", "options"})) {
    return reading;
  }
  const std::string folder = FolderOf(file);
  const FilesOfProfile files{[&](const std::string& name) {
                               return IsFullName(name) ? name : Format("{}{}", folder, name);
                             },
                             read};
  CameraProfile& profile = reading.profile;
  profile.name = values.NeededText(root, "name");
  profile.description = values.Text(root, "description").value_or("");
  profile.cameras = ReadCameras(root, values);
  profile.maps = ReadMapSection(root.Find("maps"), files, values);
  profile.flash = ReadFlashSection(root.Find("flash"), values);
  profile.presets = ReadPresetSection(root.Find("presets"), files, values);
  profile.options = ReadOptions(root.Find("options"), values);
  SortByLine(reading.errors);
  return reading;
}

ProfileReading ReadProfile(const std::string& file) {
  return ReadProfileText(ReadWholeText(file), AbsoluteName(file),
                         [](const std::string& name) { return ReadWholeText(name); });
}

}  // namespace borvanusb
