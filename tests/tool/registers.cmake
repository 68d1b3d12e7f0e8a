# Lists of registers, without a camera.
borvan_add_gtest(tool_lists_test SOURCES i2c_list_test.cpp list_text_test.cpp register_list_test.cpp
                 statistics_test.cpp written_registers_test.cpp LIBRARIES borvanusb_core)

# Checks the JSON of commands against the published schemas.
add_library(borvanusb_test_schemas STATIC support/json_schema.cpp)
target_link_libraries(borvanusb_test_schemas PRIVATE borvan_options PUBLIC borvan_nlohmann_json)
target_include_directories(borvanusb_test_schemas PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_compile_definitions(borvanusb_test_schemas
                           PRIVATE BORVAN_JSON_SCHEMAS="${PROJECT_SOURCE_DIR}/docs/json")
target_compile_options(borvanusb_test_schemas PRIVATE ${BORVAN_TEST_OPTIONS})

borvan_add_gtest(
  tool_registers_test
  SOURCES
  bench_command_test.cpp
  camera_choice_test.cpp
  doctor_command_test.cpp
  i2c_commands_test.cpp
  i2c_scan_test.cpp
  json_schema_test.cpp
  list_info_commands_test.cpp
  line_editor_test.cpp
  list_verify_test.cpp
  prompt_test.cpp
  reg_commands_test.cpp
  reg_lists_commands_test.cpp
  run_command_test.cpp
  script_commands_test.cpp
  script_test.cpp
  selftest_command_test.cpp
  watch_command_test.cpp
  LIBRARIES
  borvanusb_test_support
  borvanusb_test_schemas)
target_compile_definitions(tool_registers_test PRIVATE BORVAN_SAMPLES="${PROJECT_SOURCE_DIR}/samples/profiles")
