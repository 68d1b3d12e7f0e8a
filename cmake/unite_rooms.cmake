# borvan_unite_rooms(target): with CMAKE_UNITY_BUILD, compiles the sources of each folder of a target as one
# source, because most of a compilation is spent on headers. So a name in an unnamed namespace must occur only
# once in a folder. To be called when the target has all its sources, in the folder that made it.
function(borvan_unite_rooms target)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    if(source MATCHES "\\.cpp$")
      cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE room)
      cmake_path(GET room PARENT_PATH room)
      cmake_path(RELATIVE_PATH room BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
      string(MAKE_C_IDENTIFIER "${room}" room)
      set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "${room}")
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
