#pragma once

#include <memory>
#include <string>
#include <utility>

#include "base/common_arguments.h"
#include "base/exit_code.h"

namespace borvanusb {

struct Context;

// What a command line asks for: the values of one command, ready to run.
class Command {
 public:
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  // Does the work, writes its text to context.output and the same facts to context.result, and
  // returns kDone, or another code when the work was done and its outcome is that code (a
  // comparison that differs, a self test that fails). Throws as Failure what keeps it from doing
  // its work.
  virtual ExitCode Run(Context& context) const = 0;
};

template <typename C>
ExitCode RunValues(const C& values, Context& context) {
  return Run(values, context);
}

// The command whose values are a `C`; a function Run(const C&, Context&) does the work.
template <typename C>
class CommandOf : public Command {
 public:
  explicit CommandOf(C given = C()) : values(std::move(given)) {}
  ExitCode Run(Context& context) const override { return RunValues(values, context); }

  C values;
};

// The values of a command, if it is of this kind; else null.
template <typename C>
const C* ValuesOf(const Command& command) {
  const auto* const same = dynamic_cast<const CommandOf<C>*>(&command);
  return same != nullptr ? &same->values : nullptr;
}

// A command line that was read.
struct Arguments {
  CommonArguments common;
  std::string words;          // that call the command: "flash program"
  bool takes_profile = true;  // of the camera that it works with
  std::string defaults_file;  // the profile that gave defaults; empty: none
  std::shared_ptr<const Command> command;
};

}  // namespace borvanusb
