# Target docs: the public headers and the pages of docs/ as HTML in <build folder>/docs/html, by
# Doxygen. A warning is an error.
find_package(Doxygen 1.9 QUIET)
if(DOXYGEN_FOUND)
    file(GLOB names_doc_inputs LIST_DIRECTORIES ON CONFIGURE_DEPENDS
         "${PROJECT_SOURCE_DIR}/*.md" "${PROJECT_SOURCE_DIR}/docs/*.md"
         "${PROJECT_SOURCE_DIR}/names" "${PROJECT_SOURCE_DIR}/host" "${PROJECT_SOURCE_DIR}/files")
    list(JOIN names_doc_inputs " " names_doc_inputs)
    set(names_doc_folder "${PROJECT_BINARY_DIR}/docs")
    configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
    add_custom_target(docs COMMAND "${CMAKE_COMMAND}" -E make_directory "${names_doc_folder}"
                           COMMAND Doxygen::doxygen "${PROJECT_BINARY_DIR}/Doxyfile"
                           COMMENT "Rendering ${names_doc_folder}/html/index.html" VERBATIM)
else()
    add_custom_target(docs COMMAND "${CMAKE_COMMAND}" -E echo "Install Doxygen and configure again"
                           COMMAND "${CMAKE_COMMAND}" -E false VERBATIM)
endif()
