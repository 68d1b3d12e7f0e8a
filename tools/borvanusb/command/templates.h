#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace borvanusb {

// The fixed parts of long texts: the files of command/templates, each with places that are called
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

// The template with each place filled with its text. A place that is alone in its line becomes as
// many lines as its text has, none for an empty one. Throws std::logic_error for a place that has
// no text.
std::string Filled(std::string_view form, std::initializer_list<TemplateText> texts);

}  // namespace borvanusb
