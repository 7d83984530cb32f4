# Warnings every target of the project is built with.
function(quorel_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
endfunction()
