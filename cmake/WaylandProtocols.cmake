# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# vantrell_wayland_protocols(<target> <protocol.xml>...): a library of what wayland-scanner makes of them.
function(vantrell_wayland_protocols target)
  find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
  set(dir ${CMAKE_BINARY_DIR}/wayland)
  file(MAKE_DIRECTORY ${dir})
  foreach(xml IN LISTS ARGN)
    get_filename_component(name ${xml} NAME_WE)
    add_custom_command(OUTPUT ${dir}/${name}.c DEPENDS ${xml} VERBATIM
      COMMAND ${WAYLAND_SCANNER} private-code ${xml} ${dir}/${name}.c)
    add_custom_command(OUTPUT ${dir}/${name}-client.h DEPENDS ${xml} VERBATIM
      COMMAND ${WAYLAND_SCANNER} client-header ${xml} ${dir}/${name}-client.h)
    list(APPEND sources ${dir}/${name}.c ${dir}/${name}-client.h)
  endforeach()
  add_library(${target} STATIC ${sources})
  set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
  target_include_directories(${target} SYSTEM PUBLIC ${dir})
  target_link_libraries(${target} PUBLIC PkgConfig::WAYLAND)
endfunction()
