# Flags of every target of this project, as usage requirements of one interface target, so that nothing leaks
# into a project that includes this one.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# The build tree mirrors the installed one, so that the program finds its parts by the same relative paths.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR}")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}")
set(NOXINFO_PLUGIN_DIR "${CMAKE_INSTALL_LIBDIR}/noxinfo/plugins")
file(RELATIVE_PATH NOXINFO_LIB_FROM_BIN "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
file(RELATIVE_PATH NOXINFO_PLUGIN_FROM_BIN "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${NOXINFO_PLUGIN_DIR}")
file(RELATIVE_PATH NOXINFO_LIB_FROM_PLUGIN "/prefix/${NOXINFO_PLUGIN_DIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")

# Without this, CMake compiles programs to be position independent and leaves linking them so to the compiler's
# default.
include(CheckPIESupported)
check_pie_supported(OUTPUT_VARIABLE pie_output LANGUAGES CXX)
if(NOT CMAKE_CXX_LINK_PIE_SUPPORTED)
  message(WARNING "Programs are not linked position independent: ${pie_output}")
endif()

# These flags are not supported for every processor.
include(CheckCXXCompilerFlag)
foreach(flag stack-clash-protection cf-protection)
  string(MAKE_C_IDENTIFIER "NOXINFO_HAS_${flag}" known)
  check_cxx_compiler_flag("-f${flag}" ${known})
  if(${known})
    list(APPEND NOXINFO_HARDENING "-f${flag}")
  endif()
endforeach()

add_library(noxinfo_flags INTERFACE)
target_compile_options(noxinfo_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -fstack-protector-strong ${NOXINFO_HARDENING}
  -fno-semantic-interposition
  $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
# With full optimisation, g++ 12 warns of impossible overlaps when a literal and the text of a number are joined.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(noxinfo_flags INTERFACE $<$<CONFIG:Release,RelWithDebInfo>:-Wno-restrict>)
endif()
target_link_options(noxinfo_flags INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack LINKER:--as-needed)

if(NOXINFO_SANITIZE)
  add_compile_options(-fsanitize=${NOXINFO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${NOXINFO_SANITIZE})
endif()
if(NOXINFO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(NOXINFO_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# noxinfo_uses_json(SOURCE ...)
# The JSON library adds zero to a null pointer while its buffers are empty, which is harmless, but which the
# sanitizer reports.
function(noxinfo_uses_json)
  if(NOXINFO_SANITIZE)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -fno-sanitize=pointer-overflow)
  endif()
endfunction()
