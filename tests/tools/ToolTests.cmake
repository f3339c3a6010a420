# End-to-end runs of the built tarsel-fx on fixtures and on the shipped shaders.
set(_fx_data ${PROJECT_SOURCE_DIR}/tests/data/tools)
set(_fx_script ${CMAKE_CURRENT_LIST_DIR}/RunTool.cmake)
# Runs start in an empty folder, so that no file beside the tree can answer for a bare name.
set(_fx_workdir ${CMAKE_CURRENT_BINARY_DIR}/tool-workdir)

function(tarsel_fx_test name exit)
  cmake_parse_arguments(T "" "EXPECT_FILE;REJECT;TOOL" "ARGS;EXPECT" ${ARGN})
  if(NOT T_TOOL)
    set(T_TOOL tarsel-fx)
  endif()
  # Lists travel to the script with '|' between elements; every -D stays one argument.
  string(REPLACE ";" "|" _args "${T_ARGS}")
  string(REPLACE ";" "|" _expect "${T_EXPECT}")
  set(_defs -DTOOL=$<TARGET_FILE:${T_TOOL}> "-DARGS=${_args}" -DWORKDIR=${_fx_workdir} -DEXPECT_EXIT=${exit})
  if(T_EXPECT)
    list(APPEND _defs "-DEXPECT_REGEX=${_expect}")
  endif()
  if(T_REJECT)
    list(APPEND _defs "-DREJECT_REGEX=${T_REJECT}")
  endif()
  if(T_EXPECT_FILE)
    list(APPEND _defs -DEXPECT_FILE=${T_EXPECT_FILE})
  endif()
  add_test(NAME ${T_TOOL}.${name} COMMAND ${CMAKE_COMMAND} ${_defs} -P ${_fx_script})
endfunction()

# The parser's line for line 5, with the file's own name and no other line number.
tarsel_fx_test(check_syntax_error 1 ARGS check -I ${_fx_data} ${_fx_data}/syntax_error.tsl
               EXPECT "syntax_error\\.tsl\\(5\\) : Syntax Error\\. Near \"=\""
               REJECT "syntax_error\\.tsl\\([0-46-9]")
# The ten spliced lines must not shift the reported line.
tarsel_fx_test(check_error_after_include 1 ARGS check -I ${_fx_data} ${_fx_data}/error_after_include.tsl
               EXPECT "error_after_include\\.tsl\\(5\\) : Syntax Error\\."
               REJECT "error_after_include\\.tsl\\(([0-46-9]|1[0-9])\\)")
# A mistake in an included file is reported in that file, on its own line.
tarsel_fx_test(check_error_in_include 1 ARGS check -I ${_fx_data} ${_fx_data}/includes_broken.tsl
               EXPECT "syntax_error\\.tsl\\(5\\) : Syntax Error\\. Near \"=\""
               REJECT "includes_broken\\.tsl\\(")
# One bad file among good ones fails the run, and the good ones still load.
tarsel_fx_test(check_mixed 1 ARGS check -I ${_fx_data} ${_fx_data}/valid.tsl ${_fx_data}/syntax_error.tsl
               EXPECT "Acquired shader source asset successfully: '[^']*valid\\.tsl'" "syntax_error\\.tsl\\(5\\)")
tarsel_fx_test(check_missing_file 1 ARGS check -I ${_fx_data} no_such_file.tsl
               EXPECT "Failed to read shader source file 'no_such_file\\.tsl'")
# One shader of every class is made: each class that cannot be made is named with its file and line.
tarsel_fx_test(check_classes 1 ARGS check ${_fx_data}/classes.tsl
               EXPECT "classes\\.tsl:14: class \"Circle\" cannot be created"
                      "missing implementation of method \"Perimeter\" from interface \"Shape\""
                      "classes\\.tsl:22: Class \"Square\" has no static method named \"Twice\""
               REJECT "class \"Square\" cannot")
tarsel_fx_test(check_valid 0 ARGS check -I ${_fx_data} ${_fx_data}/valid.tsl REJECT "Syntax Error")
tarsel_fx_test(preprocess_macros 0 ARGS preprocess -I ${_fx_data} ${_fx_data}/macros.tsl
               EXPECT_FILE ${_fx_data}/macros.expected)
tarsel_fx_test(preprocess_failure 1 ARGS preprocess -I ${_fx_data} ${_fx_data}/no_such_file.tsl
               EXPECT "Failed to read shader source file")
tarsel_fx_test(usage_no_command 2 EXPECT "usage: tarsel-fx check")
tarsel_fx_test(usage_bad_option 2 ARGS check -x ${_fx_data}/valid.tsl EXPECT "unknown option '-x'" "usage:")

