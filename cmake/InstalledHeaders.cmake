# Everything that uses the libraries (programs, examples, tests, fuzz targets, benchmarks) is compiled against the
# headers as they are installed, and only against those: DhcpLib::DhcpLib and DhcpLib::DhcpPlatform are the libraries of
# this build with the include folders of an installation in the build folder.
set(DHCPLIB_INSTALLED ${PROJECT_BINARY_DIR}/installed)
set(include_dir ${DHCPLIB_INSTALLED}/${CMAKE_INSTALL_INCLUDEDIR})

set(headers "")
set(installed_headers "")
# Adds the headers below `folder` of `top`, which are installed below `target`.
function(add_headers top folder target)
  file(GLOB_RECURSE found CONFIGURE_DEPENDS RELATIVE ${top} ${top}/${folder}/*.h)
  list(FILTER found EXCLUDE REGEX "(^|/)internal/")
  list(TRANSFORM found PREPEND ${top}/ OUTPUT_VARIABLE sources)
  list(TRANSFORM found PREPEND ${include_dir}/${target} OUTPUT_VARIABLE copies)
  set(headers ${headers} ${sources} PARENT_SCOPE)
  set(installed_headers ${installed_headers} ${copies} PARENT_SCOPE)
endfunction()
add_headers(${DHCPLIB_PLATFORM} . DhcpPlatform/)
add_headers(${PROJECT_SOURCE_DIR} DhcpLib "")
set(generated_headers ${PROJECT_BINARY_DIR}/generated/DhcpLib/Config.h ${PROJECT_BINARY_DIR}/generated/DhcpLib/Version.h)
# The include folder is emptied first, so that a header that is no longer installed is not found. Copies keep their
# time of modification: only what changed is compiled again.
add_custom_command(
  OUTPUT ${installed_headers} ${include_dir}/DhcpLib/Config.h ${include_dir}/DhcpLib/Version.h
  DEPENDS ${headers} ${generated_headers} ${PROJECT_SOURCE_DIR}/cmake/Install.cmake
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${include_dir}
  COMMAND sh -c "\"$0\" --install . --component Headers --prefix \"$1\" >/dev/null" ${CMAKE_COMMAND} ${DHCPLIB_INSTALLED}
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
  COMMENT "Installing the headers in the build folder"
  VERBATIM)
add_custom_target(InstalledHeaders DEPENDS ${installed_headers})

foreach(library DhcpPlatform DhcpLib)
  add_library(Installed${library} INTERFACE)
  add_dependencies(Installed${library} InstalledHeaders)
  target_include_directories(Installed${library} INTERFACE ${include_dir} ${include_dir}/DhcpPlatform)
  target_link_libraries(Installed${library} INTERFACE $<LINK_ONLY:${library}>)
  add_library(DhcpLib::${library} ALIAS Installed${library})
endforeach()
