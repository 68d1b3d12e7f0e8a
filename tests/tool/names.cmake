# Profiles and register names.
borvan_add_gtest(
  tool_names_test
  SOURCES
  completed_names_test.cpp
  name_pattern_test.cpp
  names_commands_test.cpp
  option_defaults_test.cpp
  profile_check_test.cpp
  profile_commands_test.cpp
  read_profile_test.cpp
  register_access_test.cpp
  register_names_test.cpp
  register_setting_test.cpp
  LIBRARIES
  borvanusb_test_support
  borvanusb_test_schemas)
target_compile_definitions(tool_names_test PRIVATE BORVAN_SAMPLES="${PROJECT_SOURCE_DIR}/samples/profiles")
