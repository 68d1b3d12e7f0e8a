#include "flash/program_several.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "flash/camera_table.h"
#include "flash/program_names.h"
#include "flash/report.h"
#include "output/output.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

std::vector<CameraIdentity> Chosen(const FlashProgramCommand& command, Context& context) {
  std::vector<CameraIdentity> all = context.host.ListCameras();
  if (all.empty()) {
    throw Failure(ExitCode::kNoCamera, "no USB camera is found",
                  "Plug one in; borvanusb doctor shows why one is not found.");
  }
  if (command.all) {
    return all;
  }
  std::vector<CameraIdentity> chosen;
  for (const std::string& choice : context.common.cameras) {
    const CameraIdentity camera = ChooseCamera(all, choice);
    if (std::ranges::any_of(
            chosen, [&](const CameraIdentity& other) { return other.path == camera.path; })) {
      throw Failure(ExitCode::kUsage,
                    Format("--camera: camera {} is given twice", CameraLine(camera)),
                    "Name each camera once.");
    }
    chosen.push_back(camera);
  }
  return chosen;
}

std::vector<std::string> ChildWords(FlashProgramCommand command, const CommonArguments& common,
                                    const CameraIdentity& camera) {
  const std::string part = std::to_string(camera.index);
  const auto own = [&](const std::string& file) {
    return file.empty() ? file : InsertBeforeExtension(file, part);
  };
  command.report = own(command.report);
  command.backup_file = own(command.backup_file);
  std::vector<std::string> words = ProgramWords(command);
  const std::string seconds =
      Format("{:.3f}", std::chrono::duration<double>(common.timeout).count());
  words.insert(words.end(),
               {"--camera", camera.path, "--json", "--progress", "json", "--timeout", seconds});
  if (!common.trace.empty()) {
    words.insert(words.end(), {"--trace", own(common.trace)});
  }
  if (common.verbose) {
    words.emplace_back("--verbose");
  }
  if (!common.profile.empty()) {
    words.insert(words.end(), {"--profile", AbsoluteName(common.profile)});
  }
  if (common.force_profile) {
    words.emplace_back("--force-profile");
  }
  return words;
}

std::string Summary(const Json& result) {
  if (result.value("dry_run", false)) {
    return Format("would change {} bytes", result.value("changed_bytes", std::uint64_t{0}));
  }
  const auto changed = result.value("changed_bytes", std::uint64_t{0}) / kSectorSize;
  return changed == 0 ? "holds the image already"
                      : Format("programmed, {} sectors changed{}", changed,
                               result.contains("verified") && result["verified"] == true
                                   ? ", read back equal"
                                   : "");
}

// What the children say.
class Children {
 public:
  Children(std::vector<CameraIdentity> cameras, Context& context)
      : cameras_(std::move(cameras)),
        context_(context),
        results_(cameras_.size()),
        table_(cameras_, context.output, context.host, ModeFor(context)) {}

  void Take(std::size_t child, bool from_error, const std::string& line) {
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object()) {
      if (!line.empty()) {
        table_.Remark(child, line);
      }
    } else if (!from_error) {
      results_[child] = json;
      table_.SetEnd(child, !json.contains("error"));
    } else if (json.contains("progress")) {
      TakeProgress(child, json);
    } else {
      table_.Remark(child, line);
    }
  }

  ExitCode Finish(const std::vector<int>& codes) {
    table_.End();
    int worst = 0;
    for (std::size_t i = 0; i < cameras_.size(); ++i) {
      const ExitCode code = CodeOf(i < codes.size() ? codes[i] : -1);
      worst = std::max(worst, static_cast<int>(code));
      Tell(cameras_[i], results_[i], code);
    }
    return static_cast<ExitCode>(worst);
  }

 private:
  static CameraTable::Mode ModeFor(const Context& context) {
    const ProgressMode mode = context.common.progress;
    if (context.common.quiet || mode == ProgressMode::kNone || mode == ProgressMode::kJson) {
      return CameraTable::Mode::kNone;
    }
    // A table is drawn over itself: even where bars are asked for, that takes a terminal.
    const bool bars = mode != ProgressMode::kLines && context.output.ErrorColumns() > 0;
    return bars ? CameraTable::Mode::kBars : CameraTable::Mode::kLines;
  }

  void TakeProgress(std::size_t child, Json json) {
    if (context_.common.progress == ProgressMode::kJson) {
      json["camera"] = cameras_[child].index;
      context_.output.Note(json.dump());
    }
    try {
      const Json& progress = json.at("progress");
      const auto rate = progress.find("rate");
      table_.SetProgress(child, progress.at("stage").get<std::string>(),
                         progress.at("percent").get<int>(),
                         rate != progress.end() && rate->is_number() ? rate->get<double>() : 0);
    } catch (const Json::exception&) {
      table_.Remark(child, json.dump(-1, ' ', false, Json::error_handler_t::replace));
    }
  }

  // A child that crashed ends with a number of the system's.
  static ExitCode CodeOf(int code) {
    const bool known = code >= 0 && code <= static_cast<int>(ExitCode::kInternal);
    return known ? static_cast<ExitCode>(code) : ExitCode::kInternal;
  }

  void Tell(const CameraIdentity& camera, const Json& said, ExitCode code) const {
    const bool has_error = said.is_object() && said.contains("error");
    Json error = has_error ? said["error"] : Json();
    if (code != ExitCode::kDone && !has_error) {
      error = {{"code", static_cast<int>(code)},
               {"kind", KindOf(code)},
               {"message", "the process for this camera ended without a result"},
               {"hint", "Run flash program for this camera alone."}};
    }
    const Json line = {{"camera", CameraJson(camera)},
                       {"exit_code", static_cast<int>(code)},
                       {"kind", KindOf(code)},
                       {"result", has_error ? Json() : said},
                       {"error", error}};
    context_.output.JsonLine(line.dump(-1, ' ', false, Json::error_handler_t::replace));
    if (code == ExitCode::kDone) {
      context_.output.Line(
          Format("{}: {}", CameraLine(camera), said.is_object() ? Summary(said) : "done"));
      return;
    }
    context_.output.Line(Format("{}: failed, {}", CameraLine(camera), KindOf(code)));
    context_.output.Error(
        Format("camera {}: {}", camera.index, error.value("message", std::string())));
    if (const std::string hint = error.value("hint", std::string()); !hint.empty()) {
      context_.output.Error(Format("  {}", hint));
    }
  }

  std::vector<CameraIdentity> cameras_;
  Context& context_;
  std::vector<Json> results_;
  CameraTable table_;
};

}  // namespace

ExitCode ProgramSeveral(const FlashProgramCommand& command, Context& context) {
  // What can't be right for any camera is told once.
  LoadForProgramming(command, context.output);
  const std::vector<CameraIdentity> cameras = Chosen(command, context);
  std::vector<std::vector<std::string>> words;
  words.reserve(cameras.size());
  for (const CameraIdentity& camera : cameras) {
    words.push_back(ChildWords(command, context.common, camera));
  }
  Children children(cameras, context);
  const std::vector<int> codes = context.host.RunChildren(
      words, [&](std::size_t child, bool from_error, const std::string& line) {
        children.Take(child, from_error, line);
      });
  return children.Finish(codes);
}

}  // namespace borvanusb
