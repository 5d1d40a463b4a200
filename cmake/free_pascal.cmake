# Object Pascal programs for Windows: vellobar_add_pascal_program(NAME SOURCE).
#
# Debian's Free Pascal brings a compiler that makes 64-bit code, libraries for Linux only, and the sources of everything.
# The Windows units that OLE programs need, and for 32-bit programs a compiler that makes 32-bit code, are built from those
# sources once in a build folder, in about ten seconds.
find_program(VELLOBAR_FREE_PASCAL ppcx64 REQUIRED)
file(REAL_PATH ${VELLOBAR_FREE_PASCAL} pascal_native_compiler)
get_filename_component(pascal_native_folder ${pascal_native_compiler} DIRECTORY)
execute_process(COMMAND ${pascal_native_compiler} -iV OUTPUT_VARIABLE pascal_version OUTPUT_STRIP_TRAILING_WHITESPACE)
find_path(VELLOBAR_FREE_PASCAL_SOURCES rtl/win64/system.pp PATHS /usr/share/fpcsrc/${pascal_version} REQUIRED
  NO_CMAKE_FIND_ROOT_PATH)
set(pascal_sources ${VELLOBAR_FREE_PASCAL_SOURCES})
set(pascal_folder ${CMAKE_BINARY_DIR}/free_pascal)
file(MAKE_DIRECTORY ${pascal_folder}/compiler ${pascal_folder}/units ${pascal_folder}/programs)

# No configuration file, and of all messages only errors: the numbers are those of the warnings that Free Pascal gives
# about its own sources whatever else is said.
set(pascal_quiet -n -v0 -vm4045,4104,4105,5043,5044,5066,5093,6018)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(pascal_compiler ${pascal_native_compiler})
  set(pascal_processor x86_64)
  set(pascal_system win64)
  set(pascal_start_unit sysinit)
else()
  set(pascal_made ${pascal_folder}/compiler)
  set(pascal_compiler ${pascal_made}/ppcross386)
  set(pascal_processor i386)
  set(pascal_system win32)
  set(pascal_start_unit sysinitpas)
  set(pascal_compile_native ${pascal_native_compiler} ${pascal_quiet} -Fu${pascal_native_folder}/units/x86_64-linux/rtl
    -FE${pascal_made} -FU${pascal_made})
  add_custom_command(
    OUTPUT ${pascal_compiler}
    COMMAND ${pascal_compile_native} utils/msg2inc.pp
    COMMAND ${pascal_made}/msg2inc ${pascal_native_folder}/msg/errore.msg ${pascal_made}/msg msg
    COMMAND ${pascal_compile_native} -di386 -dGDB -Sg -O1 -Fui386 -Fux86 -Fusystems -Fi${pascal_made} -Fii386 -Fix86
      -oppcross386 pp.pas
    WORKING_DIRECTORY ${pascal_sources}/compiler
    COMMENT "Building Free Pascal's compiler for 32-bit programs"
    VERBATIM)
endif()

set(pascal_compile_unit ${pascal_compiler} ${pascal_quiet} -T${pascal_system} -Sg -O2)
foreach(folder inc ${pascal_processor} win ${pascal_system} objpas)
  list(APPEND pascal_compile_unit -Firtl/${folder} -Furtl/${folder})
endforeach()
list(APPEND pascal_compile_unit -Firtl/win/wininc -Firtl/objpas/sysutils -Firtl/objpas/classes)
foreach(folder rtl-objpas/src/win rtl-objpas/src/inc winunits-base/src fcl-base/src fcl-registry/src)
  list(APPEND pascal_compile_unit -Fipackages/${folder} -Fupackages/${folder})
endforeach()
list(APPEND pascal_compile_unit -Fu${pascal_folder}/units -FU${pascal_folder}/units)
# Every program starts with the first three; the unit ComObj needs all the others.
add_custom_command(
  OUTPUT ${pascal_folder}/units/comobj.ppu
  COMMAND ${pascal_compile_unit} -Us rtl/${pascal_system}/system.pp
  COMMAND ${pascal_compile_unit} rtl/${pascal_system}/${pascal_start_unit}.pp
  COMMAND ${pascal_compile_unit} rtl/inc/fpintres.pp
  COMMAND ${pascal_compile_unit} packages/winunits-base/src/comobj.pp
  WORKING_DIRECTORY ${pascal_sources}
  DEPENDS ${pascal_compiler}
  COMMENT "Building Free Pascal's units for ${pascal_system}"
  VERBATIM)
add_custom_target(vellobar_pascal_units DEPENDS ${pascal_folder}/units/comobj.ppu)

set(VELLOBAR_PASCAL_COMPILE ${pascal_compiler} -n -v0 -vew -Sew -T${pascal_system} -O2 -Xs
  -Fu${pascal_folder}/units -FU${pascal_folder}/programs)

# Builds a console program from one source file, warnings as errors; NAME.exe stands beside the other programs.
function(vellobar_add_pascal_program name source)
  cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  set(program ${CMAKE_BINARY_DIR}/${name}.exe)
  add_custom_command(
    OUTPUT ${program}
    COMMAND ${VELLOBAR_PASCAL_COMPILE} -o${program} ${source}
    DEPENDS ${source} vellobar_pascal_units ${CMAKE_BINARY_DIR}/free_pascal/units/comobj.ppu
    VERBATIM)
  add_custom_target(${name} ALL DEPENDS ${program})
endfunction()
