# Windows programs run under Wine where this build is a cross build, so that `ctest` just works. VELLOBAR_WINE_RUNNER is for
# tests that start a Windows program themselves: the runner, its option and the build's own Windows installation.
if(WIN32 AND CMAKE_CROSSCOMPILING)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(VELLOBAR_WINE_RUNNER ${CMAKE_SOURCE_DIR}/tests/wine/run64 --prefix ${CMAKE_BINARY_DIR}/wine)
  else()
    set(VELLOBAR_WINE_RUNNER ${CMAKE_SOURCE_DIR}/tests/wine/run32 --prefix ${CMAKE_BINARY_DIR}/wine)
  endif()
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VELLOBAR_WINE_RUNNER})
endif()
