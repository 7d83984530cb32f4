# quorel_add_rule_module(TARGET RULES.qr): a rule module built from a rule
# file. quorel-compile writes the file's C++ into the build folder whenever
# the rule file changes, and TARGET is the shared library of the module
# (libTARGET.so, entry points loadPlausi<MODUL>/unloadPlausi<MODUL>), linked
# against quorel with hidden visibility, as the documented lines build a
# module written by hand.
function(quorel_add_rule_module target rules)
  get_filename_component(rules "${rules}" ABSOLUTE)
  get_filename_component(stem "${rules}" NAME_WE)
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_${stem}.cpp")
  add_custom_command(OUTPUT "${source}"
    COMMAND $<TARGET_FILE:quorel::compile> "${rules}" -o "${source}"
    DEPENDS "${rules}" quorel::compile
    COMMENT "Compiling rule file ${stem}.qr"
    VERBATIM)
  add_library(${target} MODULE "${source}")
  target_link_libraries(${target} PRIVATE quorel::quorel)
  set_target_properties(${target} PROPERTIES PREFIX "lib" CXX_VISIBILITY_PRESET hidden)
endfunction()
