#include "command/several_cameras.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/camera_table.h"
#include "command/camera_work.h"
#include "output/output.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kAll = "--all";

// Opens the camera without --wait, because a camera without a vendor unit will never get one.
bool HasVendorUnit(const CameraIdentity& camera, Host& host) {
  Host::TryAgain try_again = host.SetTryAgain({});
  bool has_one = true;
  try {
    host.OpenCamera(camera);
  } catch (const NoVendorUnit&) {
    has_one = false;
  } catch (const Failure& failure) {
    // The camera's own process reports all other problems.
    if (failure.Code() == ExitCode::kStopped) {
      host.SetTryAgain(std::move(try_again));
      throw;
    }
  }
  host.SetTryAgain(std::move(try_again));
  return has_one;
}

std::vector<CameraIdentity> UsableCameras(const std::vector<CameraIdentity>& all,
                                          Context& context) {
  std::vector<CameraIdentity> usable;
  for (const CameraIdentity& camera : all) {
    if (HasVendorUnit(camera, context.host)) {
      usable.push_back(camera);
    } else {
      context.output.Note(Format("note: {} has no vendor unit and is skipped", CameraLine(camera)));
    }
  }
  if (usable.empty()) {
    throw Failure(ExitCode::kNoCamera,
                  Format("no camera with a vendor unit is found; there {} {} without one",
                         all.size() == 1 ? "is" : "are", all.size()),
                  "Plug one in; borvanusb doctor shows more.");
  }
  return usable;
}

std::vector<CameraIdentity> NamedCameras(const std::vector<CameraIdentity>& all,
                                         const std::vector<std::string>& choices) {
  std::vector<CameraIdentity> chosen;
  for (const std::string& choice : choices) {
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

std::string Seconds(std::chrono::milliseconds time) {
  return Format("{:.3f}", std::chrono::duration<double>(time).count());
}

// Adds the common options for a camera's process. They are inserted before a "--".
std::vector<std::string> WithCommon(std::vector<std::string> words, bool shows_progress,
                                    const CommonArguments& common, const CameraIdentity& camera) {
  std::vector<std::string> options = {"--camera", camera.path, "--json"};
  const auto add = [&](const std::string& name, const std::string& value) {
    if (!value.empty()) {
      options.insert(options.end(), {name, value});
    }
  };
  add("--progress", shows_progress ? "json" : "");
  add("--timeout", Seconds(common.timeout));
  add("--wait", common.wait.count() > 0 ? Seconds(common.wait) : "");
  add("--profile", common.profile);
  add("--trace", common.trace.empty()
                     ? ""
                     : InsertBeforeExtension(common.trace, std::to_string(camera.index)));
  if (common.force_profile) {
    options.emplace_back("--force-profile");
  }
  if (common.verbose) {
    options.emplace_back("--verbose");
  }
  words.insert(std::ranges::find(words, "--"), options.begin(), options.end());
  return words;
}

// Collects the output of the child processes.
class Children {
 public:
  Children(std::vector<CameraIdentity> cameras, const SeveralWork& work, Context& context)
      : cameras_(std::move(cameras)),
        work_(work),
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
    // A table must be redrawn in place, so it requires a terminal even if bars were requested.
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

  // A crashed child has an exit code of the operating system.
  static ExitCode CodeOf(int code) {
    const bool known = code >= 0 && code <= static_cast<int>(ExitCode::kInternal);
    return known ? static_cast<ExitCode>(code) : ExitCode::kInternal;
  }

  void Tell(const CameraIdentity& camera, const Json& said, ExitCode code) const {
    const bool has_error = said.is_object() && said.contains("error");
    const bool has_result = said.is_object() && !has_error;
    Json error = has_error ? said["error"] : Json();
    if (code != ExitCode::kDone && !said.is_object()) {
      error = {{"code", static_cast<int>(code)},
               {"kind", KindOf(code)},
               {"message", "the process for this camera ended without a result"},
               {"hint", "Run the command for this camera alone."}};
    }
    const Json line = {{"camera", CameraJson(camera)},
                       {"exit_code", static_cast<int>(code)},
                       {"kind", KindOf(code)},
                       {"result", has_result ? said : Json()},
                       {"error", error}};
    context_.output.JsonLine(line.dump(-1, ' ', false, Json::error_handler_t::replace));
    // A comparison that differs also has a result.
    const std::string summary = has_result ? work_.summary(said) : "done";
    if (error.is_null()) {
      context_.output.Line(Format("{}: {}", CameraLine(camera), summary));
      return;
    }
    context_.output.Line(Format("{}: failed, {}", CameraLine(camera), KindOf(code)));
    context_.output.Error(
        Format("camera {}: {}", camera.index, error.value("message", std::string())));
    PrintHint(error.value("hint", std::string()), context_.output);
  }

  std::vector<CameraIdentity> cameras_;
  const SeveralWork& work_;
  Context& context_;
  std::vector<Json> results_;
  CameraTable table_;
};

}  // namespace

std::vector<CameraIdentity> SeveralCameras(bool all, Context& context) {
  Host& host = context.host;
  const auto listed = [&] {
    std::vector<CameraIdentity> cameras = host.ListCameras();
    if (cameras.empty()) {
      throw Failure(ExitCode::kNoCamera, "no USB camera is found",
                    "Plug one in; borvanusb doctor shows why one is not found.");
    }
    return cameras;
  };
  if (all) {
    return UsableCameras(host.UntilItWorks(listed), context);
  }
  return host.UntilItWorks([&] { return NamedCameras(listed(), context.common.cameras); });
}

std::vector<std::string> WordsForOne(const GivenWords& words, const ChangeValue& change) {
  std::vector<std::string> line = words.command;
  const auto changed = [&](const std::string& option, std::string value) {
    if (change) {
      change(option, value);
    }
    return value;
  };
  for (const std::string& word : words.options) {
    const std::size_t sign = word.find('=');
    if (word == kAll) {
      continue;
    }
    const std::string name = word.substr(0, sign);
    line.push_back(sign == std::string::npos
                       ? name
                       : Format("{}={}", name, changed(name, word.substr(sign + 1))));
  }
  if (!words.arguments.empty()) {
    line.emplace_back("--");
  }
  for (const std::string& word : words.arguments) {
    line.push_back(changed("", word));
  }
  return line;
}

std::string InsertBeforeExtension(const std::string& file, const std::string& part) {
  const std::size_t slash = file.find_last_of("/\\");
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  const std::size_t point = file.find_last_of('.');
  const bool has_extension = point != std::string::npos && point > start;
  return Format("{}-{}{}", file.substr(0, has_extension ? point : file.size()), part,
                has_extension ? file.substr(point) : "");
}

ExitCode RunForSeveral(const SeveralWork& work, bool all, Context& context) {
  const std::vector<CameraIdentity> cameras = SeveralCameras(all, context);
  std::vector<std::vector<std::string>> words;
  words.reserve(cameras.size());
  for (const CameraIdentity& camera : cameras) {
    words.push_back(WithCommon(work.words(camera), work.shows_progress, context.common, camera));
  }
  Children children(cameras, work, context);
  const std::vector<int> codes = context.host.RunChildren(
      words, [&](std::size_t child, bool from_error, const std::string& line) {
        children.Take(child, from_error, line);
      });
  return children.Finish(codes);
}

}  // namespace borvanusb
