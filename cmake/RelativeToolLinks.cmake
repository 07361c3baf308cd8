# Run by CPack on its staging tree. The converters that come from other
# Debian packages are absolute links from lib/quillmorph/Files to /usr/bin;
# within /usr Debian wants them relative.
set(prefix ${CPACK_PACKAGING_INSTALL_PREFIX})
set(files ${prefix}/lib/quillmorph/Files)
file(GLOB tools LIST_DIRECTORIES false RELATIVE ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${files}
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${files}/*)
foreach(tool ${tools})
    set(link ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${files}/${tool})
    if(NOT IS_SYMLINK ${link})
        continue()
    endif()
    file(READ_SYMLINK ${link} target)
    if(target MATCHES "^${prefix}/")
        file(RELATIVE_PATH relative ${files} ${target})
        file(REMOVE ${link})
        file(CREATE_LINK ${relative} ${link} SYMBOLIC)
    endif()
endforeach()
