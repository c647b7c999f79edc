# SPDX-License-Identifier: MIT
# Cross build for 64-bit Windows with mingw-w64 (posix thread model, so std::thread and
# the pthread calls go to winpthreads). Tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(l_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${l_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${l_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${l_triple}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${l_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(ORDWEL_WINE NAMES wine wine64)
if(ORDWEL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ORDWEL_WINE})
endif()
