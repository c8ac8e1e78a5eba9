# Fuzz targets live beside the parsers they exercise. They build only with
# clang (libFuzzer) when KORVANE_BUILD_FUZZERS is on; the fuzz preset does that.
# One naming scheme for all: the target korvane_fuzz_INPUT is built from
# src/AREA/fuzz/READERFuzzer.cpp by src/AREA/fuzz/CMakeLists.txt, and its seeds
# are tests/data/AREA/fuzz-seeds/INPUT/ (or fixtures the suites share, as the
# map file's).
#
# korvane_fuzz_target(NAME SOURCES ... LIBRARIES ... SEEDS dir...)
# Registers a test that replays the checked-in seeds (crash seeds among them)
# through the target exactly once each, so every test run checks the same
# inputs. Mutation runs, which find new inputs, are scripts/fuzz.sh's job;
# the seed folders it reads are listed in fuzz-seeds/NAME.seeds.
# Made afresh at each configure, so a renamed or removed target leaves no
# list behind for scripts/fuzz.sh to trip on.
file(REMOVE_RECURSE "${CMAKE_BINARY_DIR}/fuzz-seeds")

function(korvane_fuzz_target name)
  if(NOT KORVANE_BUILD_FUZZERS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;SEEDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} korvane_warnings)
  list(JOIN ARG_SEEDS "\n" seedLines)
  file(WRITE "${CMAKE_BINARY_DIR}/fuzz-seeds/${name}.seeds" "${seedLines}\n")
  add_test(NAME ${name}.replay COMMAND ${name} -runs=0 -rss_limit_mb=1024 -timeout=10 ${ARG_SEEDS})
  set_tests_properties(${name}.replay PROPERTIES TIMEOUT ${KORVANE_TEST_TIMEOUT})
endfunction()
