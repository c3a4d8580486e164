# Runs PROGRAM: it has to succeed and to print exactly what the file EXPECTED holds.
execute_process(COMMAND ${PROGRAM}
  RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
file(READ ${EXPECTED} expected)
if(NOT status STREQUAL "0" OR NOT printed STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM}: status ${status}\nexpected:\n${expected}\nprinted:\n${printed}")
endif()
