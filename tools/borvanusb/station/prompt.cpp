#include "station/prompt.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/failure.h"
#include "base/format.h"
#include "base/joined.h"
#include "command/camera_work.h"
#include "command/command_line.h"
#include "command/complete_line.h"
#include "names/completed_names.h"
#include "names/known_names.h"
#include "output/output.h"
#include "output/printable.h"
#include "output/progress.h"
#include "station/line_editor.h"
#include "station/run.h"
#include "station/script.h"
#include "station/script_commands.h"

namespace borvanusb {

namespace {

constexpr const char* kPrompt = "borvanusb> ";
constexpr std::size_t kMostListed = 100;

// The commands of the tool and the additional script lines.
ToolDescription DescribeLines() {
  ToolDescription tool = DescribeTool();
  for (const CommandRule& rule : ScriptOnlyRules()) {
    tool.commands.push_back(rule.description);
  }
  for (const char* const word : {"exit", "quit"}) {
    CommandDescription command;
    command.words = {word};
    tool.commands.push_back(std::move(command));
  }
  return tool;
}

class Prompt {
 public:
  Prompt(Terminal& terminal, ScriptVariables variables, Context& context)
      : terminal_(terminal), variables_(std::move(variables)), context_(context) {}

  ExitCode Run() {
    context_.output.Note("exit or Ctrl-D ends; Tab completes; --help shows all commands");
    while (context_.output.TakesResults()) {
      const std::optional<std::string> line = ReadLine();
      if (!line) {
        break;
      }
      try {
        if (!RunOne(*line)) {
          break;
        }
      } catch (const Failure& failure) {
        Tell(failure);
      }
    }
    context_.host.ForgetStop();
    return ExitCode::kDone;
  }

 private:
  // Returns nothing at the end of input.
  std::optional<std::string> ReadLine() {
    terminal_.BeginEditing();
    std::optional<std::string> line;
    bool ended = false;
    while (!line && !ended) {
      Show();
      Key key = terminal_.ReadKey();
      key.text = Printable(key.text);
      switch (editor_.Press(key)) {
        case LineEditor::Outcome::kEditing:
          break;
        case LineEditor::Outcome::kComplete:
          Complete();
          break;
        case LineEditor::Outcome::kLine:
          line = editor_.Take();
          terminal_.EndLine("");
          break;
        case LineEditor::Outcome::kCancelled:
          editor_.Clear();
          terminal_.EndLine("");
          break;
        case LineEditor::Outcome::kEnd:
          ended = true;
          terminal_.EndLine("");
          break;
      }
    }
    terminal_.EndEditing();
    return line;
  }

  void Show() {
    constexpr int kLeastColumns = 20;
    // Keeps the last column free, because some consoles wrap the line when it is written.
    const auto columns = static_cast<std::size_t>(std::max(terminal_.Columns(), kLeastColumns) - 1);
    const VisibleLine visible = VisiblePart(kPrompt, editor_.Text(), editor_.Cursor(), columns);
    terminal_.ShowLine(visible.line, visible.before_cursor);
  }

  void Complete() {
    static const ToolDescription kTool = DescribeLines();
    const LineCompletion completion = CompleteLine(
        kTool, editor_.BeforeCursor(),
        [this](const std::string& kind, const std::string& word) { return Names(kind, word); });
    const std::string before = editor_.BeforeCursor().substr(completion.begin);
    if (completion.candidates.empty()) {
      return;
    }
    std::string common = CommonBeginning(completion.candidates);
    if (completion.candidates.size() == 1 && !LineCompletion::IsOpen(common)) {
      common += ' ';
    }
    if (common.size() > before.size() || completion.candidates.size() == 1) {
      editor_.Complete(completion.begin, common);
      return;
    }
    std::vector<std::string> listed = completion.candidates;
    if (listed.size() > kMostListed) {
      listed.resize(kMostListed);
      listed.emplace_back("...");
    }
    terminal_.EndLine(Format("{}\n", Printable(Joined(listed, "  "))));
  }

  // The names in the profile of the chosen camera that begin with a word. Finds the profile once
  // for each line.
  std::vector<std::string> Names(const std::string& kind, const std::string& word) {
    try {
      if (names_ == nullptr) {
        names_ = KnownNames(context_);
      }
    } catch (const Failure&) {
      // Without a camera or a profile there are no names; the command tells why, if it needs them.
      return {};
    }
    const auto known = std::ranges::find(kNameKinds, kind);
    return CompletedNames(static_cast<NameKind>(known - kNameKinds.begin()), word, *names_);
  }

  // Returns false to end the prompt.
  bool RunOne(const std::string& line) {
    names_.reset();
    context_.host.ForgetStop();
    std::vector<std::string> words = variables_.Expand(SplitLine(line));
    // Lines copied from the guide begin with the program's name.
    if (!words.empty() && words.front() == "borvanusb") {
      words.erase(words.begin());
    }
    if (words.empty()) {
      return true;
    }
    if (words.size() == 1 && (words.front() == "exit" || words.front() == "quit")) {
      return false;
    }
    auto parsed = ParseLine(words, LineDefaults(context_));
    if (const auto* const answer = std::get_if<TextAnswer>(&parsed)) {
      PrintLines(answer->text, context_.output);
      return true;
    }
    const auto& arguments = std::get<Arguments>(parsed);
    CheckLineOptions(arguments, "session");
    if (const auto* const script = ValuesOf<RunCommand>(*arguments.command);
        script != nullptr && script->file.empty()) {
      throw Failure(ExitCode::kUsage, "this is a prompt already", "Give run a script.");
    }
    command_ = arguments.words;
    nlohmann::ordered_json result;
    RunLine(
        arguments, [](const Command& command, Context& of_line) { return command.Run(of_line); },
        context_, result);
    command_.clear();
    return true;
  }

  void Tell(const Failure& failure) {
    context_.progress.Break();
    const std::string command = std::exchange(command_, {});
    context_.output.Error(
        Format("borvanusb: {}{}{}", command, command.empty() ? "" : ": ", failure.Message()));
    PrintHint(failure.Hint(), context_.output);
  }

  Terminal& terminal_;
  ScriptVariables variables_;
  Context& context_;
  LineEditor editor_;
  std::shared_ptr<const RegisterNames> names_;
  std::string command_;  // the running command
};

}  // namespace

ExitCode RunPrompt(Terminal& terminal, ScriptVariables variables, Context& context) {
  return Prompt(terminal, std::move(variables), context).Run();
}

}  // namespace borvanusb
