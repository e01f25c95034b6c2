# Rooms of the source tree. A header is included by the name of its room ("engine/curve.h"), and a target finds the headers
# of the rooms that it names and of no others: each room's headers are linked into a folder of their own in the build tree.
function(kvx_headers target room directory)
  set(view ${CMAKE_BINARY_DIR}/headers/${target})
  file(GLOB headers CONFIGURE_DEPENDS ${directory}/*.h)
  file(REMOVE_RECURSE ${view})
  file(MAKE_DIRECTORY ${view}/${room})
  foreach(header ${headers})
    get_filename_component(name ${header} NAME)
    file(CREATE_LINK ${header} ${view}/${room}/${name} SYMBOLIC)
  endforeach()
  add_library(${target} INTERFACE)
  target_include_directories(${target} INTERFACE ${view})
endfunction()
