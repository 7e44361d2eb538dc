# The public header states the library's version for hosts; it must be the project's version.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../include/vexcap/vexcap.h VEXCAP_VERSION_LINES
     REGEX "^#define VEXCAP_VERSION_(MAJOR|MINOR|PATCH|STRING) ")
set(header_version "")
foreach(part MAJOR MINOR PATCH)
  string(REGEX MATCH "VEXCAP_VERSION_${part} ([0-9]+)" found "${VEXCAP_VERSION_LINES}")
  list(APPEND header_version "${CMAKE_MATCH_1}")
endforeach()
list(JOIN header_version "." header_version)
string(REGEX MATCH "VEXCAP_VERSION_STRING \"([^\"]*)\"" found "${VEXCAP_VERSION_LINES}")
set(header_version_string "${CMAKE_MATCH_1}")
if(NOT header_version STREQUAL PROJECT_VERSION OR NOT header_version_string STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "include/vexcap/vexcap.h states version ${header_version} (\"${header_version_string}\"), "
                      "the project is ${PROJECT_VERSION}: change both together")
endif()
