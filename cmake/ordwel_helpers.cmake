# SPDX-License-Identifier: MIT
# Shared build settings for every ordwel target.

# Warning flags; errors when ORDWEL_WERROR is on (always in CI).
function(ordwel_target_warnings a_target)
  target_compile_options(${a_target} PRIVATE -Wall -Wextra -Wpedantic)
  if(ORDWEL_WERROR)
    target_compile_options(${a_target} PRIVATE -Werror)
  endif()
endfunction()

# With mingw-w64 the programs need the compiler's runtime DLLs beside them. Copying them into the
# output directory keeps one libstdc++ for the library and the programs, so exceptions and
# std::string cross the DLL boundary safely, and Wine finds everything in one folder.
function(ordwel_copy_mingw_runtime)
  if(NOT MINGW OR NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
    return()
  endif()
  file(MAKE_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  foreach(l_dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${l_dll}
      OUTPUT_VARIABLE l_path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${l_path}")
      set(l_path "/usr/${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32/lib/${l_dll}")
    endif()
    if(EXISTS "${l_path}")
      file(COPY "${l_path}" DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    else()
      message(WARNING "mingw runtime ${l_dll} not found; Wine runs may fail")
    endif()
  endforeach()
endfunction()

# GoogleTest: Debian's packaged build natively; for a cross build, the sources that Debian ships
# under /usr/src/googletest, built with the cross compiler.
macro(ordwel_find_gtest)
  if(CMAKE_CROSSCOMPILING)
    if(NOT TARGET gtest)
      set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
      set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
      set(l_saved_shared ${BUILD_SHARED_LIBS})
      set(BUILD_SHARED_LIBS OFF)
      add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/_googletest" EXCLUDE_FROM_ALL SYSTEM)
      set(BUILD_SHARED_LIBS ${l_saved_shared})
      foreach(l_target gtest gtest_main gmock)
        if(NOT TARGET GTest::${l_target})
          add_library(GTest::${l_target} ALIAS ${l_target})
        endif()
      endforeach()
    endif()
  else()
    find_package(GTest REQUIRED)
  endif()
endmacro()
