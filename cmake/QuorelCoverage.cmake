# QUOREL_COVERAGE instruments everything built below for line coverage
# (gcov data; counters updated atomically because tests run rule modules on
# several threads); .ci/run summarises it for quorel/ with gcovr.
if(QUOREL_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic -O0)
  add_link_options(--coverage)
endif()
