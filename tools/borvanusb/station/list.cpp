// The command `list`.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "output/columns.h"
#include "output/output.h"
#include "output/printable.h"
#include "station/list.h"

namespace borvanusb {

namespace {

constexpr std::chrono::seconds kBetweenLooks{1};

void PrintTable(const std::vector<CameraIdentity>& cameras, Output& output) {
  std::size_t width = 0;
  for (const CameraIdentity& camera : cameras) {
    width = std::max(width, ColumnsOf(Printable(camera.name)));
  }
  for (const CameraIdentity& camera : cameras) {
    output.Line(Format("{}  {}:{}  {}  {}", camera.index, camera.vid, camera.pid,
                       Padded(Printable(camera.name), width), camera.path));
  }
}

enum class Event { kArrived, kLeft };

void PrintEvent(Event event, const CameraIdentity& camera, Output& output) {
  const bool arrived = event == Event::kArrived;
  output.Line(Format("{}{}  {}", arrived ? "+ " : "- ", CameraLine(camera), camera.path));
  const nlohmann::ordered_json line = {{"event", arrived ? "arrived" : "left"},
                                       {"camera", CameraJson(camera)}};
  output.JsonLine(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

bool Holds(const std::vector<CameraIdentity>& cameras, const CameraIdentity& wanted) {
  return std::any_of(cameras.begin(), cameras.end(),
                     [&](const CameraIdentity& camera) { return camera.path == wanted.path; });
}

void Watch(Context& context) {
  std::vector<CameraIdentity> known;
  context.output.Note("watching; Ctrl-C ends it");
  while (!context.host.StopRequested() && context.output.TakesResults()) {
    std::vector<CameraIdentity> now = context.host.ListCameras();
    for (const CameraIdentity& camera : known) {
      if (!Holds(now, camera)) {
        PrintEvent(Event::kLeft, camera, context.output);
      }
    }
    for (const CameraIdentity& camera : now) {
      if (!Holds(known, camera)) {
        PrintEvent(Event::kArrived, camera, context.output);
      }
    }
    known = std::move(now);
    context.host.Sleep(kBetweenLooks);
  }
}

}  // namespace

ExitCode Run(const ListCommand& command, Context& context) {
  if (command.watch) {
    try {
      Watch(context);
    } catch (const Failure& failure) {
      // Ctrl-C is the normal way to end watching.
      if (failure.Code() != ExitCode::kStopped) {
        throw;
      }
    }
    return ExitCode::kDone;
  }
  const std::vector<CameraIdentity> cameras = context.host.ListCameras();
  if (cameras.empty()) {
    context.output.Note("no USB camera is found; borvanusb doctor shows why");
  }
  PrintTable(cameras, context.output);
  auto list = nlohmann::ordered_json::array();
  for (const CameraIdentity& camera : cameras) {
    list.push_back(CameraJson(camera));
  }
  context.result = {{"cameras", std::move(list)}};
  return ExitCode::kDone;
}

CommandRule ListRule() {
  RuleOf<ListCommand> rule({"list"}, "Lists the cameras with index, name, vid:pid and path.");
  rule.AddFlag("--watch", "report cameras that are plugged in or removed, until Ctrl-C",
               &ListCommand::watch);
  rule.Refuse("--camera", "which lists all cameras");
  rule.Refuse("--profile", "which lists all cameras");
  rule.Refuse("--force-profile", "which lists all cameras");
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--trace", "which makes no transfers");
  rule.Example("borvanusb list");
  return rule.Take();
}

}  // namespace borvanusb
