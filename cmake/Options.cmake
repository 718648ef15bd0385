# Choices of a build, and what every target of ours is compiled with.
# An application that takes the tree in by add_subdirectory gets the library alone.
option(QUORVEL_APPS "Build the quorvel command" ${PROJECT_IS_TOP_LEVEL})
option(QUORVEL_TESTS "Build tests and examples" ${PROJECT_IS_TOP_LEVEL})
option(QUORVEL_FUZZ "Build the libFuzzer targets (clang only)" OFF)
option(QUORVEL_BENCH "Build the benchmarks" OFF)
option(QUORVEL_WERROR "Treat warnings as errors" OFF)
set(QUORVEL_SANITIZE "" CACHE STRING "Sanitizers, comma separated, for every target")
option(QUORVEL_COVERAGE "Instrument for gcov" OFF)

include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(ccache_program ccache)
if(ccache_program)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
      ${ccache_program})
endif()
# Not where g++ compiles for another machine: it looks for a linker of that machine's name.
find_program(mold_program mold)
if(mold_program AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_CROSSCOMPILING)
  add_link_options(-fuse-ld=mold)
endif()

add_library(quorvel-warnings INTERFACE)
target_compile_options(quorvel-warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wimplicit-fallthrough)
# g++ 12 warns falsely of overlaps inside std::string where it inlines appended literals (GCC bug 105651).
target_compile_options(quorvel-warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(QUORVEL_WERROR)
  target_compile_options(quorvel-warnings INTERFACE -Werror)
endif()

if(QUORVEL_SANITIZE)
  add_compile_options(-fsanitize=${QUORVEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUORVEL_SANITIZE})
endif()
if(QUORVEL_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
