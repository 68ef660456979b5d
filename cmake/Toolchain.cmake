# SPDX-License-Identifier: GPL-3.0-or-later
# Warnings, sanitizers, compiler cache and linker: the same for every target.
find_program(CCACHE ccache)
if(CCACHE)
  # The precompiled header is part of what is compared; its macros and times are not looked at one by one. What a
  # source includes is read from what the compiler notes: preprocessing first would cost a quarter of the build.
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1 ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()

add_compile_options(-Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wno-missing-field-initializers)
if(VANTRELL_WERROR)
  add_compile_options(-Werror)
endif()
# Calls through one definition only: the test executables link everything statically.
add_compile_options(-fvisibility=hidden)
add_compile_definitions(QT_NO_KEYWORDS)
# Some libraries ask for it and others do not; the precompiled header is the same for all.
add_compile_options(-pthread)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_link_options(-fuse-ld=lld)
endif()
# A library that nothing of is used costs its loading at every start: libav alone brings a hundred others.
add_link_options(LINKER:--as-needed)

if(NOT VANTRELL_SANITIZE STREQUAL "")
  add_compile_options(-fsanitize=${VANTRELL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${VANTRELL_SANITIZE})
endif()
