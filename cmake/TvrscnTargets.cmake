# How this project's targets are compiled, said once.

# What nearly every file includes.
set(TVRSCN_COMMON_HEADERS
    <algorithm>
    <array>
    <chrono>
    <cstdint>
    <filesystem>
    <fstream>
    <functional>
    <map>
    <memory>
    <mutex>
    <optional>
    <sstream>
    <string>
    <string_view>
    <thread>
    <vector>)

# Reads the common headers once for a library, where it is large enough to gain by that.
function(tvrscn_precompile_library target)
  get_target_property(type ${target} TYPE)
  get_target_property(sources ${target} SOURCES)
  list(LENGTH sources count)
  if(NOT type STREQUAL "EXECUTABLE" AND count GREATER 4)
    target_precompile_headers(${target} PRIVATE ${TVRSCN_COMMON_HEADERS})
  endif()
endfunction()

# Warnings, sanitizers and include roots of a target of ours.
function(tvrscn_configure target)
  if(TVRSCN_PRECOMPILE STREQUAL "ALL")
    tvrscn_precompile_library(${target})
  endif()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include
                                               ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  if(MSVC)
    # C4251: the exported classes hold members of the standard library. That is part of the contract;
    # a driver is built with the same runtime.
    target_compile_options(${target} PRIVATE /W4 /WX /permissive- /EHsc /utf-8 /wd4251)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
  else()
    target_compile_options(
      ${target}
      PRIVATE -Wall
              -Wextra
              -Wpedantic
              -Werror
              -Wconversion
              -Wsign-conversion
              -Wshadow
              -Wold-style-cast
              -Wnon-virtual-dtor
              -Woverloaded-virtual
              -Wcast-align
              -Wformat=2
              -Wnull-dereference
              -Wdouble-promotion
              # The classes are the same everywhere, and not every system needs each member.
              $<$<CXX_COMPILER_ID:Clang>:-Wno-unused-private-field>)
  endif()
  if(TVRSCN_SANITIZE)
    # These two warnings see phantoms in instrumented code.
    target_compile_options(
      ${target} PRIVATE -fsanitize=${TVRSCN_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all -Wno-null-dereference
                        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE -fsanitize=${TVRSCN_SANITIZE})
  endif()
endfunction()

# A shared library of ours: nothing but what export.h marks leaves it. Where linking needs an import
# library, that stands beside it.
function(tvrscn_hide_internals target)
  set_target_properties(${target} PROPERTIES ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
  endif()
  if(UNIX)
    set(map ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(${target} PRIVATE -Wl,--version-script=${map})
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
  endif()
endfunction()

# A version resource on Windows: what the properties of a file show. It is made for a target by name,
# with a few words about what the file is.
function(tvrscn_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  set(file_version "${PROJECT_VERSION_MAJOR},${PROJECT_VERSION_MINOR},${PROJECT_VERSION_PATCH},0")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(file_name ${target}.exe)
    set(file_type VFT_APP)
  else()
    set(file_name ${target}.dll)
    set(file_type VFT_DLL)
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/src/platform/windows/version.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
endfunction()

# What all test programs are compiled with: without optimisation, since tests are compiled far more
# often than they are waited for.
function(tvrscn_configure_test target)
  tvrscn_configure(${target})
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE -O0)
  endif()
  target_compile_definitions(${target} PRIVATE TVRSCN_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  target_link_libraries(${target} PRIVATE GTest::gtest)
  # A program with options of its own reads the headers itself.
  set_target_properties(${target} PROPERTIES PCH_WARN_INVALID OFF)
endfunction()

# The headers that all tests include, read once for all test programs. A program, since it has to be
# compiled with a program's options.
function(tvrscn_precompile_test_headers target)
  if(NOT TARGET tvrscn_test_headers)
    file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/tests/test_headers.cpp CONTENT "int main() {}\n")
    add_executable(tvrscn_test_headers EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/tests/test_headers.cpp)
    tvrscn_configure_test(tvrscn_test_headers)
    target_precompile_headers(tvrscn_test_headers PRIVATE ${TVRSCN_COMMON_HEADERS} <gtest/gtest.h>)
  endif()
  target_precompile_headers(${target} REUSE_FROM tvrscn_test_headers)
endfunction()

# A GoogleTest program: tvrscn_add_test(name SOURCES ... LIBRARIES ...). Its working folder in a run
# is its own; files under tests/data are found through TVRSCN_TEST_DATA.
function(tvrscn_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  tvrscn_configure_test(${name})
  if(TVRSCN_PRECOMPILE)
    tvrscn_precompile_test_headers(${name})
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest_main Threads::Threads)
  add_test(NAME ${name} COMMAND ${name})
  set_property(GLOBAL APPEND PROPERTY TVRSCN_TEST_PROGRAMS ${name})
endfunction()
