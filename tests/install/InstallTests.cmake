# The package seen from outside the tree: the default build installed into a scratch prefix, then checked
# and used from there the way a renderer team would. Sanitized builds skip it, since an outside program
# would need the same runtime.
if(TARSEL_SANITIZE)
  return()
endif()
set(_prefix ${CMAKE_CURRENT_BINARY_DIR}/install-prefix)
set(_script ${CMAKE_CURRENT_LIST_DIR}/InstallCheck.cmake)
set(_common -DPREFIX=${_prefix} -DBUILD_DIR=${PROJECT_BINARY_DIR} -DSOURCE_DIR=${PROJECT_SOURCE_DIR}
            -DLIBDIR=${CMAKE_INSTALL_LIBDIR} -DVERSION=${PROJECT_VERSION})

function(tarsel_install_test name)
  add_test(NAME install.${name} COMMAND ${CMAKE_COMMAND} ${_common} -DSTEP=${name} ${ARGN} -P ${_script})
  set_tests_properties(install.${name} PROPERTIES FIXTURES_REQUIRED tarsel_installed TIMEOUT 300)
endfunction()

add_test(NAME install.package COMMAND ${CMAKE_COMMAND} ${_common} -DSTEP=package -P ${_script})
set_tests_properties(install.package PROPERTIES FIXTURES_SETUP tarsel_installed TIMEOUT 300)
tarsel_install_test(headers -DCXX=${CMAKE_CXX_COMPILER})
tarsel_install_test(symbols -DNM=${CMAKE_NM})
tarsel_install_test(consumer -DGENERATOR=${CMAKE_GENERATOR} -DCXX=${CMAKE_CXX_COMPILER})
tarsel_install_test(tools)
tarsel_install_test(pkgconfig)
set_tests_properties(install.pkgconfig PROPERTIES SKIP_REGULAR_EXPRESSION "pkg-config not found")
