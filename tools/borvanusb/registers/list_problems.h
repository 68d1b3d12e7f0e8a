#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "command/context.h"
#include "registers/list_text.h"

namespace borvanusb {

// How commands tell what is wrong with a list or a script.

// "settings.txt:12: value 0x100 has more than 8 bits".
std::string ProblemLine(const std::string& file, const ListProblem& problem);

// Tells what a list may do else than meant, on standard error.
void NoteRemarks(const std::string& file, const ListText& list, Context& context);

// How a file with problems ends a command.
struct ProblemOutcome {
  ExitCode code = ExitCode::kFile;
  std::string hint_for_one;
  std::string hint_for_several;
};

// Throws Failure when there are problems, after telling each of several on standard error.
//   consequence  "nothing was sent"
void RefuseProblems(const std::string& file, const std::vector<ListProblem>& problems,
                    const std::string& consequence, const ProblemOutcome& outcome,
                    Context& context);
// Throws Failure kFile when the list has problems, after telling each of them on standard error.
//   consequence  "nothing was sent"
void RequireGoodList(const std::string& file, const ListText& list, const std::string& consequence,
                     Context& context);

// The outcome of a check alone: every problem on standard output; kFile if there is one.
//   command  "reg load"
ExitCode ReportCheck(const std::string& command, const std::string& file, const ListText& list,
                     std::uint64_t registers, Context& context);

// {"file", "registers", "written", "verified", "compared", "wrong", "problems", "remarks"}: nothing
// verified.
nlohmann::ordered_json LoadJson(const std::string& file, const ListText& list,
                                std::uint64_t registers, bool written);

}  // namespace borvanusb
