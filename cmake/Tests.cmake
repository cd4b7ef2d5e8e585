# Test programs and the entries of CTest that run them: natively, or in Wine, which the toolchain files name as emulator.
# The entries take their names and labels from the part of tools/test that runs them.
if(NOT WIN32)
  set(DAX_PART native)
elseif(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(DAX_PART wine64)
else()
  set(DAX_PART wine32)
endif()

# Variants that are tested together share the servers: those that run are not started again.
set(DAX_SERVERS ${CMAKE_SOURCE_DIR}/build/test/servers)
add_test(NAME servers.start COMMAND ${CMAKE_SOURCE_DIR}/tools/servers start ${DAX_SERVERS})
add_test(NAME servers.stop COMMAND ${CMAKE_SOURCE_DIR}/tools/servers stop ${DAX_SERVERS})
set_tests_properties(servers.start PROPERTIES FIXTURES_SETUP servers)
# CTest begins with what others depend on, and only then regards the costs: what takes longest must be among it.
set_tests_properties(servers.stop PROPERTIES FIXTURES_CLEANUP servers DEPENDS
                     "package.win64;package.win32;package.installer64;package.installer32;lint;lint.windows;native.soak;native.faults.1;\
wine64.faults.1;wine64.faults.2;wine64.faults.3")

set(DAX_TEST_ENVIRONMENT "DAX_TEST_ROOT=${CMAKE_SOURCE_DIR}" DAX_WINE_DISPLAY=none DAX_WINE_TIMEOUT=840
    "LSAN_OPTIONS=suppressions='${CMAKE_SOURCE_DIR}/tools/lib/leaks.txt':print_suppressions=0"
    UBSAN_OPTIONS=print_stacktrace=1)
if(DAX_SANITIZE)
  # Some containers do not allow a process to be traced, which the search for leaks needs.
  include(CheckCXXSourceRuns)
  set(CMAKE_REQUIRED_FLAGS -fsanitize=address)
  check_cxx_source_runs("int main() {}" DAX_FINDS_LEAKS)
  if(NOT DAX_FINDS_LEAKS)
    list(APPEND DAX_TEST_ENVIRONMENT ASAN_OPTIONS=detect_leaks=0)
  endif()
endif()

# tests/NAME/*.cpp become the program NAME_tests.
#   LIBRARIES  what it uses
#   PARTS      where its tests run: native, wine64, wine32; elsewhere it is built only on request. Portable rules
#              run natively and in 64 bit; in 32 bit what can differ there.
#   SHARDS     its tests are divided among this many processes
#   COST       tests that wait for a minute begin first
#   PORTABLE   its suites of portable rules, which do not run in 32 bit
#   SERVERS    its tests use database servers
#   DESKTOP    its tests use windows: each shard has a desktop, in a Wine prefix of its own, that one program uses at a time
function(dax_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SERVERS;DESKTOP" "SHARDS;COST" "LIBRARIES;PARTS;PORTABLE")
  file(GLOB files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${name}/*.cpp)
  if(NOT files)
    return()
  endif()
  add_executable(${name}_tests ${files})
  target_link_libraries(${name}_tests PRIVATE ${arg_LIBRARIES} dax_test_support dax_test_settings GTest::gtest_main)
  target_precompile_headers(${name}_tests REUSE_FROM dax_test_precompiled)
  dax_joined(${name}_tests)
  if(NOT DAX_PART IN_LIST arg_PARTS)
    set_target_properties(${name}_tests PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  if(NOT arg_COST)
    set(arg_COST ${arg_SHARDS})
  endif()
  foreach(shard RANGE 1 ${arg_SHARDS})
    set(test ${DAX_PART}.${name})
    if(arg_SHARDS GREATER 1)
      string(APPEND test .${shard})
    endif()
    set(folder ${CMAKE_BINARY_DIR}/tests/run/${test})
    file(MAKE_DIRECTORY ${folder})
    # The servers' connection strings are known when they run.
    set(with_servers "")
    if(arg_SERVERS)
      set(with_servers sh -c ". \"$0/env\" && exec \"$@\"" ${DAX_SERVERS})
    endif()
    add_test(NAME ${test} WORKING_DIRECTORY ${folder}
             COMMAND ${with_servers} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${name}_tests>
                     --gtest_output=xml:result.xml)
    math(EXPR index "${shard} - 1")
    set_tests_properties(${test} PROPERTIES LABELS ${DAX_PART} FIXTURES_REQUIRED built.${DAX_PART} TIMEOUT 900
                         COST ${arg_COST} SKIP_RETURN_CODE 77)
    set(environment ${DAX_TEST_ENVIRONMENT} GTEST_TOTAL_SHARDS=${arg_SHARDS} GTEST_SHARD_INDEX=${index})
    if(arg_PORTABLE AND DAX_PART STREQUAL wine32)
      list(JOIN arg_PORTABLE ".*:" suites)
      list(APPEND environment "GTEST_FILTER=-${suites}.*")
    endif()
    if(arg_SERVERS)
      set_property(TEST ${test} APPEND PROPERTY FIXTURES_REQUIRED servers)
    endif()
    if(arg_DESKTOP)
      list(APPEND environment "DAX_WINE_PREFIX=${CMAKE_SOURCE_DIR}/build/${DAX_PART}-desktop${shard}")
      set_tests_properties(${test} PROPERTIES RESOURCE_LOCK ${DAX_PART}.desktop${shard} COST 10)
    endif()
    set_tests_properties(${test} PROPERTIES ENVIRONMENT "${environment}")
  endforeach()
endfunction()
