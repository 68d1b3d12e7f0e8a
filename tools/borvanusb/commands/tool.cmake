target_sources(borvanusb_core PRIVATE bash_completion.cpp completion.cpp manual.cpp
                                      powershell_completion.cpp)
