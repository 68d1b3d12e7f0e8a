#include "registers/list_problems.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "output/output.h"

namespace borvanusb {

namespace {

nlohmann::ordered_json ProblemsJson(const std::vector<ListProblem>& problems) {
  auto list = nlohmann::ordered_json::array();
  for (const ListProblem& problem : problems) {
    list.push_back({{"line", problem.line}, {"message", problem.text}});
  }
  return list;
}

}  // namespace

std::string ProblemLine(const std::string& file, const ListProblem& problem) {
  return Format("{}{}: {}", file, problem.line != 0 ? Format(":{}", problem.line) : "",
                problem.text);
}

void NoteRemarks(const std::string& file, const ListText& list, Context& context) {
  for (const ListProblem& remark : list.remarks) {
    context.output.Note(Format("note: {}", ProblemLine(file, remark)));
  }
}

void RefuseProblems(const std::string& file, const std::vector<ListProblem>& problems,
                    const std::string& consequence, const ProblemOutcome& outcome,
                    Context& context) {
  if (problems.empty()) {
    return;
  }
  const std::string first = ProblemLine(file, problems.front());
  if (problems.size() == 1) {
    throw Failure(outcome.code, Format("{}; {}", first, consequence), outcome.hint_for_one);
  }
  for (const ListProblem& problem : problems) {
    context.output.Error(ProblemLine(file, problem));
  }
  throw Failure(outcome.code,
                Format("{}: {}, the first in {}; {}", file, Count(problems.size(), "problem"),
                       first, consequence),
                outcome.hint_for_several);
}

void RequireGoodList(const std::string& file, const ListText& list, const std::string& consequence,
                     Context& context) {
  const std::string hint = "docs/list-files.md says what a list may hold.";
  RefuseProblems(file, list.problems, consequence,
                 {ExitCode::kFile, hint, Format("All are listed above; {}", hint)}, context);
}

ExitCode ReportCheck(const std::string& command, const std::string& file, const ListText& list,
                     std::uint64_t registers, Context& context) {
  for (const ListProblem& problem : list.problems) {
    context.output.Line(ProblemLine(file, problem));
  }
  NoteRemarks(file, list, context);
  context.result = LoadJson(file, list, registers, false);
  if (!list.problems.empty()) {
    TellOutcome(context, command, Format("{}: {}", file, Count(list.problems.size(), "problem")));
    return ExitCode::kFile;
  }
  context.output.Line(Format("{}: good, {}", file, Count(registers, "register")));
  return ExitCode::kDone;
}

nlohmann::ordered_json LoadJson(const std::string& file, const ListText& list,
                                std::uint64_t registers, bool written) {
  return {{"file", file},
          {"registers", registers},
          {"written", written},
          {"verified", nullptr},
          {"compared", nullptr},
          {"wrong", nlohmann::ordered_json::array()},
          {"problems", ProblemsJson(list.problems)},
          {"remarks", ProblemsJson(list.remarks)}};
}

}  // namespace borvanusb
