# A library of the module's sources compiled with tiny sizes. The self-check expects the shipped
# ones.
function(names_add_tiny_module target)
    set(sources ${names_module_sources})
    list(FILTER sources EXCLUDE REGEX "/self_check\\.cpp$")
    add_library(${target} STATIC ${sources})
    names_project_settings(${target})
    target_compile_options(${target} PRIVATE ${names_test_optimisation})
    target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_compile_definitions(${target} PUBLIC NAMES_SIZES_HEADER="tests/tiny/tiny_sizes.hpp")
endfunction()
