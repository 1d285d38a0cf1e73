# What a system gets: the libraries, the headers of the contract, tvrscan with its man page and
# shell completion.
include(GNUInstallDirs)

install(TARGETS tvrscn_USBClient tvrscn_tevrautil tvrscn_TDSPClient tvrscan)
install(DIRECTORY include/tvrscn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
