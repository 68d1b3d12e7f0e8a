# Writes a C++ source that contains the compressed files of the page.
# Usage: cmake -D FOLDER=… -D OUTPUT=… -P embed_page.cmake

set(text "// Made by embed_page.cmake.\n#include \"workbench/page_files.h\"\n\nnamespace borvanusb {\n\nnamespace {\n\n")
set(rows "")
foreach(name IN ITEMS index.html page.js page.css)
  if(NOT EXISTS "${FOLDER}/${name}")
    message(FATAL_ERROR "${FOLDER}/${name} is missing: the page was not built")
  endif()
  set(packed "${OUTPUT}.${name}.gz")
  file(ARCHIVE_CREATE OUTPUT "${packed}" PATHS "${FOLDER}/${name}" FORMAT raw COMPRESSION GZip
       COMPRESSION_LEVEL 9)
  file(READ "${packed}" bytes HEX)
  file(REMOVE "${packed}")
  # Sets the four bytes of the gzip time stamp to zero, so that builds are reproducible.
  string(SUBSTRING "${bytes}" 0 8 begin)
  string(SUBSTRING "${bytes}" 16 -1 end)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${begin}00000000${end}")
  string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n"
         bytes "${bytes}")
  string(MAKE_C_IDENTIFIER "${name}" identifier)
  string(APPEND text "constexpr unsigned char ${identifier}[] = {\n${bytes}};\n\n")
  if(name STREQUAL "index.html")
    set(path "/")
    set(type "text/html")
  elseif(name STREQUAL "page.js")
    set(path "/page.js")
    set(type "text/javascript")
  else()
    set(path "/page.css")
    set(type "text/css")
  endif()
  string(APPEND rows "    {\"${path}\", \"${type}; charset=utf-8\", ${identifier}},\n")
endforeach()
string(APPEND text "constexpr PageFile kFiles[] = {\n${rows}};\n\n}  // namespace\n\n"
       "std::span<const PageFile> PageFiles() { return kFiles; }\n\n}  // namespace borvanusb\n")
file(WRITE "${OUTPUT}" "${text}")
