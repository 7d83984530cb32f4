# Random rule files (tests/lang/generate_rules.py, fixed seeds), each built
# as a compiled module with quorel_add_rule_module, and run interpreted and
# compiled on the same generated records: every problem, read field, trail
# and failure must be the same. Included from apps/, where quorel-check and
# quorel-compile are.

set(generator "${PROJECT_SOURCE_DIR}/tests/lang/generate_rules.py")
set(work "${CMAKE_CURRENT_BINARY_DIR}/lang_differential")
file(MAKE_DIRECTORY "${work}")
execute_process(COMMAND "${Python3_EXECUTABLE}" "${generator}" material OUTPUT_FILE "${work}/material.csv")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${generator}")
foreach(seed 1 2 3 4 5 6 7 8)
  set(rules "${work}/zufall${seed}.qr")
  execute_process(COMMAND "${Python3_EXECUTABLE}" "${generator}" rules ${seed} OUTPUT_FILE "${rules}.new")
  # Rewritten only when it changed, so that the modules are not rebuilt at every configure.
  file(COPY_FILE "${rules}.new" "${rules}" ONLY_IF_DIFFERENT)
  quorel_add_rule_module(quorel_zufall${seed}_compiled "${rules}")
  set(check "$<TARGET_FILE:quorel-check> --init Grenze=5 --material M=${work}/material.csv")
  add_test(NAME LangInterpretedAsCompiled${seed} COMMAND ${CMAKE_COMMAND} -DPYTHON=${Python3_EXECUTABLE}
           -DGENERATOR=${generator} -DGENERATOR_MODE=records -DCOUNT=1000
           "-DREFERENCE=${check} $<TARGET_FILE:quorel_zufall${seed}_compiled> Zufall"
           "-DCANDIDATES=${check} ${rules}|${check} --jobs 2 ${rules}"
           -DWORK=${work}/run${seed} -P ${PROJECT_SOURCE_DIR}/tests/lang/compare_runs.cmake)
  add_dependencies(quorel-check quorel_zufall${seed}_compiled)
  # The lang tests compare what the module registers with the interpreter's.
  set_property(TARGET quorel_zufall${seed}_compiled PROPERTY QUOREL_RULES "${rules}")
endforeach()

# The material in a database whose column of M.S only the rule file names
# (SPALTE): interpreted and compiled, the runs find what they find in the CSV file.
if(TARGET quorel_host_sql)
  execute_process(COMMAND "${Python3_EXECUTABLE}" "${generator}" material-db "${work}/material.db")
  set(csv "$<TARGET_FILE:quorel-check> --init Grenze=5 --material M=${work}/material.csv")
  set(sql "$<TARGET_FILE:quorel-check> --init Grenze=5 --material M=sqlite:${work}/material.db?table=M")
  add_test(NAME LangMaterialColumnsNamedByTheRuleFile COMMAND ${CMAKE_COMMAND} -DPYTHON=${Python3_EXECUTABLE}
           -DGENERATOR=${generator} -DGENERATOR_MODE=records -DCOUNT=1000
           "-DREFERENCE=${csv} $<TARGET_FILE:quorel_zufall1_compiled> Zufall"
           "-DCANDIDATES=${sql} $<TARGET_FILE:quorel_zufall1_compiled> Zufall|${sql} ${work}/zufall1.qr"
           -DWORK=${work}/columns -P ${PROJECT_SOURCE_DIR}/tests/lang/compare_runs.cmake)
endif()
