# Installation: headers, both libraries, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZELSYSTS_INCLUDE_SUBDIR ${CMAKE_INSTALL_INCLUDEDIR}/ZELSysTSObjectModeler)

file(GLOB ZELSYSTS_PUBLIC_HEADERS
  ${PROJECT_SOURCE_DIR}/objectmodel/include/*.h
  ${PROJECT_SOURCE_DIR}/platform/include/*.h)
install(FILES ${ZELSYSTS_PUBLIC_HEADERS} DESTINATION ${ZELSYSTS_INCLUDE_SUBDIR})

install(TARGETS ZELSysTS ZELSysTSObjectModeler
  EXPORT ZELSysTSObjectModelerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${ZELSYSTS_INCLUDE_SUBDIR})

install(EXPORT ZELSysTSObjectModelerTargets
  NAMESPACE ZELSysTSObjectModeler::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZELSysTSObjectModeler)

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/ZELSysTSObjectModelerConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ZELSysTSObjectModelerConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZELSysTSObjectModeler)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/ZELSysTSObjectModelerConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/ZELSysTSObjectModelerConfig.cmake
  ${PROJECT_BINARY_DIR}/ZELSysTSObjectModelerConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZELSysTSObjectModeler)

configure_file(${PROJECT_SOURCE_DIR}/cmake/ZELSysTSObjectModeler.pc.in
  ${PROJECT_BINARY_DIR}/ZELSysTSObjectModeler.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZELSysTSObjectModeler.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
