# Installation: headers, both libraries, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZELSYSTS_INCLUDE_SUBDIR ${CMAKE_INSTALL_INCLUDEDIR}/ZELSysTSObjectModeler)

file(GLOB ZELSYSTS_PUBLIC_HEADERS CONFIGURE_DEPENDS
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

# The .pc file finds the prefix from its own location, so that the installed tree works wherever
# it was installed (cmake --install --prefix) or moved to.
set(ZELSYSTS_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(ZELSYSTS_PC_INCLUDEDIR ${ZELSYSTS_INCLUDE_SUBDIR})
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(ZELSYSTS_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH _zel_pc_up "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
  string(REGEX REPLACE "/$" "" _zel_pc_up "${_zel_pc_up}")
  set(ZELSYSTS_PC_PREFIX "\${pcfiledir}/${_zel_pc_up}")
  set(ZELSYSTS_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(NOT IS_ABSOLUTE "${ZELSYSTS_INCLUDE_SUBDIR}")
  set(ZELSYSTS_PC_INCLUDEDIR "\${prefix}/${ZELSYSTS_INCLUDE_SUBDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/ZELSysTSObjectModeler.pc.in
  ${PROJECT_BINARY_DIR}/ZELSysTSObjectModeler.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZELSysTSObjectModeler.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
