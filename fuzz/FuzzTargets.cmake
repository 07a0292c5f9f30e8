# Shared by the fuzz/ subfolders. Every fuzzer is built twice:
#   <name>_replay  any compiler: runs the checked-in corpus once, registered as fuzz_<name>_corpus;
#   <name>         Clang with -DTPS_FUZZ=ON only: the libFuzzer binary (see run-fuzzers.sh).
include_guard(GLOBAL)

option(TPS_FUZZ "Build the libFuzzer binaries (Clang only)" OFF)
if(TPS_FUZZ AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(WARNING "TPS_FUZZ needs Clang; only the corpus replays are built")
endif()
if(TPS_FUZZ AND NOT CMAKE_CXX_FLAGS MATCHES "fuzzer-no-link")
    message(WARNING "TPS_FUZZ without -fsanitize=fuzzer-no-link: the code under test carries no "
                    "coverage feedback (fuzz/run-fuzzers.sh sets it)")
endif()

# FuzzedDataProvider.h ships with Clang and is plain C++. GCC builds get a copy of it on its own:
# Clang's resource folder also holds compiler headers that GCC cannot read.
set(TPS_FDP_INCLUDE "")
file(GLOB TPS_FDP_CANDIDATES /usr/lib/llvm-*/lib/clang/*/include/fuzzer/FuzzedDataProvider.h)
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND TPS_FDP_CANDIDATES)
    list(GET TPS_FDP_CANDIDATES 0 TPS_FDP_HEADER)
    set(TPS_FDP_INCLUDE ${CMAKE_BINARY_DIR}/fuzz-include)
    configure_file(${TPS_FDP_HEADER} ${TPS_FDP_INCLUDE}/fuzzer/FuzzedDataProvider.h COPYONLY)
endif()

set(TPS_FUZZ_COMMON ${CMAKE_CURRENT_LIST_DIR}/common)
add_library(tps_fuzz_support STATIC ${TPS_FUZZ_COMMON}/FuzzEnvironment.cpp)
target_include_directories(tps_fuzz_support PUBLIC ${TPS_FUZZ_COMMON})
target_link_libraries(tps_fuzz_support PUBLIC host_liblog host_libcutils)
if(TPS_FDP_INCLUDE)
    target_include_directories(tps_fuzz_support SYSTEM PUBLIC ${TPS_FDP_INCLUDE})
endif()

# tps_add_fuzzer(<name> SOURCES <files...> LIBS <targets...>)
# The corpus is read from corpus/<name>/ next to the calling CMakeLists.txt.
function(tps_add_fuzzer name)
    cmake_parse_arguments(FUZZ "" "" "SOURCES;LIBS" ${ARGN})
    set(corpus ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})

    set(replayMain ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/common/ReplayMain.cpp)
    add_executable(${name}_replay ${FUZZ_SOURCES} ${replayMain})
    target_link_libraries(${name}_replay PRIVATE tps_fuzz_support ${FUZZ_LIBS})
    add_test(NAME fuzz_${name}_corpus COMMAND ${name}_replay ${corpus})

    if(TPS_FUZZ AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        add_executable(${name} ${FUZZ_SOURCES})
        target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        target_link_libraries(${name} PRIVATE tps_fuzz_support ${FUZZ_LIBS})
        set_property(GLOBAL APPEND PROPERTY TPS_FUZZERS ${name})
    endif()
endfunction()
