# Language level, warnings, sanitizers and the output folders, for every target below.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# Programs and shared libraries stand in one folder, as they do when installed: the program finds the
# platform libraries beside itself.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN")

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

find_program(KOLT_CCACHE ccache)
if(KOLT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER "${KOLT_CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${KOLT_CCACHE}")
endif()

# Every target of ours links this one.
add_library(kolt_options_base INTERFACE)
target_compile_options(kolt_options_base INTERFACE -Wall -Wextra -Werror -fno-omit-frame-pointer)
target_compile_options(kolt_options_base INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wshadow -Wnon-virtual-dtor -Woverloaded-virtual>)
target_link_libraries(kolt_options_base INTERFACE Threads::Threads)
target_link_options(kolt_options_base INTERFACE -Wl,--as-needed)

# Product code also says every narrowing aloud.
add_library(kolt_options INTERFACE)
target_link_libraries(kolt_options INTERFACE kolt_options_base)
target_compile_options(kolt_options INTERFACE -Wconversion)

# What is installed reads bytes of strangers: checked string calls and stack canaries; and it tells nobody where it was built. (The
# shipped targets are linked accordingly in packaging/.) The checked calls complain of results that are left on purpose, (void) or
# not; the other builds say what [[nodiscard]] has to say.
add_compile_options($<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>
                    $<$<CONFIG:Release>:-Wno-unused-result> $<$<CONFIG:Release>:-fstack-protector-strong>
                    $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>)

if(KOLT_SANITIZE)
  add_compile_options(-fsanitize=${KOLT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KOLT_SANITIZE})
  add_compile_definitions(KOLT_SANITIZED=1)
endif()
if(KOLT_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

if(KOLT_BUILD_FUZZERS)
  # Coverage feedback must reach into the libraries under test.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
