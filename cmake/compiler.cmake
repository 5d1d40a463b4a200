# Flags that every target of ours shares. `vellobar_warnings` is linked by our own targets only, never by what others wrote.
add_library(vellobar_warnings INTERFACE)
target_compile_options(vellobar_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wconversion
  -Wno-sign-conversion $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(VELLOBAR_WARNINGS_AS_ERRORS)
  target_compile_options(vellobar_warnings INTERFACE -Werror)
endif()

if(VELLOBAR_SANITIZE)
  add_compile_options(-fsanitize=${VELLOBAR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VELLOBAR_SANITIZE})
endif()

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86)$")
  # SSE2 is the floor on x86 everywhere; the 64-bit architecture includes it already.
  add_compile_options(-msse2 -mfpmath=sse)
endif()

if(WIN32)
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0601 _WIN32_WINNT=0x0601)
  # One file, no companions: the compiler's runtime goes into each module.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()
