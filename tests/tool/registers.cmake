# Lists of registers, without a camera.
borvan_add_gtest(tool_lists_test SOURCES i2c_list_test.cpp list_text_test.cpp register_list_test.cpp
                 statistics_test.cpp LIBRARIES borvanusb_core)
