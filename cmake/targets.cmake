# The language level and the warnings of every target of this project.
function(names_project_settings target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON)
    # Position independent, so that a static library can become part of a shared one, without paying for interposition.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${NAMES_WERROR}>:-Werror>)
endfunction()

# Headers are included as "names/..." and "host/...", from the root of the tree or of the installation.
function(names_include_root target)
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                                $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()
