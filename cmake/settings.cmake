# What all targets share: language, warnings, sanitizers, where the products come out.

option(KOV_TESTS "Build the tests" ON)
option(KOV_DESKTOP "Build the host with windows (Qt 6)" ON)
option(KOV_BENCH "Build the benchmarks" OFF)
option(KOV_FUZZ "Build the fuzz targets (clang)" OFF)
set(KOV_SANITIZE "" CACHE STRING "Sanitizers for -fsanitize=, empty for none")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Programs, module and the shared platform library stand side by side, so that a build folder can be moved.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH "$ORIGIN")

find_program(KOV_CCACHE ccache)
if(KOV_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KOV_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wno-missing-field-initializers -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_options(-g1)
else()
  add_compile_options(-Werror=return-type)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 sees overlaps in the library's own string code that can't be.
    add_compile_options(-Wno-restrict)
  endif()
endif()

if(KOV_SANITIZE)
  add_compile_options(-fsanitize=${KOV_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KOV_SANITIZE})
  if(KOV_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# kov_library(NAME SOURCES file... [DEPENDS target...])
# One static library for one folder below src/; its dependencies are the ones that it may include.
function(kov_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE})
endfunction()

if(KOV_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
