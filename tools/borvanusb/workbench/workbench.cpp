#include "workbench/workbench.h"

#include "base/failure.h"
#include "base/files.h"
#include "base/version.h"
#include "camera/host.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "output/output.h"
#include "profile/profile_choice.h"
#include "workbench/page_files.h"
#include "workbench/platform.h"
#include "workbench/run_folder.h"
#include "workbench/server.h"

namespace borvanusb {

namespace {

constexpr std::size_t kSecretBytes = 16;
constexpr std::size_t kFolderBytes = 8;

ServerSettings SettingsFor(const WorkbenchCommand& command, Context& context,
                           WorkbenchPlatform& platform) {
  ServerSettings settings;
  settings.port = command.port;
  settings.stay = command.stay;
  settings.session.token = platform.RandomHex(kSecretBytes);
  settings.session.cookie = platform.RandomHex(kSecretBytes);
  settings.limits = {command.read_only, context.host.JournalFolder()};
  // The workers run in another folder, so the name must be absolute.
  if (const std::string profile = GivenProfile(context.common, context.host); !profile.empty()) {
    settings.profile_words = {"--profile", AbsoluteName(profile)};
  }
  if (context.common.force_profile) {
    settings.profile_words.emplace_back("--force-profile");
  }
  settings.version = kToolVersion;
  settings.page = PageFiles();
  settings.start_worker = [&platform](WorkerEvents events) {
    return platform.StartWorker(std::move(events));
  };
  settings.stop_requested = [&host = context.host] { return host.StopRequested(); };
  return settings;
}

}  // namespace

ExitCode Run(const WorkbenchCommand& command, Context& context) {
  WorkbenchPlatform* const platform = context.host.Workbench();
  if (platform == nullptr) {
    throw Failure(ExitCode::kInternal, "the workbench is not part of this program",
                  "Use the program from the release.");
  }
  const RunFolder folder(platform->DataFolder(), platform->RandomHex(kFolderBytes),
                         context.host.JournalFolder());
  WorkbenchServer server(SettingsFor(command, context, *platform), folder);
  const std::string address = server.Address();
  context.output.Line(address);
  if (command.browser && !platform->OpenBrowser(address)) {
    context.output.Note("no browser could be opened; open the address above in one");
  }
  context.output.Note(command.stay ? "the workbench runs until Ctrl-C"
                                   : "the workbench ends with its last page, or with Ctrl-C");
  server.Run();
  return ExitCode::kDone;
}

CommandRule WorkbenchRule() {
  RuleOf<WorkbenchCommand> rule({"workbench"}, "Shows the cameras on a page in the browser.");
  rule.Add(Option("--port", "N", "port of this machine, 1 to 65535; default a free one"),
           [](WorkbenchCommand& command, const std::string& text) {
             command.port = static_cast<std::uint16_t>(NumberValue(text, 1, 65535));
           });
  rule.Add(Flag("--no-browser", "print the page's address and open no browser"),
           [](WorkbenchCommand& command, const std::string&) { command.browser = false; });
  rule.AddFlag("--read-only", "write nothing to any camera, whatever the page asks for",
               &WorkbenchCommand::read_only);
  rule.AddFlag("--stay", "continue when the last page is closed", &WorkbenchCommand::stay);
  rule.Refuse("--camera", "which shows all cameras");
  rule.Refuse("--progress", "which shows progress on its page");
  rule.Refuse("--json", "which prints the address of a page");
  rule.Refuse("--timeout", "whose commands have the usual time limits");
  rule.Refuse("--trace", "which makes no transfers itself");
  rule.Details(
      "The page is for this machine only, and its address works once. The workbench ends 10 s "
      "after its last page is closed, unless work is being done.");
  rule.Example("borvanusb workbench --read-only");
  return rule.Take();
}

}  // namespace borvanusb
