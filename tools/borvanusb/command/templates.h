#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace borvanusb {

// The fixed parts of long texts, from the files in command/templates. Placeholders are written as
// @NAME@ in capitals.
extern const std::string_view kBashCompletionTemplate;
extern const std::string_view kCommandHelpTemplate;
extern const std::string_view kFishCompletionTemplate;
extern const std::string_view kGroupHelpTemplate;
extern const std::string_view kManualTemplate;
extern const std::string_view kManualCommandTemplate;
extern const std::string_view kOverviewTemplate;
extern const std::string_view kPowerShellCompletionTemplate;
extern const std::string_view kZshCompletionTemplate;

struct TemplateText {
  std::string_view place;
  std::string text;
};

// Replaces each placeholder by its text. A placeholder that is alone in its line is replaced by all
// lines of the text; the line disappears if the text is empty. Throws std::logic_error for a
// placeholder without a text.
std::string Filled(std::string_view form, std::initializer_list<TemplateText> texts);

}  // namespace borvanusb
