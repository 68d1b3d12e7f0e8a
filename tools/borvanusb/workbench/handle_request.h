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

// Work that a request asks for. Other requests are answered immediately.

// Run a command line and answer with its result.
struct RunOrder {
  std::vector<std::string> words;
  std::optional<std::string> camera;  // path
  std::string job;                    // id chosen by the page; empty: the workbench chooses
  bool wait = true;                   // false: answer as soon as the work has started
  AcceptedWords accepted;
};

// Read these registers repeatedly. No wishes: stop reading.
struct LiveOrder {
  std::string camera;
  std::string page;  // reading ends with the event stream of this page; empty: with the last one
  std::vector<LiveWish> wishes;
};

struct StateOrder {};  // answer with the complete state
// Send events until the page disconnects.
struct EventStream {
  std::string page;  // its name; may be empty
};

using Reply = std::variant<HttpResponse, RunOrder, LiveOrder, StateOrder, EventStream>;

struct WorkbenchRules {
  const ToolDescription& tool;
  WordLimits limits;
};

// Answers a request, or returns the work that it requires. The caller must pass responses to
// Hardened().
Reply HandleRequest(const HttpRequest& request, Session& session, const WorkbenchRules& rules,
                    WorkbenchServices& services);

}  // namespace borvanusb
