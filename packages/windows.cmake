# The installer for Windows, vellobar-VERSION-x64.msi or -x86.msi in the build folder, with the help file that it holds.
find_program(VELLOBAR_WIXL wixl REQUIRED)
find_program(VELLOBAR_CHMCMD chmcmd REQUIRED)
find_program(VELLOBAR_DEBIAN_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(help_folder ${CMAKE_BINARY_DIR}/help)
set(help_file ${help_folder}/Vellobar.chm)
file(GLOB_RECURSE manual_sources CONFIGURE_DEPENDS docs/*.md docs/*.py docs/*.css docs/*.svg)
add_custom_command(OUTPUT ${help_file}
  COMMAND ${VELLOBAR_DEBIAN_PYTHON} -B ${CMAKE_SOURCE_DIR}/docs/generator/manual.py help ${help_folder}
  DEPENDS ${manual_sources}
  VERBATIM)

if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(installer_architecture x64)
else()
  set(installer_architecture x86)
endif()
set(VELLOBAR_INSTALLER ${CMAKE_BINARY_DIR}/vellobar-${PROJECT_VERSION}-${installer_architecture}.msi)
set(installer_folder ${CMAKE_BINARY_DIR}/installer)
set(write_installer ${CMAKE_SOURCE_DIR}/packages/windows/installer.py)
file(GLOB installed_examples CONFIGURE_DEPENDS examples/*.*)
file(MAKE_DIRECTORY ${installer_folder})
add_custom_command(OUTPUT ${VELLOBAR_INSTALLER}
  COMMAND ${VELLOBAR_DEBIAN_PYTHON} -B ${write_installer} ${CMAKE_BINARY_DIR} ${help_file} ${PROJECT_VERSION}
    ${installer_architecture} ${installer_folder}
  COMMAND ${VELLOBAR_WIXL} -a ${installer_architecture} -o ${VELLOBAR_INSTALLER} vellobar.wxs
  WORKING_DIRECTORY ${installer_folder}
  DEPENDS ${write_installer} packages/windows/registry.py automation/class_source.py automation/vellobar.idl
    automation/class_table.h automation/class_table.cpp LICENSE ${installed_examples} ${help_file} vellobar_dll vellobar_command
    vellobar_manifest
  VERBATIM)
add_custom_target(vellobar_installer ALL DEPENDS ${VELLOBAR_INSTALLER})
