borvan_add_gtest(
  tool_workbench_rules_test
  SOURCES workbench_attacks_test.cpp workbench_files_test.cpp workbench_live_test.cpp workbench_requests_test.cpp
          workbench_words_test.cpp
  LIBRARIES borvanusb_core)
borvan_add_gtest(
  tool_workbench_work_test
  SOURCES workbench_desk_live_test.cpp workbench_desk_test.cpp workbench_folder_test.cpp workbench_worker_test.cpp
  LIBRARIES borvanusb_test_support)
borvan_add_gtest(tool_workbench_server_test SOURCES workbench_server_test.cpp LIBRARIES borvanusb_test_support)
