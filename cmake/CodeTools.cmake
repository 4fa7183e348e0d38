# Targets for the developer, each there only where its tool is installed:
# format and check-format (clang-format), docs (Doxygen), coverage-report
# (gcovr, in a tree of the coverage preset). None is part of a build.
set(code_folders framework Viewer3dModule viewer readers tests benchmarks examples)

find_program(CLANG_FORMAT_PROGRAM clang-format)
mark_as_advanced(CLANG_FORMAT_PROGRAM)
if(CLANG_FORMAT_PROGRAM)
    foreach(target format check-format)
        set(mode -i)
        if(target STREQUAL "check-format")
            set(mode "--dry-run -Werror")
        endif()
        list(TRANSFORM code_folders REPLACE "(.+)" "'\\1/*.cpp' '\\1/*.h'" OUTPUT_VARIABLE patterns)
        list(JOIN patterns " " patterns)
        add_custom_target(${target}
            COMMAND sh -c "git ls-files -z --cached --others --exclude-standard -- ${patterns} | xargs -0 '${CLANG_FORMAT_PROGRAM}' ${mode}"
            WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)
    endforeach()
endif()

find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
    set(DOXYGEN_GENERATE_LATEX NO)
    set(DOXYGEN_STRIP_FROM_INC_PATH ${PROJECT_SOURCE_DIR})
    set(DOXYGEN_QUIET YES)
    doxygen_add_docs(docs framework Viewer3dModule WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
endif()

find_program(GCOVR_PROGRAM gcovr)
mark_as_advanced(GCOVR_PROGRAM)
if(GCOVR_PROGRAM)
    add_custom_target(coverage-report
        COMMAND ${GCOVR_PROGRAM} -r ${PROJECT_SOURCE_DIR} --filter framework/ --filter Viewer3dModule/
            --filter viewer/ --filter readers/ --print-summary ${PROJECT_BINARY_DIR}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)
endif()
