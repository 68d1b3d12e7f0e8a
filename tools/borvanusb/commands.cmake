# The commands of the tool, in the order of the help. A command is a source file with a function that returns
# its rule (options and help), and a function Run that does the work.

set(BORVANUSB_RULES "")
set(BORVANUSB_RULE_DECLARATIONS "")

# borvanusb_add_command(SOURCE RULE): adds the command in SOURCE.cpp. The function RULE returns its rule. The help
# lists it under the headline `group`.
function(borvanusb_add_command source rule)
  target_sources(borvanusb_core PRIVATE ${source}.cpp)
  string(APPEND BORVANUSB_RULE_DECLARATIONS "CommandRule ${rule}();\n")
  string(APPEND BORVANUSB_RULES "      Under(\"${group}\", ${rule}()),\n")
  set(BORVANUSB_RULE_DECLARATIONS "${BORVANUSB_RULE_DECLARATIONS}" PARENT_SCOPE)
  set(BORVANUSB_RULES "${BORVANUSB_RULES}" PARENT_SCOPE)
endfunction()

set(group "Cameras")
borvanusb_add_command(station/list ListRule)
borvanusb_add_command(station/info InfoRule)
borvanusb_add_command(station/selftest SelftestRule)
borvanusb_add_command(station/doctor DoctorRule)

set(group "Registers")
borvanusb_add_command(registers/read RegReadRule)
borvanusb_add_command(registers/write RegWriteRule)
borvanusb_add_command(names/show RegShowRule)
borvanusb_add_command(names/find RegFindRule)
borvanusb_add_command(registers/dump RegDumpRule)
borvanusb_add_command(registers/load RegLoadRule)
borvanusb_add_command(registers/diff RegDiffRule)

set(group "Registers of the sensor, over I2C")
borvanusb_add_command(i2c/read I2cReadRule)
borvanusb_add_command(i2c/write I2cWriteRule)
borvanusb_add_command(i2c/dump I2cDumpRule)
borvanusb_add_command(i2c/load I2cLoadRule)
borvanusb_add_command(i2c/diff I2cDiffRule)
borvanusb_add_command(i2c/scan I2cScanRule)

set(group "Presets of a profile")
borvanusb_add_command(station/preset PresetApplyRule)
borvanusb_add_command(station/preset PresetDiffRule)
borvanusb_add_command(station/preset_save PresetSaveRule)

set(group "Flash")
borvanusb_add_command(flash/read FlashReadRule)
borvanusb_add_command(flash/word FlashWordRule)
borvanusb_add_command(flash/erase FlashEraseRule)
borvanusb_add_command(flash/map FlashMapRule)
borvanusb_add_command(flash/program FlashProgramRule)
borvanusb_add_command(flash/verify FlashVerifyRule)

set(group "Register maps")
borvanusb_add_command(maps/check MapCheckRule)

set(group "Camera profiles")
borvanusb_add_command(profile_commands/list ProfileListRule)
borvanusb_add_command(profile_commands/show ProfileShowRule)
borvanusb_add_command(profile_commands/check ProfileCheckRule)
borvanusb_add_command(profile_commands/new ProfileNewRule)
borvanusb_add_command(profile_commands/names ProfileNamesRule)

set(group "Watching and measuring")
borvanusb_add_command(station/watch WatchRule)
borvanusb_add_command(station/bench BenchRule)

if(BORVAN_BUILD_WORKBENCH)
  set(group "The page in the browser")
  borvanusb_add_command(workbench/workbench WorkbenchRule)
endif()

set(group "Scripts and shells")
borvanusb_add_command(station/run RunRule)
borvanusb_add_command(command/completion CompletionRule)
borvanusb_add_command(command/manual ManualRule)

# The function that returns a camera's defaults of options.
set(BORVANUSB_KNOWLEDGE ProfileKnowledge)

configure_file(command/registry.cpp.in "${CMAKE_CURRENT_BINARY_DIR}/command/registry.cpp" @ONLY)
target_sources(borvanusb_core PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/command/registry.cpp")
