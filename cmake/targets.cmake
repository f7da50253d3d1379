# The language level and the warnings of every target of this project.
function(names_project_settings target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    # Position independent, so that a static library can become part of a shared one, without paying
    # for interposition.
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF
                                               POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${target} PRIVATE
                           $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
                           -fno-semantic-interposition -Wall -Wextra -Wpedantic -Wconversion
                           -Wshadow $<$<BOOL:${NAMES_WERROR}>:-Werror>)
endfunction()

# The C++ runtime, under the names that this compiler knows it by: what a program linked by a C
# compiler needs beside static libraries.
set(names_cxx_runtime ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_ITEM names_cxx_runtime ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_DUPLICATES names_cxx_runtime)

# What libraries are made of: sources compiled with every symbol hidden, except those that a pragma
# in the public headers exports. A release is compiled source by source, as it was measured, even
# where all else is compiled several sources at once (CMAKE_UNITY_BUILD).
function(names_objects target)
    add_library(${target} OBJECT ${ARGN})
    names_project_settings(${target})
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                               VISIBILITY_INLINES_HIDDEN ON)
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
        set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
    endif()
endfunction()

# How a library is used and linked. Headers are included as "names/..." and "host/...", from the
# root of the tree or of the installation. A shared library exports nothing but what
# cmake/<target>.map lists, and calls its own services even if a program defines others.
function(names_library target)
    set_target_properties(${target} PROPERTIES
                          LINKER_LANGUAGE CXX VERSION "${PROJECT_VERSION}"
                          SOVERSION "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
    target_include_directories(${target} PUBLIC
                               $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/names_manager>)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "STATIC_LIBRARY")
        target_link_libraries(${target} INTERFACE "$<$<LINK_LANGUAGE:C>:${names_cxx_runtime}>")
    elseif(NOT APPLE)
        set(map "${PROJECT_SOURCE_DIR}/cmake/${target}.map")
        target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
        set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
        if(NOT WIN32)
            target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)
        endif()
    endif()
endfunction()
