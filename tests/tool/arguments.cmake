borvan_add_gtest(
  tool_arguments_test
  SOURCES command_line_test.cpp command_line_errors_test.cpp flash_arguments_test.cpp help_test.cpp
          hex_dump_test.cpp
          numbers_test.cpp templates_test.cpp
  LIBRARIES borvanusb_core)
borvan_add_gtest(tool_progress_test SOURCES progress_test.cpp progress_forms_test.cpp LIBRARIES borvanusb_core)
borvan_add_gtest(tool_run_test SOURCES run_tool_test.cpp printable_test.cpp text_output_test.cpp LIBRARIES
                 borvanusb_test_support)
borvan_add_gtest(tool_whole_test SOURCES whole_tool_test.cpp LIBRARIES borvanusb_test_support
                 borvanusb_test_schemas)
borvan_add_gtest(tool_document_test SOURCES tool_document_test.cpp LIBRARIES borvanusb_core)
target_compile_definitions(tool_document_test PRIVATE BORVAN_SOURCE_FOLDER="${PROJECT_SOURCE_DIR}")
# On Windows, only the script for PowerShell is tested, because the other shells are missing.
if(WIN32)
  borvan_add_gtest(tool_scripts_test SOURCES manual_test.cpp powershell_completion_test.cpp LIBRARIES
                   borvanusb_test_support)
else()
  borvan_add_gtest(
    tool_scripts_test
    SOURCES bash_completion_test.cpp fish_completion_test.cpp manual_test.cpp powershell_completion_test.cpp
            zsh_completion_test.cpp
    LIBRARIES borvanusb_test_support)
endif()
foreach(test IN ITEMS tool_arguments_test tool_run_test tool_scripts_test)
  target_compile_definitions(${test} PRIVATE BORVAN_VERSION="${PROJECT_VERSION}")
endforeach()
