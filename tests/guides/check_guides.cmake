# Compiles every C++ code block of the guides (docs/*.md and README.md) against the library, so
# that the guides cannot drift from the interface they describe. Run by CTest as
#   cmake -DSOURCE_DIR=... -DWORK_DIR=... -DCXX=... -DLIBRARY=... -P check_guides.cmake
#
# Convention for authors of the guides:
# - Only fenced blocks opened by ```cpp are compiled; ```cmake, plain ``` and the rest are not.
# - A block is a translation unit of its own, with `#include <quorel/quorel.h>` in front of
#   it. It is built as a shared object linked against the library with --no-undefined, so
#   every function it calls must exist. Whole modules and free functions need nothing more.
# - A fragment (statements, or members of a class) says how to complete it in an HTML
#   comment, invisible on the rendered page, directly above its fence:
#       <!-- compile: void rule(quorel::RuntimeContext *rt) { @BLOCK@ } -->
#   The text after "compile:" is the translation unit, with @BLOCK@ standing for the block;
#   it may span lines (for #include lines in front). Define the wrapping functions out of
#   line so that their code is emitted and linked.
# - Unused parameters, variables and functions are allowed; every other warning fails.
# - A block that includes <quorel/host/...> builds against the host kit too
#   (-DHOST_INCLUDE=... -DHOST_LIBRARY=...), and one that includes <quorel/lang/...>
#   against the rule language (-DLANG_INCLUDE=... -DLANG_LIBRARY=...), which the host kit
#   uses as well; without them it is left out.
# - -DBUILD_FLAGS="..." ends every block's command line with the flags of an
#   instrumented build (sanitizers, coverage).

cmake_minimum_required(VERSION 3.25)

foreach(var SOURCE_DIR WORK_DIR CXX LIBRARY)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "check_guides.cmake needs -D${var}=...")
  endif()
endforeach()

set(flags -std=c++17 -fPIC -shared -Wall -Wextra -Werror -Wno-unused-parameter
    -Wno-unused-variable -Wno-unused-but-set-variable -Wno-unused-function)
separate_arguments(build_flags UNIX_COMMAND "${BUILD_FLAGS}")

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
file(GLOB guides "${SOURCE_DIR}/docs/*.md")
list(APPEND guides "${SOURCE_DIR}/README.md")

set(fence_open "```cpp\n")
string(LENGTH "${fence_open}" fence_open_length)
set(blocks 0)
set(failures "")

foreach(guide ${guides})
  file(RELATIVE_PATH shown "${SOURCE_DIR}" "${guide}")
  string(REGEX REPLACE "[^A-Za-z0-9]" "_" stem "${shown}")
  file(READ "${guide}" text)
  set(pos 0)
  while(TRUE)
    string(SUBSTRING "${text}" ${pos} -1 rest)
    string(FIND "${rest}" "${fence_open}" open)
    if(open EQUAL -1)
      break()
    endif()
    string(SUBSTRING "${rest}" 0 ${open} before)
    math(EXPR body_start "${open} + ${fence_open_length}")
    string(SUBSTRING "${rest}" ${body_start} -1 body)
    string(FIND "${body}" "\n```" close)
    if(close EQUAL -1)
      list(APPEND failures "${shown}: a ```cpp block is not closed")
      break()
    endif()
    math(EXPR code_length "${close} + 1")
    string(SUBSTRING "${body}" 0 ${code_length} code)

    # The line of the block's first code line, for the compiler's messages.
    math(EXPR head_length "${pos} + ${body_start}")
    string(SUBSTRING "${text}" 0 ${head_length} head)
    string(REGEX MATCHALL "\n" breaks "${head}")
    list(LENGTH breaks line)
    math(EXPR line "${line} + 1")
    math(EXPR pos "${pos} + ${body_start} + ${close} + 4")

    # A compile comment directly above the fence gives the wrapping.
    set(unit "@BLOCK@")
    string(FIND "${before}" "<!-- compile:" marker REVERSE)
    if(NOT marker EQUAL -1)
      string(SUBSTRING "${before}" ${marker} -1 comment)
      if(comment MATCHES "^<!-- compile:(.*)-->[ \t]*\n$")
        set(unit "${CMAKE_MATCH_1}")
      endif()
    endif()
    string(REPLACE "@BLOCK@" "\n#line ${line} \"${guide}\"\n${code}" unit "${unit}")

    # The host kit stands on the rule language: a block of either links the
    # language's archive, after the kit's.
    set(kit "")
    if(unit MATCHES "<quorel/(host|lang)/")
      if(NOT DEFINED LANG_LIBRARY OR (unit MATCHES "<quorel/host/" AND NOT DEFINED HOST_LIBRARY))
        message(STATUS "${shown}:${line}: left out, the host kit or the rule language was not built")
        continue()
      endif()
      if(unit MATCHES "<quorel/host/")
        set(kit "-I${HOST_INCLUDE}" "${HOST_LIBRARY}")
      endif()
      list(APPEND kit "-I${LANG_INCLUDE}" "${LANG_LIBRARY}")
    endif()
    math(EXPR blocks "${blocks} + 1")
    set(source "${WORK_DIR}/${stem}_${line}.cpp")
    file(WRITE "${source}" "#include <quorel/quorel.h>\n${unit}\n")
    execute_process(
      COMMAND "${CXX}" ${flags} "-I${SOURCE_DIR}" "${source}" -o "${WORK_DIR}/${stem}_${line}.so"
              ${kit} "${LIBRARY}" -Wl,--no-undefined ${build_flags}
      RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
      list(APPEND failures "${shown}:${line}")
      message("${shown}:${line}: the block does not build:\n${output}")
    endif()
  endwhile()
endforeach()

if(blocks EQUAL 0)
  message(FATAL_ERROR "no ```cpp blocks found in the guides")
endif()
if(failures)
  string(REPLACE ";" "\n  " failures "${failures}")
  message(FATAL_ERROR "code blocks of the guides that do not build:\n  ${failures}")
endif()
message(STATUS "${blocks} code blocks of the guides build")
