# One target per folder. A folder's headers are reachable as "folder/name.h" only through its target, so an
# include of a folder that is not among a target's USES does not build.

# noxinfo_folder(TARGET FOLDER)
# Publishes the headers of FOLDER (a path from the project's root) as usage requirement of TARGET.
function(noxinfo_folder target folder)
  set(root "${PROJECT_BINARY_DIR}/include/${target}")
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY "${root}/${parent}")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${root}/${folder}" SYMBOLIC)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    target_include_directories(${target} INTERFACE "$<BUILD_INTERFACE:${root}>")
  else()
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${root}>")
  endif()
  set_property(GLOBAL APPEND PROPERTY NOXINFO_FOLDER_TARGETS ${target})
  set_property(TARGET ${target} PROPERTY NOXINFO_FOLDER ${folder})
endfunction()

# noxinfo_library(TARGET FOLDER SOURCES ... [USES ...] [PRIVATE_USES ...])
# A static, position-independent library of the sources of one folder.
function(noxinfo_library target folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;USES;PRIVATE_USES")
  add_library(${target} STATIC ${arg_SOURCES})
  noxinfo_folder(${target} ${folder})
  target_link_libraries(${target} PUBLIC ${arg_USES} PRIVATE ${arg_PRIVATE_USES} noxinfo_flags)
endfunction()

# noxinfo_part(TARGET FOLDER LIBRARY SHARED_LIBRARY SOURCES ... [USES ...] [PRIVATE_USES ...])
# The sources of one folder as part of a shared library. TARGET provides the folder's headers and, for linking,
# that library; TARGET_objects is what the library itself is linked from. USES are folder targets.
function(noxinfo_part target folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "LIBRARY" "SOURCES;USES;PRIVATE_USES")
  add_library(${target} INTERFACE)
  noxinfo_folder(${target} ${folder})
  target_link_libraries(${target} INTERFACE ${arg_USES} ${arg_LIBRARY})
  add_library(${target}_objects OBJECT ${arg_SOURCES})
  # Headers by expression, not by linking: the objects must not depend on the library that they end up in.
  foreach(use ${target} ${arg_USES})
    target_include_directories(${target}_objects PRIVATE $<TARGET_PROPERTY:${use},INTERFACE_INCLUDE_DIRECTORIES>)
  endforeach()
  target_link_libraries(${target}_objects PRIVATE noxinfo_host ${arg_PRIVATE_USES} noxinfo_flags)
endfunction()

# noxinfo_limit_exports(TARGET)
# Exports only what belongs to the host's namespaces and is marked for it; template instances of the standard
# library that come along with the sources stay inside.
function(noxinfo_limit_exports target)
  set(script "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${script}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
  if(NOT NOXINFO_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:-z,defs)
  endif()
endfunction()

# noxinfo_host_library(TARGET)
# Makes TARGET one of the host's shared libraries: versioned, its exports limited, installed next to the others.
function(noxinfo_host_library target)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
  noxinfo_limit_exports(${target})
  install(TARGETS ${target} EXPORT noxinfo
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT program NAMELINK_COMPONENT dev)
endfunction()
