# Target docs: the public headers and the pages of docs/ as HTML in <build folder>/docs/html, by Doxygen. A warning is an error.
find_package(Doxygen 1.9 QUIET)
if(DOXYGEN_FOUND)
    file(GLOB names_doc_inputs LIST_DIRECTORIES ON "${PROJECT_SOURCE_DIR}/*.md" "${PROJECT_SOURCE_DIR}/docs" "${PROJECT_SOURCE_DIR}/names"
         "${PROJECT_SOURCE_DIR}/host" "${PROJECT_SOURCE_DIR}/files")
    list(JOIN names_doc_inputs " " names_doc_inputs)
    configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
    add_custom_target(docs COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/docs"
                           COMMAND Doxygen::doxygen "${PROJECT_BINARY_DIR}/Doxyfile"
                           COMMAND "${CMAKE_COMMAND}" -E echo "Pages: ${PROJECT_BINARY_DIR}/docs/html/index.html"
                           COMMENT "Rendering the pages" VERBATIM)
else()
    add_custom_target(docs COMMAND "${CMAKE_COMMAND}" -E echo "The pages need Doxygen: apt-get install doxygen, then configure again"
                           COMMAND "${CMAKE_COMMAND}" -E false VERBATIM)
endif()
