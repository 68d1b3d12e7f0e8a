# The files of command/templates as constants of command/templates.h, in a source of the build.

set(BORVANUSB_TEMPLATES "")

# borvanusb_add_template(FILE CONSTANT): command/templates/FILE.in as CONSTANT.
function(borvanusb_add_template name constant)
  set(file "${CMAKE_CURRENT_SOURCE_DIR}/command/templates/${name}.in")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
  file(READ "${file}" text)
  string(APPEND BORVANUSB_TEMPLATES "const std::string_view ${constant} = R\"template(${text})template\";\n")
  set(BORVANUSB_TEMPLATES "${BORVANUSB_TEMPLATES}" PARENT_SCOPE)
endfunction()

borvanusb_add_template(bash_completion.sh kBashCompletionTemplate)
borvanusb_add_template(command_help.txt kCommandHelpTemplate)
borvanusb_add_template(fish_completion.fish kFishCompletionTemplate)
borvanusb_add_template(group_help.txt kGroupHelpTemplate)
borvanusb_add_template(manual.1 kManualTemplate)
borvanusb_add_template(manual_command.1 kManualCommandTemplate)
borvanusb_add_template(overview.txt kOverviewTemplate)
borvanusb_add_template(powershell_completion.ps1 kPowerShellCompletionTemplate)
borvanusb_add_template(zsh_completion.zsh kZshCompletionTemplate)

configure_file(command/templates.cpp.in "${CMAKE_CURRENT_BINARY_DIR}/command/templates.cpp" @ONLY)
target_sources(borvanusb_core PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/command/templates.cpp")
