#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "command/context.h"
#include "registers/list_text.h"

namespace borvanusb {

// How commands report problems of a list or script.

// "settings.txt:12: value 0x100 has more than 8 bits".
std::string ProblemLine(const std::string& file, const ListProblem& problem);

// Prints remarks to standard error: lines that may not do what was intended.
void NoteRemarks(const std::string& file, const ListText& list, Context& context);

// How a command ends if the file has problems.
struct ProblemOutcome {
  ExitCode code = ExitCode::kFile;
  std::string hint_for_one;
  std::string hint_for_several;
};

// If there are problems, throws Failure. Several problems are first printed to standard error.
//   consequence  "nothing was sent"
void RefuseProblems(const std::string& file, const std::vector<ListProblem>& problems,
                    const std::string& consequence, const ProblemOutcome& outcome,
                    Context& context);
// If the list has problems, prints them to standard error and throws Failure kFile.
//   consequence  "nothing was sent"
void RequireGoodList(const std::string& file, const ListText& list, const std::string& consequence,
                     Context& context);

// The result of a check without loading: prints all problems to standard output. Returns kFile if
// there are any.
//   command  "reg load"
ExitCode ReportCheck(const std::string& command, const std::string& file, const ListText& list,
                     std::uint64_t registers, Context& context);

// {"file", "registers", "written", "verified", "compared", "wrong", "problems", "remarks"}, with
// nothing verified.
nlohmann::ordered_json LoadJson(const std::string& file, const ListText& list,
                                std::uint64_t registers, bool written);

}  // namespace borvanusb
