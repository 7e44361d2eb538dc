# The host guide shows the example host exactly as the build compiles it.
#   cmake -DGUIDE=docs/host-guide.md -DEXAMPLE=tools/example_host.c -P check_guide_example.cmake
file(READ "${GUIDE}" guide)
file(READ "${EXAMPLE}" example)
string(FIND "${guide}" "```c\n${example}```" found)
if(found EQUAL -1)
  message(FATAL_ERROR "${GUIDE} does not show ${EXAMPLE} as it is; copy the file into its ```c block")
endif()
