# CPack runs this when the files of all packages are in their folders, one for each component. It moves the debug symbols
# to their own packages, and does what Debian expects of every package. Nothing here depends on the time of the build or
# on its folder.
set(folder ${CPACK_TEMPORARY_INSTALL_DIRECTORY})

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# compress(FILE): FILE becomes FILE.gz, without name and time.
function(compress file)
  run(gzip -9nf ${file})
endfunction()

foreach(component IN LISTS CPACK_DHCPLIB_BINARIES)
  file(GLOB_RECURSE binaries ${folder}/${component}/usr/bin/* ${folder}/${component}/usr/lib/*.so.*)
  foreach(binary IN LISTS binaries)
    if(IS_SYMLINK ${binary})
      continue()
    endif()
    execute_process(COMMAND ${CPACK_DHCPLIB_READELF} -n ${binary} OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
    if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
      message(FATAL_ERROR "${binary} has no build-id")
    endif()
    set(symbols ${folder}/${component}Symbols/usr/lib/debug/.build-id/${CMAKE_MATCH_1})
    file(MAKE_DIRECTORY ${symbols})
    set(symbols ${symbols}/${CMAKE_MATCH_2}.debug)
    run(${CPACK_DHCPLIB_OBJCOPY} --only-keep-debug --compress-debug-sections ${binary} ${symbols})
    file(CHMOD ${symbols} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    run(${CPACK_DHCPLIB_STRIP} --strip-unneeded --remove-section=.comment --remove-section=.note ${binary})
  endforeach()
endforeach()

file(GLOB_RECURSE pages ${folder}/*/usr/share/man/*.[1-9])
foreach(page IN LISTS pages)
  compress(${page})
endforeach()

# Debian's zsh does not look into site-functions below /usr.
file(GLOB zsh_folders ${folder}/*/usr/share/zsh)
foreach(zsh IN LISTS zsh_folders)
  file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
endforeach()

# The time is that of SOURCE_DATE_EPOCH, if the environment has it.
string(TIMESTAMP day "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(package IN LISTS CPACK_DHCPLIB_PACKAGES)
  string(REPLACE "=" ";" package ${package})
  list(GET package 0 component)
  list(GET package 1 name)
  set(documents ${folder}/${component}/usr/share/doc/${name})
  file(MAKE_DIRECTORY ${documents})
  configure_file(${CPACK_DHCPLIB_COPYRIGHT} ${documents}/copyright COPYONLY)
  file(WRITE ${documents}/changelog "dhcplib (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
    "  * The changes are in the file CHANGELOG.md of the sources.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${day}\n")
  compress(${documents}/changelog)
endforeach()
