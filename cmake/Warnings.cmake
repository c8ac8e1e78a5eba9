# One warning set for every target of ours.
add_library(korvane_warnings INTERFACE)
target_compile_options(korvane_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  $<$<BOOL:${KORVANE_WERROR}>:-Werror>)