# Every shipped library must load, includes and all.
file(GLOB_RECURSE _fx_shaders CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/shaders/*.tsl)
tarsel_fx_test(check_shipped_shaders 0 ARGS check -I ${PROJECT_SOURCE_DIR}/shaders ${_fx_shaders}
               REJECT "Syntax Error|Parse Failure|Failed to read")

# The reference device's checker: a surface program links and lists its uniforms; an undeclared name fails on its line.
set(_ql_data ${PROJECT_SOURCE_DIR}/tests/data/qlsl)
tarsel_fx_test(links_surface_program 0 TOOL qlsl-check
               ARGS ${_ql_data}/surface_root.qlray ${_ql_data}/surface_graph.qlray ${_ql_data}/surface.qlvert
               EXPECT "linked 3 shader" "vec3 +color_k1f_k2b")
tarsel_fx_test(reports_undeclared_identifier 1 TOOL qlsl-check ARGS ${_fx_data}/undeclared.qlray
               EXPECT "undeclared\\.qlray: ERROR: String 0 Line 6: 'y' : undeclared identifier")

# The interpreter's runner: a surface program accumulates and counts its rays; a runaway loop stops with the step budget.
tarsel_fx_test(runs_surface_program 0 TOOL qlsl-run
               ARGS ${_ql_data}/surface_root.qlray ${_ql_data}/surface_graph.qlray ${_ql_data}/surface.qlvert
                    --uniform color_k1f_k2b=1,0.5,0.25 --input Normal=0,0,1
               EXPECT "ray stage: [0-9]+ steps" "accumulate 3 \\(0, 0, 0, 0\\)" "ql_OutputRayCount 3 0 0 0 0 0 0 0")
tarsel_fx_test(runs_vertex_stage 0 TOOL qlsl-run
               ARGS ${_ql_data}/surface_root.qlray ${_ql_data}/surface_graph.qlray ${_ql_data}/surface.qlvert
                    --stage vertex --input a_Position=1,2,3 --input a_Normal=0,1,0
               EXPECT "ql_Position \\(1, 2, 3, 1\\)" "Normal \\(0, 1, 0\\)")
tarsel_fx_test(run_unknown_uniform 1 TOOL qlsl-run ARGS ${_ql_data}/surface_root.qlray ${_ql_data}/surface_graph.qlray
               --uniform colour=1 EXPECT "'colour' is not a uniform of the program")
tarsel_fx_test(run_usage 2 TOOL qlsl-run ARGS --uniform EXPECT "--uniform needs a value" "usage: qlsl-run")

# The guides' examples are checked by test_tools.
target_compile_definitions(test_tools PRIVATE TARSEL_DOCS_DIR="${PROJECT_SOURCE_DIR}/docs")

# Every example scene compiles, applies and replays its frames without an error.
file(GLOB _fx_examples CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.json)
foreach(_scene ${_fx_examples})
  get_filename_component(_name ${_scene} NAME_WE)
  tarsel_fx_test(compile_example_${_name} 0 ARGS compile -I ${PROJECT_SOURCE_DIR}/shaders ${_scene}
                 EXPECT "compile 1 [a-z]" "write 1 [a-z]" "summary: [1-9][0-9]* effects, [1-9][0-9]* compiles, [1-9][0-9]* writes, 0 errors")
  # What an effect emits is a whole program: its files compile and link together on the device.
  add_test(NAME tarsel-fx.emit_links_${_name}
           COMMAND ${CMAKE_COMMAND} -DTOOL=$<TARGET_FILE:tarsel-fx> -DCHECK=$<TARGET_FILE:qlsl-check>
                   -DSHADERS=${PROJECT_SOURCE_DIR}/shaders -DSCENE=${_scene}
                   -DOUT=${CMAKE_CURRENT_BINARY_DIR}/emitted/${_name} -P ${CMAKE_CURRENT_LIST_DIR}/EmitAndLink.cmake)
endforeach()

# One scene per kind of mistake: the message names the scene file and the JSON path, and the run fails.
set(_fx_scenes ${_fx_data}/scenes)
set(_fx_compile compile -I ${PROJECT_SOURCE_DIR}/shaders -I ${_fx_data})
tarsel_fx_test(compile_bad_json 1 ARGS ${_fx_compile} ${_fx_scenes}/bad_json.json
               EXPECT "bad_json\\.json: not valid JSON: .*line 4" "summary: 0 effects, 0 compiles, 0 writes, 1 errors")
tarsel_fx_test(compile_bad_value 1 ARGS ${_fx_compile} ${_fx_scenes}/bad_value.json
               EXPECT "bad_value\\.json: shaders\\.key\\.values\\.color: expected 3 numbers")
tarsel_fx_test(compile_unknown_class 1 ARGS ${_fx_compile} ${_fx_scenes}/unknown_class.json
               EXPECT "unknown_class\\.json: shaders\\.key\\.class: Could not create shader named \"PointLite\"")
tarsel_fx_test(compile_unknown_parameter 1 ARGS ${_fx_compile} ${_fx_scenes}/unknown_parameter.json
               EXPECT "unknown_parameter\\.json: shaders\\.key\\.values\\.brightness: class \"PointLight\" has no value named \"brightness\"")
tarsel_fx_test(compile_unknown_shader 1 ARGS ${_fx_compile} ${_fx_scenes}/unknown_shader.json
               EXPECT "unknown_shader\\.json: effects\\.lamp\\.root: unknown shader \"fill\"")
tarsel_fx_test(compile_library_error 1 ARGS ${_fx_compile} ${_fx_scenes}/library_error.json
               EXPECT "library_error\\.json: libraries\\[0\\]: [^\n]*syntax_error\\.tsl\\(5\\) : Syntax Error")
tarsel_fx_test(compile_missing_library 1 ARGS ${_fx_compile} ${_fx_scenes}/missing_library.json
               EXPECT "missing_library\\.json: libraries\\[0\\]: cannot load \"NoSuchLibrary\\.tsl\"")
tarsel_fx_test(compile_lights_without_library 1 ARGS ${_fx_compile} ${_fx_scenes}/lights_without_library.json
               EXPECT "lights_without_library\\.json: shaders\\.key\\.light: the light-shader manager cannot start")
tarsel_fx_test(compile_usage 2 ARGS compile a.json b.json EXPECT "compile takes exactly one file" "usage:")
# The device's compiler error comes back in the library's file and line, in the frame that compiled.
tarsel_fx_test(compile_error_in_generated_code 1 ARGS ${_fx_compile} ${_fx_scenes}/compile_error.json
               EXPECT "compile_error\\.json: frames\\[0\\]: Broken\\.tsl:8: 'wrong' : cannot initialize a 'float' with a 'vec3'"
                      "summary: 1 effects, 0 compiles, 0 writes, 1 errors")
