# SPDX-License-Identifier: MIT
# Writes the manual page ordwel.1 and the bash completion script ordwel.bash into OUT_DIR, both from
# the tool itself (TOOL): the man page is its help screen in plain form, each heading a section and
# each section's text kept as laid out; the completion script is what --bash-completion prints.
#   cmake -DTOOL=<ordwel> -DOUT_DIR=<dir> -DVERSION=<x.y.z> -P ordwel_docs.cmake
execute_process(COMMAND "${TOOL}" --help OUTPUT_VARIABLE l_help RESULT_VARIABLE l_result)
if(NOT l_result EQUAL 0)
  message(FATAL_ERROR "ordwel --help failed: ${l_result}")
endif()
execute_process(COMMAND "${TOOL}" --bash-completion OUTPUT_FILE "${OUT_DIR}/ordwel.bash" RESULT_VARIABLE l_result)
if(NOT l_result EQUAL 0)
  message(FATAL_ERROR "ordwel --bash-completion failed: ${l_result}")
endif()

# Characters that a CMake list would take apart or group are stood in for while the lines are split.
string(REPLACE ";" "@SEMICOLON@" l_help "${l_help}")
string(REPLACE "[" "@OPEN@" l_help "${l_help}")
string(REPLACE "]" "@CLOSE@" l_help "${l_help}")
string(REPLACE "\n" ";" l_lines "${l_help}")

string(TIMESTAMP l_date "%Y-%m-%d" UTC)
set(l_roff ".TH ORDWEL 1 \"${l_date}\" \"ordwel ${VERSION}\" \"User Commands\"\n")
set(l_in_section FALSE)
foreach(l_line IN LISTS l_lines)
  # roff's escape character and its minus sign, then the characters stood in for.
  string(REPLACE "\\" "\\e" l_line "${l_line}")
  string(REPLACE "-" "\\-" l_line "${l_line}")
  string(REPLACE "@SEMICOLON@" ";" l_line "${l_line}")
  string(REPLACE "@OPEN@" "[" l_line "${l_line}")
  string(REPLACE "@CLOSE@" "]" l_line "${l_line}")
  if(l_line MATCHES "^[^ ]")
    if(l_in_section)
      string(APPEND l_roff ".fi\n")
    endif()
    string(APPEND l_roff ".SH ${l_line}\n.nf\n")
    set(l_in_section TRUE)
  else()
    # The help indents its body by 8 columns; the page indents by itself.
    # (string(SUBSTRING), as REGEX REPLACE would apply "^" again after each match.)
    if(l_line MATCHES "^        ")
      string(SUBSTRING "${l_line}" 8 -1 l_line)
    endif()
    if(l_line MATCHES "^[.']")
      set(l_line "\\&${l_line}")
    endif()
    string(APPEND l_roff "${l_line}\n")
  endif()
endforeach()
if(l_in_section)
  string(APPEND l_roff ".fi\n")
endif()
file(WRITE "${OUT_DIR}/ordwel.1" "${l_roff}")
