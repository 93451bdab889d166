# Test programs: GoogleTest through CTest, natively, under sanitizers and on armhf under qemu.

find_package(Threads REQUIRED)

# Debian's packaged GoogleTest natively; built from /usr/src/googletest when cross compiling.
option(TESSERA_GTEST_FROM_SOURCE "Build GoogleTest from /usr/src/googletest" ${CMAKE_CROSSCOMPILING})
if(TESSERA_GTEST_FROM_SOURCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/_deps/googletest" EXCLUDE_FROM_ALL SYSTEM)
  foreach(lib gtest gmock)
    # GCC 12 reports a false -Wrestrict in GoogleTest's own string code at -O3 (bug 105651).
    target_compile_options(${lib} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
    if(NOT TARGET GTest::${lib})
      add_library(GTest::${lib} ALIAS ${lib})
    endif()
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()

# The programs that run under ThreadSanitizer: those labelled threads.
add_custom_target(tessera_threads_tests)

set(TESSERA_NS_RUN "${PROJECT_SOURCE_DIR}/tools/ns-run")
set(TESSERA_TEST_RESULTS "${CMAKE_BINARY_DIR}/test-results")

# Memcheck: every test program and fuzz replay runs under valgrind and fails on any memory error
# or block definitely lost. Only the program itself is checked: the kit's daemons, the tessera
# command and the shells that a test starts run natively. The tests that ran so get the label
# memcheck. Nothing is suppressed.
option(TESSERA_MEMCHECK "Run the test programs under valgrind's memcheck" OFF)
set(TESSERA_TEST_LAUNCHER ${CMAKE_CROSSCOMPILING_EMULATOR})
if(TESSERA_MEMCHECK)
  if(TESSERA_SANITIZE OR TESSERA_COVERAGE OR CMAKE_CROSSCOMPILING)
    message(FATAL_ERROR "TESSERA_MEMCHECK wants a native build without sanitizers or coverage")
  endif()
  find_program(TESSERA_VALGRIND valgrind REQUIRED)
  set(TESSERA_TEST_LAUNCHER "${TESSERA_VALGRIND}" --tool=memcheck --error-exitcode=99
    --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite
    --child-silent-after-fork=yes --num-callers=30 --quiet)
endif()

# Warnings of test code: those of the library, less GCC 12's false -Wrestrict reports on
# std::string concatenation at -O3 (GCC bug 105651).
function(tessera_test_warnings target)
  tessera_warnings(${target})
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
endfunction()

# tessera_add_test(<name> SOURCES <file>... [SHARED] [PRIVATE_NS] [LABELS <label>...]
#                  [LIBRARIES <lib>...])
# A GoogleTest program registered with CTest. It links the static build of the library, so that
# internal functions can be tested, or with SHARED the shipped libtessera.so.1 through its C ABI.
# PRIVATE_NS runs it in the private mount namespace where the daemon sockets can be bound.
# Each run leaves its results in test-results/<name>.xml.
function(tessera_add_test name)
  cmake_parse_arguments(T "SHARED;PRIVATE_NS" "" "SOURCES;LABELS;LIBRARIES" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  tessera_test_warnings(${name})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support")
  if(T_SHARED)
    target_link_libraries(${name} PRIVATE tessera)
  else()
    target_link_libraries(${name} PRIVATE tessera_static)
  endif()
  target_link_libraries(${name} PRIVATE tessera_testkit tessera_test_main
    GTest::gmock GTest::gtest Threads::Threads ${T_LIBRARIES})
  set(_launcher ${TESSERA_TEST_LAUNCHER})
  if(T_PRIVATE_NS)
    list(PREPEND _launcher ${TESSERA_NS_RUN})
  endif()
  add_test(NAME ${name} COMMAND ${_launcher} $<TARGET_FILE:${name}>)
  if("threads" IN_LIST T_LABELS)
    add_dependencies(tessera_threads_tests ${name})
  endif()
  if(TESSERA_MEMCHECK)
    list(APPEND T_LABELS memcheck)
  endif()
  set_tests_properties(${name} PROPERTIES
    LABELS "${T_LABELS}"
    ENVIRONMENT "GTEST_OUTPUT=xml:${TESSERA_TEST_RESULTS}/${name}.xml"
    TIMEOUT 600)
endfunction()
