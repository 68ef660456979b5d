# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# cmake -DLRELEASE=... -DOUTPUT=... -P EmbedCatalogues.cmake LANGUAGE.ts...: a source file with the compiled catalogues,
# so that a copy of the program finds them wherever it lies.
set(arrays "")
set(entries "")
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE 0 ${last})
  set(ts "${CMAKE_ARGV${i}}")
  if(NOT ts MATCHES "vantrell-capture_(.+)\\.ts$")
    continue()
  endif()
  set(language ${CMAKE_MATCH_1})
  execute_process(COMMAND ${LRELEASE} -silent -nounfinished ${ts} -qm ${OUTPUT}.${language}.qm COMMAND_ERROR_IS_FATAL ANY)
  file(READ ${OUTPUT}.${language}.qm bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char ${language}[] = {${bytes}};\n")
  string(APPEND entries "    {\"${language}\", ${language}, int(sizeof ${language})},\n")
endforeach()
file(WRITE ${OUTPUT} "// Made by cmake/EmbedCatalogues.cmake.
#include \"Panels/Languages.h\"

namespace vantrell {

namespace {

${arrays}
constexpr Catalogue catalogueList[] = {
${entries}};

} // namespace

std::span<const Catalogue> catalogues() {
    return catalogueList;
}

} // namespace vantrell
")
