# Compiler and linker settings shared by every target of the project.

set(TESSERA_WARNINGS
  -Wall -Wextra -Wpedantic $<$<BOOL:${TESSERA_WERROR}>:-Werror>
  -Wshadow -Wformat=2 -Wundef -Wcast-align -Wvla -Wmissing-declarations
  # Designated initializers name only the fields they set; the rest are value-initialized.
  -Wno-missing-field-initializers)
set(TESSERA_CXX_WARNINGS -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast)

# Paths in __FILE__ are relative to the tree, so that binaries don't carry the build machine's
# directories and reports name the same file wherever the tree was built.
add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")

if(TESSERA_SANITIZE)
  string(REPLACE "," ";" _tessera_sanitizers "${TESSERA_SANITIZE}")
  set(TESSERA_SANITIZE_FLAGS "-fsanitize=${TESSERA_SANITIZE}" -fno-omit-frame-pointer -g)
  if("undefined" IN_LIST _tessera_sanitizers)
    # vptr needs RTTI, which the library is built without; function's handler lives in the C++
    # part of the runtime, which a C program linking the library doesn't carry.
    list(APPEND TESSERA_SANITIZE_FLAGS -fno-sanitize-recover=all -fno-sanitize=vptr,function)
  endif()
  add_compile_options(${TESSERA_SANITIZE_FLAGS})
  add_link_options("-fsanitize=${TESSERA_SANITIZE}")
endif()

# Coverage: clang's source-based instrumentation everywhere; tools/coverage reads the counts.
if(TESSERA_COVERAGE)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TESSERA_COVERAGE needs clang")
  endif()
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_compile_definitions(TESSERA_COVERAGE=1)
  add_link_options(-fprofile-instr-generate)
endif()

# Warnings for a target of ours (not for third-party code built alongside).
function(tessera_warnings target)
  target_compile_options(${target} PRIVATE
    ${TESSERA_WARNINGS}
    # GCC's notes that the ARM calling convention changed in GCC 7.1 concern no code of ours: the
    # library's C interface takes no aggregates by value.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-psabi>
    $<$<COMPILE_LANGUAGE:CXX>:${TESSERA_CXX_WARNINGS}>)
endfunction()

# The library's code: C++20 without exceptions or RTTI, hidden unless exported, position
# independent, and free of anything that would pull in the C++ runtime.
function(tessera_library_flags target)
  tessera_warnings(${target})
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
  target_compile_definitions(${target} PRIVATE TESSERA_BUILDING_LIBRARY=1 _GNU_SOURCE=1)
endfunction()

# libtessera.so.1 depends on libc alone: no libstdc++, no libgcc_s. Compiler helper routines
# (64-bit division on 32-bit ARM, for instance) come from the static libgcc.a.
# It exports the names of `exports_list` and nothing else: an anonymous version script made from
# that list hides whatever the compiler emits beside them (weak inline functions of the standard
# library in unoptimised builds, type information of sanitizer checks) without versioning symbols.
function(tessera_shared_library_links target exports_list)
  file(STRINGS "${exports_list}" _lines)
  set(_script "{\n  global:\n")
  foreach(line IN LISTS _lines)
    if(line MATCHES "^[ \t]*([A-Za-z_][A-Za-z0-9_]*)")
      string(APPEND _script "    ${CMAKE_MATCH_1};\n")
    endif()
  endforeach()
  string(APPEND _script "  local:\n    *;\n};\n")
  set(_map "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
  file(CONFIGURE OUTPUT "${_map}" CONTENT "${_script}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${exports_list}")
  set_target_properties(${target} PROPERTIES LINK_DEPENDS "${_map}")
  target_link_options(${target} PRIVATE -Wl,--as-needed -Wl,-z,relro -Wl,-z,now
    "-Wl,--version-script=${_map}")
  # Coverage builds keep the default libraries: the profile runtime, linked last, needs them.
  if(NOT TESSERA_COVERAGE)
    target_link_options(${target} PRIVATE -nodefaultlibs)
    target_link_libraries(${target} PRIVATE c gcc)
  endif()
endfunction()

# Fuzzing: with clang under AddressSanitizer the harnesses are libFuzzer programs, and all code is
# built with coverage instrumentation so that they can find their way into it.
set(TESSERA_LIBFUZZER OFF)
if(TESSERA_BUILD_FUZZ AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND TESSERA_SANITIZE MATCHES "address")
  set(TESSERA_LIBFUZZER ON)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Adds the folder of each family of the project that has one below the current folder: tests,
# fuzzers and benchmarks are all kept one folder per family.
function(tessera_add_family_folders)
  foreach(family orb_cfg session inifile nvpair objpath xml http string memory system sync trace
      kit cli)
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${family}/CMakeLists.txt")
      add_subdirectory(${family})
    endif()
  endforeach()
endfunction()
