# Runs quorel-check and compares its standard output and exit status with
# what is expected: cmake -DCOMMAND=... -DEXPECTED=file -DSTATUS=n -P this.
separate_arguments(command UNIX_COMMAND "${COMMAND}")
execute_process(COMMAND ${command} OUTPUT_VARIABLE output RESULT_VARIABLE status)
if(NOT status EQUAL STATUS)
  message(FATAL_ERROR "exit status ${status}, expected ${STATUS}")
endif()
if(DEFINED EXPECTED)
  file(READ "${EXPECTED}" expected)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "output differs from ${EXPECTED}:\n${output}")
  endif()
endif()
