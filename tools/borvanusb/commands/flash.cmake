target_sources(
  borvanusb_core
  PRIVATE flash_erase.cpp
          flash_map.cpp
          flash_program.cpp
          flash_program_names.cpp
          flash_program_several.cpp
          flash_program_text.cpp
          flash_programmer.cpp
          flash_programmer_safety.cpp
          flash_read.cpp
          flash_verify.cpp
          flash_word.cpp)
