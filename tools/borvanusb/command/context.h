#pragma once

#include <nlohmann/json_fwd.hpp>

#include "base/common_arguments.h"
#include "base/exit_code.h"

namespace borvanusb {

class Host;
class Output;
class Progress;

// The objects that a command uses. They live as long as the command.
struct Context {
  const CommonArguments& common;
  Host& host;
  Output& output;      // standard output, text for users
  Progress& progress;  // standard error
  // The object that --json prints. The command fills it.
  nlohmann::ordered_json& result;
};

}  // namespace borvanusb
