# Every public header compiles alone, as C11 and as C++17 without exceptions (the C++ face as the
# latter): a source of one line is generated for each.
file(GLOB names_headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
     "${PROJECT_SOURCE_DIR}/names/*.h" "${PROJECT_SOURCE_DIR}/host/*.h"
     "${PROJECT_SOURCE_DIR}/files/*.h")
set(names_headers_cpp names/names_manager.hpp files/names_file.hpp)
foreach(language IN ITEMS c cpp)
    set(sources)
    foreach(header IN LISTS names_headers names_headers_${language})
        string(MAKE_C_IDENTIFIER "${header}" stem)
        set(source "${CMAKE_CURRENT_BINARY_DIR}/header_check/${stem}.${language}")
        file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"${header}\"\n" @ONLY)
        list(APPEND sources "${source}")
    endforeach()
    add_library(header_check_${language} OBJECT ${sources})
    set_target_properties(header_check_${language} PROPERTIES UNITY_BUILD OFF
                          C_STANDARD 11 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF
                          CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
    target_compile_options(header_check_${language} PRIVATE -Wall -Wextra -Wconversion -Wshadow
                           -pedantic-errors $<$<BOOL:${NAMES_WERROR}>:-Werror>
                           $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>)
    target_include_directories(header_check_${language} PRIVATE "${PROJECT_SOURCE_DIR}")
endforeach()
