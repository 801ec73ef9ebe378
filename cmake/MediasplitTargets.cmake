# Build rules shared by all folders: one library target per folder, one test program per folder of
# tests/unit, one harness per fuzzed reader.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
find_package(Threads REQUIRED)

add_library(mediasplit_options INTERFACE)
# GCC 12 warns of overlapping copies in std::string operator+ where there are none.
target_compile_options(mediasplit_options INTERFACE -Wall -Wextra -Werror
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_compile_definitions(mediasplit_options INTERFACE _FILE_OFFSET_BITS=64)
if(MEDIASPLIT_SANITIZE)
  target_compile_options(mediasplit_options INTERFACE -fsanitize=${MEDIASPLIT_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
  target_link_options(mediasplit_options INTERFACE -fsanitize=${MEDIASPLIT_SANITIZE})
endif()
if(MEDIASPLIT_LIBFUZZER)
  target_compile_options(mediasplit_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Options of test code: quick to compile, and without the warnings of GCC 12 that are known to be wrong
# about vectors made from lists.
set(test_optimization -O1)
if(MEDIASPLIT_SANITIZE)
  set(test_optimization -O0)  # takes half the time
endif()
add_library(mediasplit_test_options INTERFACE)
target_compile_options(mediasplit_test_options INTERFACE
  ${test_optimization}
  $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread
    -Wno-mismatched-new-delete>)

# mediasplit_library(<name> SOURCES <files...> [DEPENDS <targets...>])
# Includes are written from the repository root ("base/orv_bitbuf.h", "src/log/logging.h").
# A folder sees only the folders it declares: the dependency list is the floor rule.
function(mediasplit_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  # Folders are added lowest floor first: what isn't there yet lies on a higher one.
  foreach(dependency ${ARG_DEPENDS})
    if(NOT TARGET ${dependency} AND NOT IS_ABSOLUTE ${dependency})  # a file is a library of the system
      message(FATAL_ERROR "${name} depends on ${dependency}, which isn't on a lower floor")
    endif()
  endforeach()
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE mediasplit_options PUBLIC ${ARG_DEPENDS})
endfunction()

# All tests that start threads: what is built and run under ThreadSanitizer.
add_custom_target(threaded_tests)

# mediasplit_test(<name> SOURCES <files...> [DEPENDS <targets...>] [LABELS <labels...>])
# One GoogleTest program, run as one ctest test.
function(mediasplit_test name)
  if(NOT MEDIASPLIT_TESTS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;LABELS" ${ARGN})
  find_package(GTest REQUIRED)
  add_executable(${name}_test ${ARG_SOURCES})
  target_include_directories(${name}_test PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name}_test PRIVATE mediasplit_options mediasplit_test_options ${ARG_DEPENDS} GTest::gtest_main
    Threads::Threads)
  add_test(NAME ${name} COMMAND ${name}_test)
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 1200)
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(threaded_tests ${name}_test)
  endif()
endfunction()

# All harnesses: what is built and run for `make coverage`.
add_custom_target(fuzz_harnesses)

# mediasplit_fuzzer(<name> SOURCE <file> [MUTATOR <file>] [DEPENDS <targets...>])
# With libFuzzer: a fuzzing program, which changes its inputs by LLVMFuzzerCustomMutator of the mutator.
# Without: a program that replays tests/fuzz/corpus/<name> as an ordinary test.
function(mediasplit_fuzzer name)
  if(NOT MEDIASPLIT_TESTS AND NOT MEDIASPLIT_LIBFUZZER)
    return()
  endif()
  cmake_parse_arguments(ARG "" "SOURCE;MUTATOR" "DEPENDS" ${ARGN})
  add_executable(${name}_fuzz ${ARG_SOURCE})
  target_include_directories(${name}_fuzz PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name}_fuzz PRIVATE mediasplit_options ${ARG_DEPENDS})
  add_dependencies(fuzz_harnesses ${name}_fuzz)
  if(MEDIASPLIT_LIBFUZZER)
    target_sources(${name}_fuzz PRIVATE ${ARG_MUTATOR})
    target_link_options(${name}_fuzz PRIVATE -fsanitize=fuzzer)
  else()
    target_sources(${name}_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/tests/fuzz/replay_main.cpp)
    add_test(NAME corpus_${name}
      COMMAND ${name}_fuzz ${PROJECT_SOURCE_DIR}/tests/fuzz/corpus/${name})
    set_tests_properties(corpus_${name} PROPERTIES LABELS "corpus" TIMEOUT 600)
  endif()
endfunction()
