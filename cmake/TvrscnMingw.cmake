# What a cross build with MinGW-w64 needs beyond the toolchain file.

# The runtime goes into each file, so that it needs nothing but Windows.
add_link_options(-static -static-libgcc -static-libstdc++)

# Header-only libraries are the same for every system, but their folder, /usr/include, also holds
# this machine's own headers. A folder of links shows the cross compiler just the ones it may see.
set(TVRSCN_HOST_HEADERS ${CMAKE_BINARY_DIR}/host-headers)
file(MAKE_DIRECTORY ${TVRSCN_HOST_HEADERS})
foreach(folder nlohmann CLI)
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing; run scripts/install-packages.sh")
  endif()
  file(CREATE_LINK /usr/include/${folder} ${TVRSCN_HOST_HEADERS}/${folder} SYMBOLIC)
endforeach()

add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED GLOBAL)
target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE ${TVRSCN_HOST_HEADERS})
add_library(CLI11::CLI11 INTERFACE IMPORTED GLOBAL)
target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${TVRSCN_HOST_HEADERS})
