#pragma once

#include <nlohmann/json_fwd.hpp>

#include "base/common_arguments.h"
#include "base/exit_code.h"

namespace borvanusb {

class Host;
class Output;
class Progress;

// What a command works with. It lives as long as the command.
struct Context {
  const CommonArguments& common;
  Host& host;
  Output& output;      // standard output, the text for people
  Progress& progress;  // standard error
  // What --json prints: one object, the command fills it.
  nlohmann::ordered_json& result;
};

}  // namespace borvanusb
