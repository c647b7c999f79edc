# SPDX-License-Identifier: MIT
# The API reference: `cmake --build <dir> --target docs` runs Doxygen over the public headers, with
# the README as the main page, into <dir>/docs/html. Every public declaration is documented at its
# declaration, and a warning fails the target. Without Doxygen there is no docs target. A member
# group (///@{ ... ///@}) shares the comment in front of it with every member.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()
set(DOXYGEN_PROJECT_NAME ordwel)
set(DOXYGEN_PROJECT_BRIEF "${PROJECT_DESCRIPTION}")
set(DOXYGEN_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/docs")
set(DOXYGEN_USE_MDFILE_AS_MAINPAGE "${PROJECT_SOURCE_DIR}/README.md")
set(DOXYGEN_STRIP_FROM_PATH "${PROJECT_SOURCE_DIR}/code/lib/ordwel/include" "${PROJECT_BINARY_DIR}/include"
    "${PROJECT_SOURCE_DIR}")
set(DOXYGEN_STRIP_FROM_INC_PATH "${PROJECT_SOURCE_DIR}/code/lib/ordwel/include" "${PROJECT_BINARY_DIR}/include")
set(DOXYGEN_EXCLUDE_PATTERNS "*/internal/*")
set(DOXYGEN_EXCLUDE_SYMBOLS "ordwel::internal" "ordwel::internal::*")
set(DOXYGEN_EXTRACT_ALL NO)
set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
set(DOXYGEN_WARN_NO_PARAMDOC NO)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_GENERATE_LATEX NO)
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_PREDEFINED "ORDWEL_API=" "ORDWEL_PRINTF_FORMAT(a,b)=")
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
# A comment in front of a member group (///@{ ... ///@}) documents every member of it.
set(DOXYGEN_DISTRIBUTE_GROUP_DOC YES)
doxygen_add_docs(docs
  "${PROJECT_SOURCE_DIR}/code/lib/ordwel/include/ordwel" "${PROJECT_BINARY_DIR}/include/ordwel/version.h"
  "${PROJECT_SOURCE_DIR}/README.md"
  COMMENT "API reference into ${PROJECT_BINARY_DIR}/docs/html")
