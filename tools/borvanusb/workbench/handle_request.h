#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "command/command_line.h"
#include "workbench/gate.h"
#include "workbench/http_message.h"
#include "workbench/live_reads.h"
#include "workbench/services.h"
#include "workbench/word_rules.h"

namespace borvanusb {

// What a request asks for, beyond an answer that is known at once.

// Run a command line and answer with its outcome.
struct RunOrder {
  std::vector<std::string> words;
  std::optional<std::string> camera;  // path
  std::string job;                    // chosen by the page; empty: the workbench chooses
  bool wait = true;                   // false: answer when the work has begun
  AcceptedWords accepted;
};

// Read registers again and again; no wishes: end that.
struct LiveOrder {
  std::string camera;
  std::string page;  // whose event stream it belongs to; empty: to any
  std::vector<LiveWish> wishes;
};

struct StateOrder {};  // answer with all that there is
// Send events until the page goes.
struct EventStream {
  std::string page;  // its name; may be empty
};

using Reply = std::variant<HttpResponse, RunOrder, LiveOrder, StateOrder, EventStream>;

struct WorkbenchRules {
  const ToolDescription& tool;
  WordLimits limits;
};

// Answers a request, or says what has to be done for it. Responses are not Hardened yet.
Reply HandleRequest(const HttpRequest& request, Session& session, const WorkbenchRules& rules,
                    WorkbenchServices& services);

}  // namespace borvanusb
