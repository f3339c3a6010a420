# One step of the install checks (cmake -DSTEP=... -P InstallCheck.cmake):
#   package    installs BUILD_DIR into a fresh PREFIX and checks that every part landed
#   headers    compiles each installed effects header alone, seeing nothing but PREFIX/include
#   symbols    the shared library exports only what the installed headers mark as exported
#   consumer   configures, builds and runs examples/consumer against PREFIX
#   tools      the installed tarsel-fx checks the installed shaders
#   pkgconfig  pkg-config finds the package and points at the installed headers and libraries
cmake_minimum_required(VERSION 3.25)
set(_scratch ${PREFIX}-scratch/${STEP})
file(REMOVE_RECURSE ${_scratch})
file(MAKE_DIRECTORY ${_scratch})

function(run_checked)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE _code OUTPUT_VARIABLE _out ERROR_VARIABLE _err)
  if(NOT _code EQUAL 0)
    string(REPLACE ";" " " _command "${ARGN}")
    message(FATAL_ERROR "'${_command}' failed (${_code})\n${_out}${_err}")
  endif()
  set(OUT "${_out}${_err}" PARENT_SCOPE)
endfunction()

function(expect_match text)
  foreach(_regex ${ARGN})
    if(NOT text MATCHES "${_regex}")
      message(FATAL_ERROR "output does not match '${_regex}'\n--- output\n${text}")
    endif()
  endforeach()
endfunction()

function(step_package)
  file(REMOVE_RECURSE ${PREFIX})
  run_checked(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})
  foreach(_file ${LIBDIR}/libTarselEffects.so ${LIBDIR}/libTarselCore.so ${LIBDIR}/libTarselQuillonWrapper.so
                include/effects/MgrEffects.h include/core/Result.h include/quillon/Reference.h
                bin/tarsel-fx bin/qlsl-check bin/qlsl-run share/TarselEffects/shaders/Surfaces.tsl
                share/doc/TarselEffects/language.md share/doc/TarselEffects/host.md
                ${LIBDIR}/cmake/TarselEffects/TarselEffectsConfig.cmake
                ${LIBDIR}/cmake/TarselEffects/TarselEffectsConfigVersion.cmake
                ${LIBDIR}/cmake/TarselEffects/TarselEffectsTargets.cmake ${LIBDIR}/pkgconfig/tarsel-effects.pc)
    if(NOT EXISTS ${PREFIX}/${_file})
      message(FATAL_ERROR "not installed: ${_file}")
    endif()
  endforeach()
endfunction()

