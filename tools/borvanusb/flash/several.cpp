#include "flash/several.h"

#include <array>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "command/several_cameras.h"
#include "command/standard_streams.h"
#include "flash/engine/journal_store.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;
using Placeholder = std::pair<const char*, std::string>;

std::array<Placeholder, 4> PlaceholdersOf(const CameraIdentity& camera) {
  return {{{"{index}", std::to_string(camera.index)},
           {"{vid}", camera.vid},
           {"{pid}", camera.pid},
           {"{camera}", CameraInFileName(camera)}}};
}

std::string LowerCase(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return text;
}

std::string ReadSummary(const Json& result) {
  return Format("read {} into {}", SizeText(result.value("size", std::uint64_t{0})),
                result.value("file", std::string()));
}

std::string VerifySummary(const Json& result) {
  if (result.value("equal", false)) {
    return "equal";
  }
  const auto different = result.value("different_bytes", std::uint64_t{0});
  return Format("{} {}, the first at {}", SizeText(different),
                different == 1 ? "differs" : "differ",
                Hex(result.value("first_difference", std::uint64_t{0})));
}

}  // namespace

std::string NameForCamera(const std::string& file, const CameraIdentity& camera) {
  std::string name = file;
  for (const auto& [placeholder, value] : PlaceholdersOf(camera)) {
    const std::string_view text = placeholder;
    for (std::size_t at = name.find(text); at != std::string::npos;
         at = name.find(text, at + value.size())) {
      name.replace(at, text.size(), value);
    }
  }
  return name;
}

void CheckNameForSeveral(const std::string& file, bool all, const GivenOptions& given) {
  CheckAll(all, given);
  if (!IsForSeveral(all, given)) {
    return;
  }
  if (file.empty() || IsStandardStream(file)) {
    throw WrongUse("FILE: is needed for several cameras, with {index} or {camera} in its name");
  }
  if (file.find("{index}") == std::string::npos && file.find("{camera}") == std::string::npos) {
    throw WrongUse(
        "FILE: one file can't hold the flash of several cameras; put {index} or {camera} into its "
        "name, such as flash-{index}.bin");
  }
}

ExitCode ReadSeveral(const std::string& file, bool all, Context& context) {
  std::set<std::string> names;
  const auto words = [&](const CameraIdentity& camera) {
    const std::string name = NameForCamera(file, camera);
    if (!names.insert(LowerCase(AbsoluteName(name))).second) {
      throw Failure(ExitCode::kUsage,
                    Format("FILE: {} would be the name for two cameras; nothing was read", name),
                    "Put {index} into the name.");
    }
    // Replaces the placeholders here, so that the process can't take another camera's name.
    return WordsForOne(context.common.words, [&](const std::string& option, std::string& value) {
      value = option.empty() && value == file ? name : value;
    });
  };
  return RunForSeveral({words, ReadSummary}, all, context);
}

ExitCode VerifySeveral(bool all, Context& context) {
  const auto words = [&](const CameraIdentity& camera) {
    return WordsForOne(context.common.words, [&](const std::string& option, std::string& value) {
      if (option == "--diff") {
        value = InsertBeforeExtension(value, std::to_string(camera.index));
      }
    });
  };
  return RunForSeveral({words, VerifySummary}, all, context);
}

}  // namespace borvanusb
