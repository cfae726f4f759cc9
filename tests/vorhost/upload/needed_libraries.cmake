# Fails when LIBRARY names libcurl among the libraries it needs; READELF lists them.
execute_process(COMMAND "${READELF}" --dynamic --wide "${LIBRARY}"
  OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
if(NOT dynamic MATCHES "\\(NEEDED\\)[^\n]*libstdc\\+\\+")
  message(FATAL_ERROR "no needed libraries found in ${LIBRARY}:\n${dynamic}")
endif()
if(dynamic MATCHES "\\(NEEDED\\)[^\n]*libcurl")
  message(FATAL_ERROR "${LIBRARY} needs libcurl")
endif()
