# Checks generated records with one worker and with three, and compares the
# outputs: with many slices of rows, workers read, check and write them in
# turns and out of step, and the output must still be in input order.
#   cmake -DPYTHON=... -DGENERATOR=... -DCHECK="quorel-check ... MODULE" -DWORK=dir -P parallel_batches.cmake

file(MAKE_DIRECTORY "${WORK}")
execute_process(COMMAND "${PYTHON}" "${GENERATOR}" 10000 OUTPUT_FILE "${WORK}/records.csv" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the generator failed: ${status}")
endif()
foreach(jobs 1 3)
  separate_arguments(command UNIX_COMMAND "${CHECK} --jobs ${jobs} ${WORK}/records.csv")
  execute_process(COMMAND ${command} OUTPUT_FILE "${WORK}/jobs${jobs}.txt" RESULT_VARIABLE status)
  if(NOT status EQUAL 1)
    message(FATAL_ERROR "--jobs ${jobs} ended with ${status}, not 1")
  endif()
endforeach()
file(SIZE "${WORK}/jobs1.txt" size)
if(size LESS 100000)
  message(FATAL_ERROR "only ${size} bytes of problems")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${WORK}/jobs1.txt" "${WORK}/jobs3.txt"
                RESULT_VARIABLE differ)
if(NOT differ EQUAL 0)
  message(FATAL_ERROR "--jobs 3 gives other output than --jobs 1")
endif()
