#include "workbench/job.h"

#include <utility>

#include "workbench/file_names.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// Further messages of a job are dropped.
constexpr std::size_t kMostMessages = 2000;

Json ErrorJson(const Failure& failure) {
  return {{"code", static_cast<int>(failure.Code())},
          {"kind", KindOf(failure.Code())},
          {"message", failure.Message()},
          {"hint", failure.Hint()}};
}

// The last line that is a JSON object. It holds the command's result or its failure.
Json ResultIn(const std::string& output) {
  std::size_t end = output.size();
  while (end > 0) {
    const std::size_t before = output.rfind('\n', end - 1);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    if (end > begin) {
      Json json = Json::parse(output.begin() + static_cast<std::ptrdiff_t>(begin),
                              output.begin() + static_cast<std::ptrdiff_t>(end), nullptr, false);
      return json.is_object() ? json : Json();
    }
    end = before == std::string::npos ? 0 : before;
  }
  return {};
}

Json Answer(const WorkbenchJob& job, int code, const Json& result, const Json& error) {
  return {{"exit", code},      {"result", result}, {"error", error}, {"messages", job.messages},
          {"line", job.shown}, {"job", job.id}};
}

}  // namespace

Json JobJson(const WorkbenchJob& job) {
  return {{"id", job.id},           {"camera", job.camera.empty() ? Json() : Json(job.camera)},
          {"words", job.words},     {"line", job.shown},
          {"started", job.started}, {"progress", job.progress}};
}

Json AnswerOf(const WorkbenchJob& job, int code) {
  Json result = job.accepted.streams && code == 0 ? Json() : ResultIn(job.output);
  Json error;
  if (result.is_object() && result.contains("error") && code != 0) {
    error = result["error"];
    result = Json();
  }
  return Answer(job, code, result, error);
}

Json AnswerOf(const WorkbenchJob& job, const Failure& failure) {
  return Answer(job, static_cast<int>(failure.Code()), Json(), ErrorJson(failure));
}

Json WithPlainNames(Json answer, const std::string& folder) {
  if (answer.is_string()) {
    return WithPlainNames(answer.get_ref<const std::string&>(), std::string_view(folder));
  }
  if (answer.is_structured()) {
    for (Json& part : answer) {
      part = WithPlainNames(std::move(part), folder);
    }
  }
  return answer;
}

bool TakeErrorText(WorkbenchJob& job, std::string_view text) {
  job.error_rest += text;
  bool progressed = false;
  for (const std::string& line : TakeLines(job.error_rest)) {
    const Json json = line.starts_with('{') ? Json::parse(line, nullptr, false) : Json();
    if (json.is_object() && json.contains("progress") && json["progress"].is_object()) {
      job.progress = json["progress"];
      progressed = true;
    } else if (!line.empty() && job.messages.size() < kMostMessages) {
      job.messages.push_back(line);
    }
  }
  return progressed;
}

bool LeavesWorkerUnsure(int code) {
  return code == static_cast<int>(ExitCode::kTimeout) ||
         code == static_cast<int>(ExitCode::kInternal);
}

std::vector<std::string> TakeLines(std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  text.erase(0, begin);
  return lines;
}

}  // namespace borvanusb
