# What the products of a Windows build have in common: version resource, hardening, debug
# information in a file apart, an import library for each compiler.

# borvan_windows_product(target FILE_DESCRIPTION "text") makes `target`, a DLL or program, fit to be
# handed out. Elsewhere than on Windows builds it does nothing.
#  * Version resource, numbers from PROJECT_VERSION.
#  * DEP, ASLR with high entropy.
#  * Its debug information in NAME.debug beside it (mingw-w64) or NAME.pdb (MSVC); the product
#    itself is stripped.
function(borvan_windows_product target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FILE_DESCRIPTION" "")
  if(NOT arg_FILE_DESCRIPTION)
    message(FATAL_ERROR "borvan_windows_product(${target}): FILE_DESCRIPTION is missing")
  endif()
  if(NOT WIN32)
    return()
  endif()

  borvan_add_version_resource(${target} "${arg_FILE_DESCRIPTION}")
  if(MSVC)
    # /Brepro: no time stamps, so that equal sources make equal files. The reference and folding
    # options restore what /DEBUG turns off.
    target_compile_options(${target} PRIVATE /Zi)
    target_link_options(
      ${target} PRIVATE /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT /DEBUG /OPT:REF /OPT:ICF /Brepro)
  else()
    target_link_options(${target} PRIVATE -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
    borvan_split_debug_information(${target})
  endif()
endfunction()

# borvan_msvc_import_library(target definition_file) makes lib/NAME.lib, by which MSVC programs link
# the DLL `target`. MSVC's own linker makes one anyway.
#
# LLVM's tool rather than GNU's: it writes the short import records that MSVC's own librarian
# writes, and the same bytes every time.
function(borvan_msvc_import_library target definition_file)
  if(NOT MINGW)
    return()
  endif()
  find_program(BORVAN_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  if(NOT BORVAN_LLVM_DLLTOOL)
    if(PROJECT_IS_TOP_LEVEL)
      message(FATAL_ERROR "llvm-dlltool is missing; it makes the import library for MSVC. Install LLVM.")
    endif()
    return() # a project that adds this one links by the compiler's own import library
  endif()
  borvan_output_name(${target} name)
  get_filename_component(definition "${definition_file}" ABSOLUTE)
  set(library "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${name}.lib")
  add_custom_command(
    OUTPUT "${library}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}"
    COMMAND "${BORVAN_LLVM_DLLTOOL}" -m i386:x86-64 -D "${name}.dll" -d "${definition}" -l "${library}"
    DEPENDS "${definition}"
    COMMENT "Import library for MSVC: ${name}.lib"
    VERBATIM)
  add_custom_target(${target}_msvc_import_library ALL DEPENDS "${library}")
endfunction()

# borvan_copy_products(name product…): the target `name` copies these DLLs and programs into the folder
# where this list's programs go. Programs load a DLL from their own folder.
function(borvan_copy_products name)
  set(copies)
  foreach(product IN LISTS ARGN)
    borvan_file_name(${product} file)
    set(copy "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file}")
    add_custom_command(
      OUTPUT "${copy}"
      COMMAND "${CMAKE_COMMAND}" -E copy "$<TARGET_FILE:${product}>" "${copy}"
      DEPENDS "$<TARGET_FILE:${product}>"
      VERBATIM)
    list(APPEND copies "${copy}")
  endforeach()
  add_custom_target(${name} DEPENDS ${copies})
endfunction()

# The name of a DLL's or program's file.
function(borvan_file_name target result)
  borvan_output_name(${target} name)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(${result} "${name}.exe" PARENT_SCOPE)
  else()
    set(${result} "${name}.dll" PARENT_SCOPE)
  endif()
endfunction()

# The file's name without its extension, as far as the targets here set it.
function(borvan_output_name target result)
  get_target_property(name ${target} OUTPUT_NAME)
  if(NOT name)
    set(name ${target})
  endif()
  set(${result} "${name}" PARENT_SCOPE)
endfunction()

function(borvan_add_version_resource target arg_FILE_DESCRIPTION)
  borvan_output_name(${target} name)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(borvan_file_type VFT_APP)
  else()
    set(borvan_file_type VFT_DLL)
  endif()
  borvan_file_name(${target} borvan_file_name)
  set(resource "${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version_resource.rc.in" "${resource}" @ONLY)
  target_sources(${target} PRIVATE "${resource}")
endfunction()

function(borvan_split_debug_information target)
  if(NOT CMAKE_OBJCOPY OR NOT CMAKE_STRIP)
    message(FATAL_ERROR "objcopy and strip of the cross toolchain are missing: run scripts/build.sh")
  endif()
  set(debug_file "$<TARGET_FILE_NAME:${target}>.debug")
  set(tool_environment "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=0)
  # Started in the product's folder, so that the link holds a name and no path. These tools stamp
  # the time on what they write, the linker's zero notwithstanding; the variable keeps it zero.
  add_custom_command(
    TARGET ${target}
    POST_BUILD
    WORKING_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
    COMMAND ${tool_environment} "${CMAKE_OBJCOPY}" --only-keep-debug "$<TARGET_FILE_NAME:${target}>" "${debug_file}"
    COMMAND ${tool_environment} "${CMAKE_STRIP}" --strip-all "$<TARGET_FILE_NAME:${target}>"
    COMMAND ${tool_environment} "${CMAKE_OBJCOPY}" "--add-gnu-debuglink=${debug_file}"
            "$<TARGET_FILE_NAME:${target}>"
    VERBATIM)
  set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES
                                               "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${debug_file}")
endfunction()
