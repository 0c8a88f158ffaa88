# For "support/Places.h", also of the benchmarks.
set(KOLT_PLACES_DIR "${PROJECT_BINARY_DIR}/places")
configure_file("${PROJECT_SOURCE_DIR}/tests/support/Places.h.in" "${KOLT_PLACES_DIR}/support/Places.h" @ONLY)

# kolt_add_test(<target> SOURCES <src>... [LIBS <lib>...] [LABEL <label>] [TIMEOUT <seconds>] [FIXTURE <name>] [SERIAL] [XVFB] [PIXELS]
#               [REALTIME])
#
# One GoogleTest program; each of its tests becomes a ctest entry. XVFB runs it under its own virtual display.
# SERIAL keeps its tests from running beside others (for what needs the machine's cores or ports to itself).
# PIXELS is for tests whose own loops go over pictures: the compiler optimises them as it does the product.
# REALTIME is for tests that live on real sockets, windows, processes or time-outs, which a busy machine can disturb: the word is added
# to their label, and scripts/second-try may run them once more. Never for plain logic.
# FIXTURE names a ctest fixture that its tests want set up before.
# The working folder is the build folder of the test; pictures that a test keeps go to $KOLT_TEST_OUT
# (build/<preset>/test-out).
function(kolt_add_test target)
  cmake_parse_arguments(ARG "SERIAL;XVFB;PIXELS;REALTIME" "TIMEOUT;LABEL;LABELS;FIXTURE" "SOURCES;LIBS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE kolt_options_base ${ARG_LIBS} GTest::gmock GTest::gtest GTest::gtest_main)
  if(NOT ARG_PIXELS)
    # Most checks are compiled more often than run: unoptimised they take 40 % less time to build.
    target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O0>)
  endif()
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${KOLT_PLACES_DIR}")
  set(label "${ARG_LABEL}${ARG_LABELS}")
  if(ARG_REALTIME)
    string(APPEND label " realtime")
  endif()
  set(properties TIMEOUT ${ARG_TIMEOUT} LABELS "${label}"
      ENVIRONMENT "KOLT_TEST_OUT=${CMAKE_BINARY_DIR}/test-out")
  if(ARG_SERIAL)
    list(APPEND properties RUN_SERIAL TRUE)
  endif()
  if(ARG_FIXTURE)
    list(APPEND properties FIXTURES_REQUIRED ${ARG_FIXTURE})
  endif()
  if(ARG_XVFB)
    set_property(TARGET ${target} PROPERTY CROSSCOMPILING_EMULATOR "${PROJECT_SOURCE_DIR}/scripts/with-xvfb")
  endif()
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
