#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "output/output.h"
#include "station/diagnosis.h"
#include "station/doctor.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

void RethrowStop(const Failure& failure) {
  if (failure.Code() == ExitCode::kStopped) {
    throw;
  }
}

std::string ProblemOf(Host& host, const CameraIdentity& identity) {
  try {
    host.OpenCamera(identity)->ReadRegister(kFeatureRegister, RegisterWidth::kByte);
    return {};
  } catch (const Failure& failure) {
    RethrowStop(failure);
    return failure.Message();
  }
}

Examination Examine(Host& host) {
  Examination examination;
  examination.system = host.ExamineSystem();
  try {
    for (const CameraIdentity& identity : host.ListCameras()) {
      examination.cameras.push_back({identity, ProblemOf(host, identity)});
    }
  } catch (const Failure& failure) {
    RethrowStop(failure);
    examination.list_problem = failure.Message();
  }
  return examination;
}

std::string Or(const std::string& text, const std::string& other) {
  return text.empty() ? other : text;
}

void PrintSystem(const SystemReport& system, Output& output) {
  output.Line(Format("program      {}, version {}, {} bits", system.program, system.program_version,
                     system.pointer_bits));
  output.Line(Format("system       {}, code page {}", system.system, system.code_page));
  output.Line(Format("library      {}", system.library.empty()
                                            ? std::string("not found")
                                            : Format("{}, version {}", system.library,
                                                     Or(system.library_version, "unknown"))));
  if (!system.library_problem.empty()) {
    output.Line(Format("             can't be used: {}", system.library_problem));
  }
  for (const std::string& place : system.library_places) {
    output.Line(Format("             looked for at {}", place));
  }
  output.Line(Format("COM          {}", Or(system.com_problem, "works")));
  for (const auto& [name, value] : system.environment) {
    output.Line(Format("environment  {}={}", name, value));
  }
}

void PrintDevices(const Examination& examination, Output& output) {
  output.Line("");
  output.Line(Format("video devices of the system: {}", examination.system.devices.size()));
  for (const VideoDevice& device : examination.system.devices) {
    output.Line(Format("  {}  {}", Or(device.name, "(without a name)"),
                       Or(device.path, "(without a path)")));
    output.Line(Format("    {}", device.reason.empty() ? std::string("listed as a camera")
                                                       : Format("not listed: {}", device.reason)));
  }
  output.Line(Format("cameras: {}", examination.list_problem.empty()
                                        ? std::to_string(examination.cameras.size())
                                        : Format("can't be listed: {}", examination.list_problem)));
  for (const ExaminedCamera& camera : examination.cameras) {
    output.Line(Format("  {}", CameraLine(camera.identity)));
    output.Line(Format("    vendor unit: {}", Or(camera.problem, "answers")));
  }
}

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json SystemJson(const SystemReport& system) {
  Json environment = Json::object();
  for (const auto& [name, value] : system.environment) {
    environment[name] = value;
  }
  return {{"program", system.program},
          {"program_version", system.program_version},
          {"pointer_bits", system.pointer_bits},
          {"system", system.system},
          {"code_page", system.code_page},
          {"library", TextOrNull(system.library)},
          {"library_version", TextOrNull(system.library_version)},
          {"library_problem", TextOrNull(system.library_problem)},
          {"library_places", system.library_places},
          {"com_problem", TextOrNull(system.com_problem)},
          {"environment", std::move(environment)}};
}

Json ExaminationJson(const Examination& examination, const Diagnosis& diagnosis) {
  Json devices = Json::array();
  for (const VideoDevice& device : examination.system.devices) {
    devices.push_back(
        {{"name", device.name}, {"path", device.path}, {"reason", TextOrNull(device.reason)}});
  }
  Json cameras = Json::array();
  for (const ExaminedCamera& camera : examination.cameras) {
    cameras.push_back(
        {{"camera", CameraJson(camera.identity)}, {"problem", TextOrNull(camera.problem)}});
  }
  return {{"system", SystemJson(examination.system)},
          {"devices", std::move(devices)},
          {"list_problem", TextOrNull(examination.list_problem)},
          {"cameras", std::move(cameras)},
          {"cause", diagnosis.cause},
          {"advice", diagnosis.advice}};
}

}  // namespace

ExitCode Run(const DoctorCommand& /*command*/, Context& context) {
  const Examination examination = Examine(context.host);
  const Diagnosis diagnosis = Diagnose(examination);
  PrintSystem(examination.system, context.output);
  PrintDevices(examination, context.output);
  context.output.Line("");
  context.output.Line(diagnosis.cause);
  if (!diagnosis.advice.empty()) {
    context.output.Line(diagnosis.advice);
  }
  context.result = ExaminationJson(examination, diagnosis);
  if (diagnosis.code != ExitCode::kDone) {
    TellOutcome(context, "doctor", diagnosis.cause);
  }
  return diagnosis.code;
}

CommandRule DoctorRule() {
  RuleOf<DoctorCommand> rule({"doctor"}, "Shows why a camera is not found, for a bug report.");
  rule.Refuse("--camera", "which examines all cameras");
  rule.Refuse("--profile", "which examines all cameras");
  rule.Refuse("--force-profile", "which examines all cameras");
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb doctor > report.txt");
  return rule.Take();
}

}  // namespace borvanusb
