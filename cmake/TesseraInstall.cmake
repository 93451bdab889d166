# Installation: the library, its headers, a pkg-config file and a CMake package, so that a tool
# builds with `pkg-config --cflags --libs tessera` or with find_package(tessera).

install(TARGETS tessera EXPORT tesseraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/tessera DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel
  FILES_MATCHING PATTERN "*.h")

# A tool links the platform components beside the library. Unless told otherwise, those are the
# kit's replacements, installed with it.
set(_tessera_pc_platform "")
foreach(lib IN LISTS TESSERA_TOOL_PLATFORM_LIBS)
  if(TARGET ${lib})
    get_target_property(_name ${lib} OUTPUT_NAME)
    if(NOT _name)
      set(_name ${lib})
    endif()
    get_target_property(_export ${lib} EXPORT_NAME)
    if(NOT _export)
      set(_export ${lib})
    endif()
    string(APPEND _tessera_pc_platform " -l${_name}")
    target_link_libraries(tessera INTERFACE "$<INSTALL_INTERFACE:tessera::${_export}>")
  else()
    string(APPEND _tessera_pc_platform " -l${lib}")
    target_link_libraries(tessera INTERFACE "$<INSTALL_INTERFACE:${lib}>")
  endif()
endforeach()

set(TESSERA_PC_PLATFORM_LIBS "${_tessera_pc_platform}")
# The pkg-config file finds the prefix from its own place, so that the installed tree can move.
file(RELATIVE_PATH TESSERA_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/tessera.pc.in tessera.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/tessera.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)

include(CMakePackageConfigHelpers)
set(TESSERA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tessera)
install(EXPORT tesseraTargets NAMESPACE tessera:: DESTINATION ${TESSERA_CMAKE_DIR} COMPONENT devel)
configure_package_config_file(cmake/tesseraConfig.cmake.in
  "${CMAKE_CURRENT_BINARY_DIR}/tesseraConfig.cmake" INSTALL_DESTINATION ${TESSERA_CMAKE_DIR})
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/tesseraConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/tesseraConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/tesseraConfigVersion.cmake"
  DESTINATION ${TESSERA_CMAKE_DIR} COMPONENT devel)

# Example tools, with a CMake project and a Makefile that build them against the installed library.
install(FILES examples/read_setting.c examples/list_sessions.c examples/edit_ini.c
  examples/CMakeLists.txt examples/Makefile
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT devel)
