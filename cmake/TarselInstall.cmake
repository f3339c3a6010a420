# What `cmake --install` places under a prefix: the shared library with its exported headers and the
# stand-ins it depends on, the tools, the shipped shader libraries and the documentation, with a CMake
# package (Tarsel::Effects) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(TARSEL_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/TarselEffects)
set(TARSEL_INSTALL_SHADERSDIR ${CMAKE_INSTALL_DATADIR}/TarselEffects/shaders)
set(_tools tarsel-fx qlsl-check qlsl-run)

# Installed binaries find the installed libraries wherever the prefix is moved.
set_target_properties(TarselCore TarselQuillonWrapper TarselEffects PROPERTIES INSTALL_RPATH "$ORIGIN")
file(RELATIVE_PATH _bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(${_tools} PROPERTIES INSTALL_RPATH "$ORIGIN/${_bin_to_lib}")

install(TARGETS TarselCore TarselQuillonWrapper TarselEffects EXPORT TarselEffectsTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS ${_tools} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/core/include/ ${PROJECT_SOURCE_DIR}/platform/quillon/include/
                  ${PROJECT_SOURCE_DIR}/libraries/effects/include/
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/shaders/ DESTINATION ${TARSEL_INSTALL_SHADERSDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT TarselEffectsTargets NAMESPACE Tarsel:: DESTINATION ${TARSEL_INSTALL_CMAKEDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TarselEffectsConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/TarselEffectsConfig.cmake
                              INSTALL_DESTINATION ${TARSEL_INSTALL_CMAKEDIR}
                              PATH_VARS TARSEL_INSTALL_SHADERSDIR)
# Before 1.0 a minor version may change the interfaces.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TarselEffectsConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TarselEffectsConfig.cmake ${PROJECT_BINARY_DIR}/TarselEffectsConfigVersion.cmake
        DESTINATION ${TARSEL_INSTALL_CMAKEDIR})

# The pkg-config file finds its prefix from its own folder, so it holds for any --prefix given at install.
set(_pkgconfigdir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH TARSEL_PC_TO_PREFIX /${_pkgconfigdir} /)
string(REGEX REPLACE "/$" "" TARSEL_PC_TO_PREFIX "${TARSEL_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/tarsel-effects.pc.in ${PROJECT_BINARY_DIR}/tarsel-effects.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarsel-effects.pc DESTINATION ${_pkgconfigdir})
