# Windows resource scripts on Linux. A script (.rc) is compiled by llvm-rc into a .res
# image, and a binary carries that image in an ELF section named ".rsrc", where our
# resource reader finds it.
#
# The image gets into the binary through a small generated C file whose only content is
# an `.incbin` of the .res into a non-allocated ".rsrc" section: the linker keeps such a
# section as it is, no tool rewrites the binary after linking, and a change of the script
# relinks the target. Several images linked into one binary simply follow each other in
# the section, which the reader accepts (each starts with the compiler's empty entry).
#
#   lumetta_resource_script(<name> <script.rc> [INCLUDE_DIRS dir...] [DEFINES N=V...]
#                           [DEPENDS file...])
#       Compiles the script into <binary dir>/<name>.res; <name> becomes a custom target
#       whose property LUMETTA_RES_FILE holds that path.
#   lumetta_embed_resources(<target> <name>)
#       Links the compiled image <name> into <target> (an executable or shared library).
#   lumetta_add_resources(<target> <script.rc> [INCLUDE_DIRS ...] [DEFINES ...] [DEPENDS ...])
#       Both steps for one target.

find_program(LUMETTA_LLVM_RC NAMES llvm-rc llvm-rc-14 llvm-rc-15 llvm-rc-16 REQUIRED)

function(lumetta_resource_script name script)
  cmake_parse_arguments(ARG "" "" "INCLUDE_DIRS;DEFINES;DEPENDS" ${ARGN})
  get_filename_component(script "${script}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  get_filename_component(script_dir "${script}" DIRECTORY)
  set(res "${CMAKE_CURRENT_BINARY_DIR}/${name}.res")
  set(includes /I "${script_dir}" /I "${CMAKE_CURRENT_SOURCE_DIR}")
  foreach(dir IN LISTS ARG_INCLUDE_DIRS)
    list(APPEND includes /I "${dir}")
  endforeach()
  foreach(define IN LISTS ARG_DEFINES)
    list(APPEND includes /D "${define}")
  endforeach()
  add_custom_command(
    OUTPUT "${res}"
    # "--" ends the options: llvm-rc reads a path such as /check/x.rc as the option /c.
    COMMAND "${LUMETTA_LLVM_RC}" ${includes} /FO "${res}" -- "${script}"
    DEPENDS "${script}" ${ARG_DEPENDS}
    COMMENT "Compiling resource script ${name}"
    VERBATIM)
  add_custom_target(${name} DEPENDS "${res}")
  set_target_properties(${name} PROPERTIES LUMETTA_RES_FILE "${res}")
endfunction()

function(lumetta_embed_resources target name)
  get_target_property(res ${name} LUMETTA_RES_FILE)
  if(NOT res)
    message(FATAL_ERROR "lumetta_embed_resources: ${name} is no compiled resource script")
  endif()
  set(carrier "${CMAKE_CURRENT_BINARY_DIR}/${target}_${name}_rsrc.c")
  string(REPLACE "\\" "\\\\" quoted "${res}")
  string(REPLACE "\"" "\\\"" quoted "${quoted}")
  string(REPLACE "\\" "\\\\" quoted "${quoted}")
  string(REPLACE "\"" "\\\"" quoted "${quoted}")
  file(CONFIGURE OUTPUT "${carrier}" CONTENT
"/* Generated: carries the compiled resource image ${name} in the section .rsrc. */
__asm__(\".pushsection .rsrc,\\\"\\\",%progbits\\n\"
        \".balign 4\\n\"
        \".incbin \\\"${quoted}\\\"\\n\"
        \".popsection\\n\");
")
  set_source_files_properties("${carrier}" PROPERTIES OBJECT_DEPENDS "${res}" LANGUAGE C)
  target_sources(${target} PRIVATE "${carrier}")
  add_dependencies(${target} ${name})
endfunction()

function(lumetta_add_resources target script)
  get_filename_component(base "${script}" NAME_WE)
  lumetta_resource_script(${target}_${base}_res "${script}" ${ARGN})
  lumetta_embed_resources(${target} ${target}_${base}_res)
endfunction()
