# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# What most sources include and none of us changes, compiled once: half of the build's time was reading it.
# It hides missing includes, so that scripts/headers.sh compiles each header by itself without it.

function(vantrell_precompile name)
  cmake_parse_arguments(arg "" "" "LINK;HEADERS;OPTIONS" ${ARGN})
  file(WRITE ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp.in "")
  configure_file(${CMAKE_BINARY_DIR}/precompiled/${name}.cpp.in ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp COPYONLY)
  add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp)
  target_link_libraries(${name} PUBLIC ${arg_LINK})
  target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
  # A time stamp inside would make the compiler cache miss.
  target_compile_options(${name} PRIVATE "SHELL:-Xclang -fno-pch-timestamp" ${arg_OPTIONS})
endfunction()

set(precompiled_headers
  <QCoroTask> <QByteArray> <QCoreApplication> <QDateTime> <QImage> <QObject> <QString> <QUuid> <nlohmann/json.hpp>
  <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <deque> <expected> <filesystem> <functional> <map>
  <memory> <mutex> <optional> <span> <stop_token> <string> <string_view> <thread> <utility> <variant> <vector>)
set(precompiled_links Qt6::Gui QCoro6::Core nlohmann_json::nlohmann_json Threads::Threads)
set(precompiled_test_headers ${precompiled_headers} <gtest/gtest.h> <gmock/gmock.h>)
vantrell_precompile(vantrell_precompiled LINK ${precompiled_links} HEADERS ${precompiled_headers})
if(VANTRELL_DEVELOPMENT)
  vantrell_precompile(vantrell_precompiled_tests LINK ${precompiled_links} GTest::gtest GTest::gmock
    HEADERS ${precompiled_test_headers})
endif()
if(VANTRELL_SANITIZE)
  # For the folders that are optimized though the build is not.
  vantrell_precompile(vantrell_precompiled_optimized LINK ${precompiled_links} HEADERS ${precompiled_headers}
    OPTIONS -O1)
  vantrell_precompile(vantrell_precompiled_tests_optimized LINK ${precompiled_links} GTest::gtest GTest::gmock
    HEADERS ${precompiled_test_headers} OPTIONS -O1)
endif()
