# Fuzz targets live beside the parsers they exercise. They build only with
# clang (libFuzzer) when KORVANE_BUILD_FUZZERS is on; the fuzz preset does that.
#
# korvane_fuzz_target(NAME SOURCES ... LIBRARIES ... SEEDS dir...)
# Registers a short ctest run over the seed folders so every test run also
# replays the corpus through the target.
function(korvane_fuzz_target name)
  if(NOT KORVANE_BUILD_FUZZERS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;SEEDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} korvane_warnings)
  # libFuzzer writes what it finds into the first folder it is given: a
  # scratch folder in the build tree, so the checked-in seeds stay as they are.
  set(scratch "${CMAKE_CURRENT_BINARY_DIR}/${name}-corpus")
  file(MAKE_DIRECTORY "${scratch}")
  add_test(NAME ${name}.replay
    COMMAND ${name} -runs=20000 -max_total_time=60 -rss_limit_mb=1024 -timeout=10 "${scratch}" ${ARG_SEEDS})
endfunction()
