#include "base/joined.h"
#include "command/completion_scripts.h"

namespace borvanusb {

namespace {

// A text of PowerShell in single quotes, in which only they are special.
std::string Literal(const std::string& text) {
  std::string literal = "'";
  for (const char character : text) {
    literal += character;
    if (character == '\'') {
      literal += character;
    }
  }
  return literal + "'";
}

std::string List(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += (list.empty() ? "" : ", ") + Literal(text);
  }
  return "@(" + list + ")";
}

// One row: the option's name, its text, whether a value follows, and the values that are few.
std::string OptionRow(const OptionDescription& option) {
  return "    @{ Name = " + Literal(option.names.back()) + "; Text = " + Literal(option.text) +
         "; TakesValue = " + (option.value.empty() ? "$false" : "$true") +
         "; Values = " + List(option.choices) + " }\n";
}

std::string OptionRows(const std::vector<OptionDescription>& options) {
  std::string rows;
  for (const OptionDescription& option : options) {
    if (!option.positional) {
      rows += OptionRow(option);
    }
  }
  return rows;
}

std::vector<std::string> ArgumentChoices(const CommandDescription& command) {
  std::vector<std::string> choices;
  for (const OptionDescription& option : command.options) {
    if (option.positional) {
      choices.insert(choices.end(), option.choices.begin(), option.choices.end());
    }
  }
  return choices;
}

std::vector<std::string> Refused(const CommandDescription& command) {
  std::vector<std::string> names;
  for (const RefusedOption& option : command.refused) {
    names.push_back(option.name);
  }
  return names;
}

std::string Commands(const ToolDescription& tool) {
  std::string rows = "  $commands = @(\n";
  for (const CommandDescription& command : tool.commands) {
    rows += "    @{ Words = " + Literal(Joined(command.words)) +
            "; Text = " + Literal(command.text) + "; Values = " + List(ArgumentChoices(command)) +
            "; Without = " + List(Refused(command)) + " }\n";
  }
  rows += "  )\n  $options = @{\n";
  for (const CommandDescription& command : tool.commands) {
    rows += "    " + Literal(Joined(command.words)) + " = @(\n" + OptionRows(command.options) +
            "    )\n";
  }
  return rows + "  }\n  $common = @(\n" + OptionRows(tool.common) + "  )\n";
}

// Where nothing is offered, PowerShell completes file names by itself.
constexpr const char* kLogic = R"(  $words = @($commandAst.CommandElements | Select-Object -Skip 1 |
    Where-Object { $_.Extent.EndOffset -lt $cursorPosition } |
    ForEach-Object { $_.Extent.Text })
  $valued = @($common + @($options.Values | ForEach-Object { $_ }) |
    Where-Object { $_.TakesValue } | ForEach-Object { $_.Name })
  $plain = @()
  $previous = ''
  foreach ($word in $words) {
    if ($previous -notin $valued -and $word -notlike '-*') { $plain += $word }
    $previous = $word
  }
  $line = $plain -join ' '
  $command = $commands |
    Where-Object { $line -eq $_.Words -or $line -like ($_.Words + ' *') } | Select-Object -First 1
  $own = @()
  if ($command) {
    $own = @($options[$command.Words])
    $common = @($common | Where-Object { $_.Name -notin $command.Without })
  }
  $offer = @()
  $asked = @($own + $common) | Where-Object { $_ -and $_.Name -eq $previous -and $_.TakesValue } |
    Select-Object -First 1
  if ($asked) {
    $offer = @($asked.Values | ForEach-Object { @{ Name = $_; Text = $asked.Text } })
  } elseif ($wordToComplete -like '-*') {
    $offer = @($own + $common)
  } elseif ($command) {
    $offer = @($command.Values | ForEach-Object { @{ Name = $_; Text = $command.Text } })
  } else {
    $offer = @($commands | ForEach-Object {
        $rest = @($_.Words -split ' ')
        if ($plain.Count -lt $rest.Count -and
            (@($rest | Select-Object -First $plain.Count) -join ' ') -eq $line) {
          @{ Name = $rest[$plain.Count]; Text = $_.Text }
        }
      })
  }
  $offer | Where-Object { $_ -and $_.Name -like "$wordToComplete*" } |
    Sort-Object -Property { $_.Name } -Unique |
    ForEach-Object {
      [System.Management.Automation.CompletionResult]::new(
        $_.Name, $_.Name, 'ParameterValue', $_.Text)
    }
)";

}  // namespace

std::string PowerShellCompletion(const ToolDescription& tool) {
  return "# PowerShell completion of borvanusb.\n"
         "Register-ArgumentCompleter -Native -CommandName borvanusb, borvanusb.exe -ScriptBlock {\n"
         "  param($wordToComplete, $commandAst, $cursorPosition)\n" +
         Commands(tool) + kLogic + "}\n";
}

}  // namespace borvanusb
