# What `cmake --install` puts where, besides the headers (api/) and the command (command/). The component `library` is what
# programs are built with, `command` the command line, `documents` the licence and the changes, `automation` the Windows DLL.
include(CMakePackageConfigHelpers)

install(TARGETS vellobar_core EXPORT vellobar ARCHIVE COMPONENT library)

# For find_package(vellobar): the target vellobar::vellobar.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vellobar)
set(package_files ${CMAKE_BINARY_DIR}/package)
configure_package_config_file(cmake/vellobarConfig.cmake.in ${package_files}/vellobarConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${package_files}/vellobarConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT vellobar NAMESPACE vellobar:: FILE vellobarTargets.cmake DESTINATION ${package_folder} COMPONENT library)
install(FILES ${package_files}/vellobarConfig.cmake ${package_files}/vellobarConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT library)

# For pkg-config. The file says where things are from its own place, so that the tree can be moved.
set(VELLOBAR_PC_LIBS "-lvellobar")
if(WIN32)
  string(APPEND VELLOBAR_PC_LIBS " -loleaut32 -lws2_32")
else()
  string(APPEND VELLOBAR_PC_LIBS " ${CMAKE_THREAD_LIBS_INIT}")
  if(NOT Iconv_IS_BUILT_IN)
    string(APPEND VELLOBAR_PC_LIBS " -liconv")
  endif()
endif()
string(STRIP "${VELLOBAR_PC_LIBS}" VELLOBAR_PC_LIBS)
file(RELATIVE_PATH VELLOBAR_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" VELLOBAR_PC_PREFIX "${VELLOBAR_PC_PREFIX}")
configure_file(cmake/vellobar.pc.in ${package_files}/vellobar.pc @ONLY)
install(FILES ${package_files}/vellobar.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT library)

if(WIN32)
  install(TARGETS vellobar_dll LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT automation)
  install(FILES ${CMAKE_BINARY_DIR}/Quorvane.Vellobar.manifest DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT automation)
endif()

install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vellobar COMPONENT documents)
install(FILES examples/library/CMakeLists.txt examples/library/mailbox_tasks.cpp
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvellobar-dev/examples COMPONENT library)
