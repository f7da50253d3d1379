# A library of the module's sources compiled with tiny sizes, whose header is found in front of the module's. The self-check expects the
# sizes that are shipped.
function(names_add_tiny_module target)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/names/*.cpp")
    list(FILTER sources EXCLUDE REGEX "/self_check\\.cpp$")
    add_library(${target} STATIC ${sources})
    names_project_settings(${target})
    target_include_directories(${target} PUBLIC "${CMAKE_CURRENT_FUNCTION_LIST_DIR}" "${PROJECT_SOURCE_DIR}")
endfunction()
