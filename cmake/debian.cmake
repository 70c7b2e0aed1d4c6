# Of a .deb alone, run by cpack on the files that it is going to pack: places and papers that the system asks for.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
if(EXISTS ${share}/zsh/site-functions)  # where its zsh does not look
  file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
endif()
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH where it is set
file(WRITE ${share}/doc/norv/changelog "norv (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * What is new stands in CHANGELOG.md beside this file.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
execute_process(COMMAND gzip -9n ${share}/doc/norv/changelog COMMAND_ERROR_IS_FATAL ANY)
