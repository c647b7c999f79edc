# SPDX-License-Identifier: MIT
# The library is built from layers: one folder of code/lib/ordwel/src each, listed bottom up in
# code/lib/ordwel/CMakeLists.txt. A layer names its sources, the public headers it implements and
# the layers below it that it may use. The sources go into the object library ordwel_objects, of
# which ordwel (and, for the tests, ordwel_private) is made; the declarations go into a manifest that the layering check (cmake/check_layers.cmake, run by ctest) reads.

# ordwel_layer(<name> [BUILD <bool>] [USES <layer>...] [SOURCES <file>...] [HEADERS <header>...])
#   BUILD    whether this build compiles the layer (default yes); the check reads it either way,
#            so the backend of the other platform is checked too
#   USES     the layers this one may include from; what they may use comes with them
#   SOURCES  every file of the folder src/<name>, private headers included
#   HEADERS  the public headers (include/ordwel/<header>) that this layer implements
function(ordwel_layer a_name)
  cmake_parse_arguments(PARSE_ARGV 1 l "" "BUILD" "USES;SOURCES;HEADERS")
  if(NOT DEFINED l_BUILD)
    set(l_BUILD ON)
  endif()
  foreach(l_used ${l_USES})
    get_property(l_known GLOBAL PROPERTY ORDWEL_LAYER_${l_used}_DECLARED SET)
    if(NOT l_known)
      message(FATAL_ERROR "layer ${a_name} uses ${l_used}, which is not declared below it")
    endif()
  endforeach()
  if(l_BUILD)
    list(TRANSFORM l_SOURCES PREPEND "${ORDWEL_SOURCE_ROOT}/${a_name}/" OUTPUT_VARIABLE l_paths)
    target_sources(ordwel_objects PRIVATE ${l_paths})
  endif()
  set_property(GLOBAL APPEND PROPERTY ORDWEL_LAYERS ${a_name})
  set_property(GLOBAL PROPERTY ORDWEL_LAYER_${a_name}_DECLARED ON)
  set_property(GLOBAL PROPERTY ORDWEL_LAYER_${a_name}_SOURCES ${l_SOURCES})
  set_property(GLOBAL PROPERTY ORDWEL_LAYER_${a_name}_USES ${l_USES})
  set_property(GLOBAL PROPERTY ORDWEL_LAYER_${a_name}_HEADERS ${l_HEADERS})
endfunction()

# ordwel_layer_edge(<file> <included> <reason>): a named include from a layer into one that it
# may not use in general. <file> is relative to src/ (or include/ordwel/ for a public header),
# <included> as written in the #include; the reason is for the reader of the call.
function(ordwel_layer_edge a_file a_included a_reason)
  set_property(GLOBAL APPEND PROPERTY ORDWEL_LAYER_EDGES "${a_file}>${a_included}")
endfunction()

# Writes the manifest for the check: one set() per fact, read back with include().
function(ordwel_write_layer_manifest a_path)
  get_property(l_layers GLOBAL PROPERTY ORDWEL_LAYERS)
  get_property(l_edges GLOBAL PROPERTY ORDWEL_LAYER_EDGES)
  string(REPLACE "\"" "\\\"" l_edges "${l_edges}")
  set(l_text "set(k_layers \"${l_layers}\")\nset(k_edges \"${l_edges}\")\n")
  foreach(l_layer ${l_layers})
    foreach(l_fact SOURCES USES HEADERS)
      get_property(l_value GLOBAL PROPERTY ORDWEL_LAYER_${l_layer}_${l_fact})
      string(APPEND l_text "set(k_${l_layer}_${l_fact} \"${l_value}\")\n")
    endforeach()
  endforeach()
  file(WRITE "${a_path}" "${l_text}")
endfunction()