function(step_headers)
  file(GLOB _headers RELATIVE ${PREFIX}/include ${PREFIX}/include/effects/*.h)
  set(_sources)
  foreach(_header ${_headers})
    string(MAKE_C_IDENTIFIER ${_header} _name)
    file(WRITE ${_scratch}/${_name}.cpp "#include \"${_header}\"\n")
    list(APPEND _sources ${_scratch}/${_name}.cpp)
  endforeach()
  run_checked(${CXX} -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I${PREFIX}/include ${_sources})
endfunction()

# The public names: classes and functions that the installed headers mark TARSEL_EFFECTS_EXPORT.
function(read_public_names out)
  file(GLOB _headers ${PREFIX}/include/effects/*.h)
  set(_names)
  foreach(_header ${_headers})
    file(STRINGS ${_header} _lines REGEX "TARSEL_EFFECTS_EXPORT [^(]*[A-Za-z_]")
    foreach(_line ${_lines})
      if(_line MATCHES "^class TARSEL_EFFECTS_EXPORT ([A-Za-z_0-9]+)")
        list(APPEND _names ${CMAKE_MATCH_1})
      elseif(_line MATCHES "^TARSEL_EFFECTS_EXPORT [^(]* ([A-Za-z_0-9]+)\\(")
        list(APPEND _names ${CMAKE_MATCH_1})
      endif()
    endforeach()
  endforeach()
  set(${out} ${_names} PARENT_SCOPE)
endfunction()

# The class or function a demangled symbol belongs to, without namespace; empty when it is in neither the
# library's namespace nor the global one.
function(symbol_owner symbol out)
  string(REGEX REPLACE "^(vtable|typeinfo|typeinfo name|VTT|guard variable|non-virtual thunk|virtual thunk) (for|to) "
                       "" _name "${symbol}")
  set(_owner "")
  # nm shows the version node after the name.
  string(REGEX REPLACE "@.*$" "" _name "${_name}")
  string(REGEX REPLACE "\\(.*" "" _name "${_name}")
  string(REGEX REPLACE "\\[abi:[a-z0-9]+\\]" "" _name "${_name}")
  string(REGEX REPLACE "^Tarsel::Effects::" "" _name "${_name}")
  if(NOT _name MATCHES "[<:]" OR _name MATCHES "^[A-Za-z_0-9]+::[~A-Za-z_0-9]+$")
    string(REGEX REPLACE "::.*" "" _owner "${_name}")
  endif()
  set(${out} "${_owner}" PARENT_SCOPE)
endfunction()

function(step_symbols)
  read_public_names(_public)
  file(GLOB _library ${PREFIX}/${LIBDIR}/libTarselEffects.so)
  run_checked(${NM} -D --defined-only -C ${_library})
  string(REPLACE ";" "," OUT "${OUT}")
  string(REPLACE "\n" ";" _lines "${OUT}")
  set(_count 0)
  set(_owners)
  set(_foreign)
  foreach(_line ${_lines})
    # Absolute entries are the version node of the symbol map, not code or data.
    if(NOT _line MATCHES "^[0-9a-f]+ ([A-Za-z]) (.+)$" OR CMAKE_MATCH_1 STREQUAL "A")
      continue()
    endif()
    set(_symbol "${CMAKE_MATCH_2}")
    symbol_owner("${_symbol}" _owner)
    if(_owner AND _owner IN_LIST _public)
      math(EXPR _count "${_count} + 1")
      list(APPEND _owners ${_owner})
    else()
      list(APPEND _foreign "${_symbol}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES _owners)
  list(LENGTH _public _countPublic)
  list(LENGTH _owners _countOwners)
  message(STATUS "${_count} exported symbols of ${_countOwners} of the ${_countPublic} public classes and functions")
  if(_foreign)
    list(JOIN _foreign "\n  " _text)
    message(FATAL_ERROR "exported but not public:\n  ${_text}")
  endif()
  # What every host needs must be there; a version script that exported nothing would pass the rest.
  foreach(_needed MgrEffects GetVersion MgrStats Key)
    if(NOT _needed IN_LIST _owners)
      message(FATAL_ERROR "${_needed} is public but not exported")
    endif()
  endforeach()
endfunction()

function(step_consumer)
  run_checked(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/consumer -B ${_scratch} -G ${GENERATOR}
              -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
  run_checked(${CMAKE_COMMAND} --build ${_scratch})
  run_checked(${_scratch}/consumer)
  message(STATUS "consumer:\n${OUT}")
  # The second frame writes the light's new intensity, found on the line after its count.
  expect_match("${OUT}" "TarselEffects ${VERSION}\n" "loaded Surfaces\\.tsl" "Matte\\.lights\\[0\\] = PointLight"
               "PointLight\\.intensity = 25" "frame 0: [1-9][0-9]* values applied"
               "frame 1: [1-9][0-9]* values applied\n[^\n]*'intensity_[^ ]*' float count 1 {40}" "\ndone\n")
endfunction()

function(step_tools)
  file(GLOB _shaders ${PREFIX}/share/TarselEffects/shaders/*.tsl)
  run_checked(${PREFIX}/bin/tarsel-fx check -I ${PREFIX}/share/TarselEffects/shaders ${_shaders})
  run_checked(${PREFIX}/bin/qlsl-check ${SOURCE_DIR}/tests/data/qlsl/surface_root.qlray
              ${SOURCE_DIR}/tests/data/qlsl/surface_graph.qlray ${SOURCE_DIR}/tests/data/qlsl/surface.qlvert)
  expect_match("${OUT}" "linked 3 shader")
endfunction()

function(step_pkgconfig)
  find_program(_pkgconfig pkg-config)
  if(NOT _pkgconfig)
    message(STATUS "pkg-config not found; skipped")
    return()
  endif()
  set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
  run_checked(${_pkgconfig} --modversion tarsel-effects)
  expect_match("${OUT}" "^${VERSION}\n")
  run_checked(${_pkgconfig} --cflags --libs tarsel-effects)
  expect_match("${OUT}" "-lTarselEffects" "-lTarselCore")
  string(REGEX MATCH "-I([^ \n]+)" _include "${OUT}")
  if(NOT EXISTS ${CMAKE_MATCH_1}/effects/MgrEffects.h)
    message(FATAL_ERROR "pkg-config names no include folder with the headers: ${OUT}")
  endif()
  string(REGEX MATCH "-L([^ \n]+)" _lib "${OUT}")
  if(NOT EXISTS ${CMAKE_MATCH_1}/libTarselEffects.so)
    message(FATAL_ERROR "pkg-config names no library folder with the library: ${OUT}")
  endif()
endfunction()

cmake_language(CALL step_${STEP})
