# How this project's targets are compiled, said once.

# Warnings, sanitizers and include roots of a target of ours.
function(tvrscn_configure target)
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
              -Wdouble-promotion)
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

# A GoogleTest program: tvrscn_add_test(name SOURCES ... LIBRARIES ...). Its working folder in a run
# is its own; files under tests/data are found through TVRSCN_TEST_DATA.
function(tvrscn_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  tvrscn_configure(${name})
  if(NOT MSVC)
    # Tests are compiled far more often than they are waited for.
    target_compile_options(${name} PRIVATE -O0)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  target_compile_definitions(${name} PRIVATE TVRSCN_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest GTest::gtest_main
                                        Threads::Threads)
  add_test(NAME ${name} COMMAND ${name})
  set_property(GLOBAL APPEND PROPERTY TVRSCN_TEST_PROGRAMS ${name})
endfunction()
