# Runs PROGRAM (a list: its file and arguments) and compares what it prints with the file EXPECTED.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE output RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
if(NOT result STREQUAL "0")
  message(FATAL_ERROR "${PROGRAM}: ${result}\n${output}")
endif()
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} printed\n${output}\nnot what ${EXPECTED} holds:\n${expected}")
endif()
