# Debian packages, made by `cpack` in a native build folder: `vellobar` holds the command, `libvellobar-dev` the library.
set(VELLOBAR_MAINTAINER "The Vellobar authors <maintainers@vellobar.invalid>" CACHE STRING "Whom the packages name as maintainer")

# Documents that Debian's packages have and a plain install has not.
set(debian_documents ${CMAKE_BINARY_DIR}/debian)
configure_file(packages/debian/changelog.in ${debian_documents}/changelog.Debian @ONLY)
configure_file(CHANGELOG.md ${debian_documents}/changelog COPYONLY)
foreach(changelog changelog changelog.Debian)
  execute_process(COMMAND gzip -9nkf ${changelog} WORKING_DIRECTORY ${debian_documents} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
foreach(package vellobar libvellobar-dev)
  install(FILES packages/debian/copyright ${debian_documents}/changelog.gz ${debian_documents}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT debian_${package} EXCLUDE_FROM_ALL)
  install(FILES packages/debian/${package}.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    RENAME ${package} COMPONENT debian_${package} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packages/debian/compress_manuals.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
  WORLD_EXECUTE)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL command library debian_vellobar debian_libvellobar-dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${VELLOBAR_MAINTAINER}")

set(CPACK_DEBIAN_VELLOBAR_PACKAGE_NAME vellobar)
set(CPACK_DEBIAN_VELLOBAR_PACKAGE_SECTION mail)
set(CPACK_DEBIAN_VELLOBAR_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_VELLOBAR_DESCRIPTION "read, edit and write Unix mailboxes
The command lists the messages of an mbox file, shows their headers, texts
and parts, saves and adds attachments, writes new messages, and encodes and
decodes Base64, quoted-printable, UUencode and BinHex.")

set(CPACK_DEBIAN_LIBVELLOBAR-DEV_PACKAGE_NAME libvellobar-dev)
set(CPACK_DEBIAN_LIBVELLOBAR-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBVELLOBAR-DEV_PACKAGE_DEPENDS "libstdc++-12-dev | libstdc++-dev")
set(CPACK_DEBIAN_LIBVELLOBAR-DEV_DESCRIPTION "C++ library for Unix mailboxes
Headers, a static library and what CMake and pkg-config need, for programs
that open an mbox file as a collection of messages: messages, headers, parts,
attachments, transfer encodings and character sets are objects.")

include(CPack)
cpack_add_component_group(vellobar)
cpack_add_component_group(libvellobar-dev)
cpack_add_component(command GROUP vellobar)
cpack_add_component(debian_vellobar GROUP vellobar)
cpack_add_component(library GROUP libvellobar-dev)
cpack_add_component(debian_libvellobar-dev GROUP libvellobar-dev)
