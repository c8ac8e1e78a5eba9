# The core libraries see the platform only through their seams, and no window
# toolkit at all: only the composition root (korvane_app) links the platform
# layer, only the window links Qt. This fails the configure when a core
# library, directly or through another library it links, names one of them.

set(KORVANE_CORE_LIBRARIES
  korvane_base korvane_records korvane_tools korvane_ids korvane_scanner korvane_savedregistry
  korvane_dumpscan korvane_package korvane_mapfile korvane_collector)
set(KORVANE_FRONT_LIBRARIES korvane_platform korvane_live korvane_app korvane_cli_front korvane_ui)

# Every target `target` links, at any depth, into the variable `out`.
function(korvane_linked_targets target out)
  set(seen "")
  set(pending "${target}")
  while(pending)
    list(POP_FRONT pending current)
    if(NOT TARGET "${current}")
      continue()
    endif()
    get_target_property(libraries "${current}" LINK_LIBRARIES)
    get_target_property(interface "${current}" INTERFACE_LINK_LIBRARIES)
    foreach(library IN LISTS libraries interface)
      # $<LINK_ONLY:name> is how a static library hands on a private dependency.
      string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" library "${library}")
      if(library AND NOT library IN_LIST seen)
        list(APPEND seen "${library}")
        list(APPEND pending "${library}")
      endif()
    endforeach()
  endwhile()
  set(${out} "${seen}" PARENT_SCOPE)
endfunction()

function(korvane_check_layering)
  foreach(core IN LISTS KORVANE_CORE_LIBRARIES)
    korvane_linked_targets(${core} linked)
    foreach(library IN LISTS linked)
      if(library IN_LIST KORVANE_FRONT_LIBRARIES OR library MATCHES "^Qt[0-9]*::")
        message(FATAL_ERROR "${core} links ${library}: the core libraries may see the platform only through "
                            "their seams and never link a window toolkit; only korvane_app links the platform.")
      endif()
    endforeach()
  endforeach()
endfunction()
