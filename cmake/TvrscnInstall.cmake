# What a system gets: the libraries, the headers of the contract, tvrscan with its man page and
# shell completion, and the package that other projects find with find_package(tvrscn).
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Drivers meet the classes of the utility library in the headers of the client; who links the client
# links both. Header folders stand here since they differ between this tree and an installed one.
foreach(library tvrscn_USBClient tvrscn_tevrautil tvrscn_TDSPClient)
  set_property(TARGET ${library} PROPERTY
    INTERFACE_INCLUDE_DIRECTORIES $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_property(TARGET ${library} PROPERTY INTERFACE_COMPILE_FEATURES cxx_std_17)
endforeach()
foreach(library tvrscn_USBClient tvrscn_TDSPClient)
  set_property(TARGET ${library} APPEND PROPERTY INTERFACE_LINK_LIBRARIES tvrscn_tevrautil)
endforeach()

install(TARGETS tvrscn_USBClient tvrscn_tevrautil tvrscn_TDSPClient EXPORT tvrscn)
install(TARGETS tvrscan)
install(DIRECTORY include/tvrscn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(TVRSCN_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/tvrscn)
install(EXPORT tvrscn NAMESPACE tvrscn:: FILE tvrscnConfig.cmake
        DESTINATION ${TVRSCN_PACKAGE_FOLDER})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tvrscnConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tvrscnConfigVersion.cmake DESTINATION ${TVRSCN_PACKAGE_FOLDER})

# An installed tvrscan finds the libraries of its own prefix, wherever that is moved to.
if(UNIX)
  set_target_properties(tvrscan PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(tvrscn_USBClient tvrscn_TDSPClient PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()
