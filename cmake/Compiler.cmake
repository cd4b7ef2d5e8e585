# One set of compiler settings for everything we build.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
option(DAX_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(DAX_JOINED "Compile the files of a module several at a time, which takes half the time from nothing" ON)
option(DAX_LINT "Let clang-tidy read every file of the products as it is compiled; the target is lint" OFF)

# What was compiled in another clone is taken from the cache. But ccache does not make names with a blank in them relative
# in the lists of headers that it keeps: a clone would watch the headers of another. There, only the same place counts.
# It compares the headers themselves, not the preprocessed text: GCC takes a header of which only a comment differs from
# that in the precompiled header for another one, in spite of "#pragma once".
find_program(CCACHE ccache)
if(DAX_LINT)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_SOURCE_DIR}/cmake/preprocess.sh)
elseif(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1)
  if(NOT CMAKE_SOURCE_DIR MATCHES "[ \t]")
    list(APPEND CMAKE_CXX_COMPILER_LAUNCHER CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1)
  endif()
  list(APPEND CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# Files on disk and calls of ODBC take the time here: with -O3 only compiling takes longer.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

add_library(dax_settings INTERFACE)
target_include_directories(dax_settings INTERFACE ${CMAKE_SOURCE_DIR}/src)
if(MSVC)
  target_compile_options(dax_settings INTERFACE /W4 /WX /permissive- /utf-8)
else()
  # COM interfaces (targets with DAX_COM) have no destructors by contract: objects end in Release.
  # GCC 12 reports impossible overlaps, bounds, lengths and uninitialised reads inside its own and Windows' headers at -O2.
  target_compile_options(dax_settings INTERFACE -Wall -Wextra -Wpedantic -Werror
                                                "$<$<NOT:$<BOOL:$<TARGET_PROPERTY:DAX_COM>>>:-Wnon-virtual-dtor>"
                                                "$<$<CXX_COMPILER_ID:GNU>:-Wshadow=local;-Wno-restrict;-Wno-array-bounds;-Wno-stringop-overread;-Wno-stringop-overflow;-Wno-maybe-uninitialized>")
endif()
if(DAX_SANITIZE)
  # The checks before every use of a pointer take a third of the time to compile; what they find mostly ends in an access
  # that the address sanitizer reports.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=null,alignment,vptr -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(WIN32)
  target_compile_definitions(dax_settings INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
  add_link_options(-static)
endif()

# The large headers of the C++ library and of Windows are compiled once, not once per file.
file(WRITE ${CMAKE_BINARY_DIR}/Precompiled.cpp "// Carries a precompiled header.\n")
function(dax_precompiled_header name header settings)
  add_library(${name} STATIC ${CMAKE_BINARY_DIR}/Precompiled.cpp)
  target_link_libraries(${name} PRIVATE ${settings})
  target_precompile_headers(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/${header})
endfunction()
dax_precompiled_header(dax_precompiled Precompiled.h dax_settings)
if(WIN32)
  dax_precompiled_header(dax_precompiled_win32 PrecompiledWindows.h dax_settings)
endif()

# The files of a target are compiled several at a time.
function(dax_joined target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${DAX_JOINED} UNITY_BUILD_BATCH_SIZE 10)
endfunction()

# clang-tidy reads the files of this target in the lint presets, each once: portable files natively, those of Windows with
# the cross compiler's headers, but for GCC's own, for which Clang has others. Without precompiled headers, which show
# that each file includes what it uses. Warnings come from the compilers' own builds: here they only list headers.
function(dax_lint target)
  if(NOT DAX_LINT)
    return()
  endif()
  # The rules are a part of the command, so that files are read again when they change.
  file(SHA256 ${CMAKE_SOURCE_DIR}/.clang-tidy rules)
  set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/.clang-tidy)
  set(tidy clang-tidy --quiet --extra-arg=-Wno-everything --extra-arg=-Wno-unknown-warning-option
           --extra-arg=-DDAX_RULES=${rules})
  if(CMAKE_CROSSCOMPILING)
    set(folders ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
    list(FILTER folders EXCLUDE REGEX "/gcc/.*/include(-fixed)?$")
    list(TRANSFORM folders PREPEND --extra-arg=-isystem)
    list(APPEND tidy --extra-arg=--target=${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32 --extra-arg=-nostdinc++ ${folders})
  endif()
  set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${tidy}" DISABLE_PRECOMPILE_HEADERS ON)
  set_property(GLOBAL APPEND PROPERTY DAX_LINT_OBJECTS $<TARGET_OBJECTS:${target}>)
endfunction()
