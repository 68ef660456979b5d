# SPDX-License-Identifier: GPL-3.0-or-later
# One static library per folder of src/. A folder sees the headers of the folders it names in DEPENDS
# (and of theirs) and of no other: each target exports a directory that holds links to its own headers
# only, so an include against the direction of dependencies does not compile.

# vantrell_module(<folder under src/> DEPENDS <folder>... LINK <library>...)
function(vantrell_module folder)
  cmake_parse_arguments(arg "" "" "DEPENDS;LINK" ${ARGN})
  vantrell_target_name(${folder} target)
  set(dir ${CMAKE_SOURCE_DIR}/src/${folder})
  file(GLOB sources CONFIGURE_DEPENDS ${dir}/*.cpp ${dir}/*.c)
  file(GLOB headers CONFIGURE_DEPENDS ${dir}/*.h)

  set(exported ${CMAKE_BINARY_DIR}/include/${target})
  file(REMOVE_RECURSE ${exported})
  file(MAKE_DIRECTORY ${exported}/${folder})
  foreach(header IN LISTS headers)
    get_filename_component(name ${header} NAME)
    file(CREATE_LINK ${header} ${exported}/${folder}/${name} SYMBOLIC)
  endforeach()

  if(sources)
    add_library(${target} STATIC ${sources} ${headers})
    set(scope PUBLIC)
  else()
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_include_directories(${target} ${scope} ${exported})
  foreach(dependency IN LISTS arg_DEPENDS)
    vantrell_target_name(${dependency} name)
    target_link_libraries(${target} ${scope} ${name})
  endforeach()
  target_link_libraries(${target} ${scope} ${arg_LINK})
endfunction()

function(vantrell_target_name folder out)
  string(TOLOWER ${folder} name)
  string(REPLACE "/" "_" name ${name})
  set(${out} vantrell_${name} PARENT_SCOPE)
endfunction()

# vantrell_test(<folder under tests/> [SINGLE] [LABELS ...] DEPENDS <folder>... LINK <library>...)
# One executable per folder of tests/. SINGLE registers it as one test (an expensive fixture is then
# set up once); otherwise every case is a test of its own. The label "threads" adds it to the run under
# the thread sanitizer.
function(vantrell_test folder)
  cmake_parse_arguments(arg "SINGLE" "TIMEOUT" "DEPENDS;LINK;LABELS" ${ARGN})
  string(TOLOWER test_${folder} target)
  string(REPLACE "/" "_" target ${target})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp ${CMAKE_SOURCE_DIR}/tests/${folder}/*.h)
  add_executable(${target} ${sources})
  foreach(dependency IN LISTS arg_DEPENDS)
    vantrell_target_name(${dependency} name)
    target_link_libraries(${target} PRIVATE ${name})
  endforeach()
  target_link_libraries(${target} PRIVATE vantrell_testing ${arg_LINK})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(arg_SINGLE)
    add_test(NAME ${target} COMMAND ${target})
    set_tests_properties(${target} PROPERTIES LABELS "${arg_LABELS}" TIMEOUT ${arg_TIMEOUT})
  else()
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
      PROPERTIES LABELS "${arg_LABELS}" TIMEOUT ${arg_TIMEOUT})
  endif()
endfunction()
