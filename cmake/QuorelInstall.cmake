# Installs the library with an exported CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS quorel EXPORT quorelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(QUOREL_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/quorel")
install(EXPORT quorelTargets NAMESPACE quorel:: DESTINATION "${QUOREL_CMAKE_DIR}")

configure_package_config_file(cmake/quorelConfig.cmake.in
  "${PROJECT_BINARY_DIR}/quorelConfig.cmake"
  INSTALL_DESTINATION "${QUOREL_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/quorelConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/quorelConfig.cmake"
              "${PROJECT_BINARY_DIR}/quorelConfigVersion.cmake"
              "${PROJECT_SOURCE_DIR}/cmake/QuorelRuleModule.cmake"
        DESTINATION "${QUOREL_CMAKE_DIR}")

configure_file(cmake/quorel.pc.in "${PROJECT_BINARY_DIR}/quorel.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/quorel.pc" DESTINATION "lib/pkgconfig")
