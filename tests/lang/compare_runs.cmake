# Generates records, checks them with a reference rule module and with its
# rule file (interpreted, and compiled), in text and in JSON Lines, and
# requires byte-identical outputs and exit statuses.
#   cmake -DPYTHON=... -DGENERATOR=gen.py [-DGENERATOR_MODE=records] -DCOUNT=n -DREFERENCE="quorel-check ... LIB MODULE"
#         -DCANDIDATES="quorel-check ... RULES.qr|quorel-check ... LIB2 MODULE" -DWORK=dir -P compare_runs.cmake

file(MAKE_DIRECTORY "${WORK}")
set(records "${WORK}/records.csv")
execute_process(COMMAND "${PYTHON}" "${GENERATOR}" ${GENERATOR_MODE} ${COUNT} OUTPUT_FILE "${records}" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the generator failed: ${status}")
endif()

function(run command format output result)
  separate_arguments(parts UNIX_COMMAND "${command} --format ${format} ${records}")
  execute_process(COMMAND ${parts} OUTPUT_FILE "${output}" ERROR_VARIABLE errors RESULT_VARIABLE status)
  if(NOT status MATCHES "^[012]$")
    message(FATAL_ERROR "${command} ended with ${status}:\n${errors}")
  endif()
  set(${result} ${status} PARENT_SCOPE)
endfunction()

string(REPLACE "|" ";" candidates "${CANDIDATES}")
foreach(format text json)
  run("${REFERENCE}" ${format} "${WORK}/reference.${format}" expected)
  file(SIZE "${WORK}/reference.${format}" size)
  if(size LESS 1000)
    message(FATAL_ERROR "only ${size} bytes of problems from the reference")
  endif()
  set(n 0)
  foreach(candidate IN LISTS candidates)
    math(EXPR n "${n} + 1")
    run("${candidate}" ${format} "${WORK}/candidate${n}.${format}" status)
    if(NOT status EQUAL expected)
      message(FATAL_ERROR "${candidate}: exit status ${status}, the reference's ${expected}")
    endif()
    execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${WORK}/reference.${format}"
                            "${WORK}/candidate${n}.${format}" RESULT_VARIABLE differ)
    if(NOT differ EQUAL 0)
      message(FATAL_ERROR "${candidate} (${format}) differs from the reference: see ${WORK}")
    endif()
  endforeach()
endforeach()
