# Language, warnings, sanitizers, ccache and mold: one place for what every target shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(PAVEX_CCACHE ccache)
if(PAVEX_CCACHE)
  # The base directory makes a second checkout hit what the first one compiled.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                  ${PAVEX_CCACHE})
endif()
find_program(PAVEX_MOLD mold)
if(PAVEX_MOLD)
  add_link_options(-fuse-ld=mold)
endif()

# What the project's own code is compiled with; link it PRIVATE.
add_library(pavex_options INTERFACE)
target_compile_options(pavex_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
                       # The same float results on every machine and at every optimisation level.
                       -ffp-contract=off)
target_compile_features(pavex_options INTERFACE cxx_std_20)

if(PAVEX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -rdynamic)
endif()

if(PAVEX_FUZZ)
  # Without it libFuzzer doesn't see which code an input reaches.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# A folder of the house: one static library, its sources by name, what it stands on.
# pavex_library(NAME SOURCES... LINKS libraries...)
function(pavex_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE pavex_options)
endfunction()

# Programs and tests land together; the release script copies the programs to bin/ of the tree.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# Keeps the leak checker able to name what an OpenGL driver leaks; for programs that may open one.
function(pavex_keep_drivers program)
  if(PAVEX_SANITIZE)
    target_sources(${program} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/nodlclose.cpp)
  endif()
endfunction()
