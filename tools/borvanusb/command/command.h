#pragma once

#include <memory>
#include <string>
#include <utility>

#include "base/common_arguments.h"
#include "base/exit_code.h"

namespace borvanusb {

struct Context;

// A parsed command line: the values of one command, ready to run.
class Command {
 public:
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  // Does the work, writes text to context.output and the same facts to context.result. Returns
  // kDone, or another code for a negative result of completed work (a comparison that differs, a
  // self-test that fails). Throws Failure if the work can't be done.
  virtual ExitCode Run(Context& context) const = 0;
};

template <typename C>
ExitCode RunValues(const C& values, Context& context) {
  return Run(values, context);
}

// A command with values of type `C`. A function Run(const C&, Context&) does the work.
template <typename C>
class CommandOf : public Command {
 public:
  explicit CommandOf(C given = C()) : values(std::move(given)) {}
  ExitCode Run(Context& context) const override { return RunValues(values, context); }

  C values;
};

// The values of a command if it is of this type, else null.
template <typename C>
const C* ValuesOf(const Command& command) {
  const auto* const same = dynamic_cast<const CommandOf<C>*>(&command);
  return same != nullptr ? &same->values : nullptr;
}

// A parsed command line.
struct Arguments {
  CommonArguments common;
  std::string words;          // of the command: "flash program"
  bool takes_profile = true;  // uses the camera's profile
  std::string defaults_file;  // profile with the used defaults; empty: none
  std::shared_ptr<const Command> command;
};

}  // namespace borvanusb
