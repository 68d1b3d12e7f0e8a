borvan_add_gtest(
  tool_workbench_rules_test
  SOURCES workbench_attacks_test.cpp workbench_files_test.cpp workbench_requests_test.cpp workbench_words_test.cpp
  LIBRARIES borvanusb_core)
