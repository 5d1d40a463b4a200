# Object Pascal programs for Windows: vellobar_add_pascal_program(NAME SOURCE).
#
# Debian's Free Pascal brings a compiler that makes 64-bit code, libraries for Linux only, and the sources of everything. The
# Windows units that OLE programs need, and for 32-bit programs a compiler that makes 32-bit code, are built from those sources
# once in a build folder, in about ten seconds.
find_program(VELLOBAR_FREE_PASCAL ppcx64 REQUIRED)
file(REAL_PATH ${VELLOBAR_FREE_PASCAL} pascal_native_compiler)
get_filename_component(pascal_native_folder ${pascal_native_compiler} DIRECTORY)
execute_process(COMMAND ${pascal_native_compiler} -iV OUTPUT_VARIABLE pascal_version OUTPUT_STRIP_TRAILING_WHITESPACE)
find_path(VELLOBAR_FREE_PASCAL_SOURCES rtl/win64/system.pp PATHS /usr/share/fpcsrc/${pascal_version} REQUIRED
  NO_CMAKE_FIND_ROOT_PATH)
set(pascal_sources ${VELLOBAR_FREE_PASCAL_SOURCES})
set(pascal_folder ${CMAKE_BINARY_DIR}/free_pascal)
file(MAKE_DIRECTORY ${pascal_folder}/compiler ${pascal_folder}/units ${pascal_folder}/programs)

# No configuration file, and of all messages only errors: the numbers are those of the warnings that Free Pascal gives about
# its own sources whatever else is said.
set(pascal_quiet -n -v0 -vm4045,4104,4105,5043,5044,5093,6018)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(pascal_compiler ${pascal_native_compiler})
  set(pascal_processor x86_64)
  set(pascal_system win64)
  set(pascal_start_unit sysinit)
else()
  set(pascal_compiler ${pascal_folder}/compiler/ppcross386)
  set(pascal_processor i386)
  set(pascal_system win32)
  set(pascal_start_unit sysinitpas)
  set(pascal_native ${pascal_native_compiler} ${pascal_quiet} -Fu${pascal_native_folder}/units/x86_64-linux/rtl -FE${pascal_folder}/compiler
    -FU${pascal_folder}/compiler)
  set(pascal_compiler_sources ${pascal_sources}/compiler)
  add_custom_command(
    OUTPUT ${pascal_compiler}
    COMMAND ${pascal_native} ${pascal_compiler_sources}/utils/msg2inc.pp
    COMMAND ${pascal_folder}/compiler/msg2inc ${pascal_native_folder}/msg/errore.msg msg msg
    COMMAND ${pascal_native} -di386 -dGDB -Sg -O1 -Fi. -Fu${pascal_compiler_sources} -Fu${pascal_compiler_sources}/i386
      -Fu${pascal_compiler_sources}/x86 -Fu${pascal_compiler_sources}/systems -Fi${pascal_compiler_sources} -Fi${pascal_compiler_sources}/i386
      -Fi${pascal_compiler_sources}/x86 -oppcross386 ${pascal_compiler_sources}/pp.pas
    WORKING_DIRECTORY ${pascal_folder}/compiler
    COMMENT "Building Free Pascal's compiler for 32-bit programs"
    VERBATIM)
endif()

set(pascal_rtl ${pascal_sources}/rtl)
set(pascal_packages ${pascal_sources}/packages)
set(pascal_compile_unit ${pascal_compiler} ${pascal_quiet} -T${pascal_system} -Sg -O2
  -Fi${pascal_rtl}/inc -Fi${pascal_rtl}/${pascal_processor} -Fi${pascal_rtl}/win -Fi${pascal_rtl}/${pascal_system} -Fi${pascal_rtl}/win/wininc
  -Fi${pascal_rtl}/objpas -Fi${pascal_rtl}/objpas/sysutils -Fi${pascal_rtl}/objpas/classes -Fi${pascal_packages}/rtl-objpas/src/inc
  -Fu${pascal_rtl}/${pascal_system} -Fu${pascal_rtl}/win -Fu${pascal_rtl}/inc -Fu${pascal_rtl}/${pascal_processor} -Fu${pascal_rtl}/objpas
  -Fu${pascal_packages}/rtl-objpas/src/win -Fu${pascal_packages}/rtl-objpas/src/inc -Fu${pascal_packages}/winunits-base/src
  -Fu${pascal_packages}/fcl-base/src -Fu${pascal_packages}/fcl-registry/src
  -FU${pascal_folder}/units)
# Every program starts with the first three; the unit ComObj needs all the others.
add_custom_command(
  OUTPUT ${pascal_folder}/units/comobj.ppu
  COMMAND ${pascal_compile_unit} -Us ${pascal_rtl}/${pascal_system}/system.pp
  COMMAND ${pascal_compile_unit} -Fu${pascal_folder}/units ${pascal_rtl}/${pascal_system}/${pascal_start_unit}.pp
  COMMAND ${pascal_compile_unit} -Fu${pascal_folder}/units ${pascal_rtl}/inc/fpintres.pp
  COMMAND ${pascal_compile_unit} -Fu${pascal_folder}/units ${pascal_packages}/winunits-base/src/comobj.pp
  DEPENDS ${pascal_compiler}
  COMMENT "Building Free Pascal's units for ${pascal_system}"
  VERBATIM)
add_custom_target(vellobar_pascal_units DEPENDS ${pascal_folder}/units/comobj.ppu)

set(VELLOBAR_PASCAL_COMPILE ${pascal_compiler} -n -v0 -vew -Sew -T${pascal_system} -O2 -Xs -Fu${pascal_folder}/units -FU${pascal_folder}/programs)

# Builds a console program from one source file, warnings as errors; NAME.exe stands beside the other programs.
function(vellobar_add_pascal_program name source)
  set(program ${CMAKE_BINARY_DIR}/${name}.exe)
  add_custom_command(
    OUTPUT ${program}
    COMMAND ${VELLOBAR_PASCAL_COMPILE} -o${program} ${CMAKE_CURRENT_SOURCE_DIR}/${source}
    DEPENDS ${source} vellobar_pascal_units ${CMAKE_BINARY_DIR}/free_pascal/units/comobj.ppu
    VERBATIM)
  add_custom_target(${name} ALL DEPENDS ${program})
endfunction()
