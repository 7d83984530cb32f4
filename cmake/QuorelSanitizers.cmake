# Applies the sanitizer chosen by QUOREL_SANITIZE to everything built below.
string(TOUPPER "${QUOREL_SANITIZE}" _quorel_sanitize)
if(_quorel_sanitize STREQUAL "ON" OR _quorel_sanitize STREQUAL "ADDRESS")
  set(_quorel_san_flags -fsanitize=address,undefined -fno-sanitize-recover=undefined
      -fno-omit-frame-pointer)
elseif(_quorel_sanitize STREQUAL "THREAD")
  set(_quorel_san_flags -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT _quorel_sanitize STREQUAL "OFF" AND NOT _quorel_sanitize STREQUAL "")
  message(FATAL_ERROR "QUOREL_SANITIZE must be OFF, ON or thread, not ${QUOREL_SANITIZE}")
endif()
if(_quorel_san_flags)
  add_compile_options(${_quorel_san_flags})
  add_link_options(${_quorel_san_flags})
endif()
# AddressSanitizer must see every object's life: the library then leaves
# recycling memory to the heap. ThreadSanitizer keeps the recycling, which
# it is there to watch.
if(_quorel_sanitize STREQUAL "ON" OR _quorel_sanitize STREQUAL "ADDRESS")
  add_compile_definitions(QUOREL_NO_RECYCLING)
endif()

# Fuzzing wants coverage feedback from the library itself.
if(QUOREL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
