# What is installed, in three parts: "library" is what agents need to run, "development" what they are
# built with, "tools" what operators and engineers call.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The manual pages of the functions are made from the headers by `make docs`, and installed when made;
# the packages always have them.
set(KQSUPT_MAN3_DIR ${PROJECT_SOURCE_DIR}/build/docs/man/man3 CACHE PATH
    "Where the manual pages of the functions are")

# The bounded library is a part of this one: nobody links with it by name, so it has no link for that.
install(TARGETS kqsupt EXPORT kqsupt
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS kqbounded EXPORT kqsupt
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_SKIP)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(DIRECTORY ${KQSUPT_MAN3_DIR}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
  COMPONENT development OPTIONAL
  FILES_MATCHING PATTERN "SM*.3" PATTERN "SUPT*.3" PATTERN "kqsupt*.3")

# The prefix is known when it is installed, not before.
install(CODE "
  set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
  set(libdir \"${CMAKE_INSTALL_LIBDIR}\")
  if(NOT IS_ABSOLUTE \"\${libdir}\")
    string(PREPEND libdir \"\\\${exec_prefix}/\")
  endif()
  set(includedir \"${CMAKE_INSTALL_INCLUDEDIR}\")
  if(NOT IS_ABSOLUTE \"\${includedir}\")
    string(PREPEND includedir \"\\\${prefix}/\")
  endif()
  set(description \"${PROJECT_DESCRIPTION}\")
  set(version \"${PROJECT_VERSION}\")
  configure_file(\"${PROJECT_SOURCE_DIR}/cmake/kqsupt.pc.in\"
                 \"${PROJECT_BINARY_DIR}/kqsupt.pc\" @ONLY)
" COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/kqsupt.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kqsupt)
install(EXPORT kqsupt NAMESPACE kqsupt:: FILE kqsuptTargets.cmake DESTINATION ${config_dir}
  COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/kqsuptConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kqsuptConfig.cmake INSTALL_DESTINATION ${config_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kqsuptConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kqsuptConfig.cmake
  ${PROJECT_BINARY_DIR}/kqsuptConfigVersion.cmake
  DESTINATION ${config_dir} COMPONENT development)

install(PROGRAMS ${PROJECT_SOURCE_DIR}/tools/sandbox DESTINATION ${CMAKE_INSTALL_BINDIR}
  RENAME kqsupt-sandbox COMPONENT tools)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT tools OPTIONAL FILES_MATCHING PATTERN "*.1")
if(TARGET kqsup)
  # It loads the library late; beside the place of the build tree it looks into that of the install.
  file(RELATIVE_PATH from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  if(NOT from_bin STREQUAL "../lib")
    set_property(TARGET kqsup APPEND PROPERTY INSTALL_RPATH "$ORIGIN/${from_bin}")
  endif()
  install(TARGETS kqsup RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
