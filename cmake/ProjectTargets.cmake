# Settings and helpers that every target of this project shares.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(V3D_PLUGIN_BUILD_DIR ${PROJECT_BINARY_DIR}/lib/viewer3d/plugins)
set(V3D_PLUGIN_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/viewer3d/plugins)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# v3d_own_code(<target>): the warnings that own code is held to, and the
# definitions that keep Qt's implicit conversions and keyword macros out.
function(v3d_own_code target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(V3D_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS GLM_ENABLE_EXPERIMENTAL)
endfunction()

# v3d_shared_library(<target> <folder> <source>...): a shared library of own
# code with its export macro, its installed rules, and every header below the
# folder as part of its interface: included as <folder/...> from the repository
# root as well as from the installed package. Every header must compile alone. A
# source that includes its own header first shows that of it, so there is no
# precompiled header here; headers without a source are compiled by the target
# all_verify_interface_header_sets.
function(v3d_shared_library target folder)
    add_library(${target} SHARED ${ARGN})
    add_library(Viewer3dModule::${target} ALIAS ${target})
    v3d_own_code(${target})
    target_compile_features(${target} PUBLIC cxx_std_17)
    generate_export_header(${target}
        EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/${folder}/${target}_export.h)

    file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    foreach(header ${headers})
        string(REGEX REPLACE "\\.h$" ".cpp" source ${header})
        if(NOT EXISTS ${source})
            list(APPEND lone_headers ${header})
        endif()
    endforeach()
    list(REMOVE_ITEM headers ${lone_headers})
    target_sources(${target}
        PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers}
        PUBLIC FILE_SET lone TYPE HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${lone_headers}
        PUBLIC FILE_SET generated TYPE HEADERS BASE_DIRS ${PROJECT_BINARY_DIR}/include
            FILES ${PROJECT_BINARY_DIR}/include/${folder}/${target}_export.h)
    set_target_properties(${target} PROPERTIES
        VERIFY_INTERFACE_HEADER_SETS ON
        INTERFACE_HEADER_SETS_TO_VERIFY "lone;generated"
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        INSTALL_RPATH $ORIGIN)
    install(TARGETS ${target} EXPORT Viewer3dModuleTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILE_SET lone DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILE_SET generated DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()
