# Debian packages: libdhcplib1, libdhcplib-common, libdhcplib-dev, dhcptool and dhcprelay, and the debug symbols of the
# binaries in packages of their own. script/package builds them.
set(DHCPLIB_PACKAGE_MAINTAINER "DhcpLib maintainers <maintainers@dhcplib.example>" CACHE STRING
    "Maintainer named in the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${DHCPLIB_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
# With DESTDIR, so that a file with an absolute destination goes to the package and not to this machine.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SOURCE dhcplib)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/platform ${PROJECT_BINARY_DIR}/DhcpLib)

# For PackageFiles.cmake, which runs before the packages are written.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PackageFiles.cmake)
set(CPACK_DHCPLIB_COPYRIGHT ${PROJECT_SOURCE_DIR}/packaging/copyright)
set(CPACK_DHCPLIB_OBJCOPY ${CMAKE_OBJCOPY})
set(CPACK_DHCPLIB_STRIP ${CMAKE_STRIP})
set(CPACK_DHCPLIB_READELF ${CMAKE_READELF})
set(CPACK_DHCPLIB_PACKAGES "")  # "COMPONENT=PACKAGE" of each
set(CPACK_DHCPLIB_BINARIES "")  # the components with files to take the symbols from

# describe_package(COMPONENT NAME SECTION DEPENDS DESCRIPTION): the first line of DESCRIPTION is the title.
macro(describe_package component name section depends description)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  list(APPEND CPACK_DHCPLIB_PACKAGES ${component}=${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}")
endmacro()
# The same for a package with programs or libraries, and another package with their debug symbols.
macro(describe_binary_package component name section depends description)
  describe_package(${component} ${name} ${section} "${depends}" "${description}")
  list(APPEND CPACK_DHCPLIB_BINARIES ${component})
  describe_package(${component}Symbols ${name}-dbgsym debug "${name} (= ${PROJECT_VERSION})"
    "Debug symbols for ${name}\nA debugger finds them by the build-id of the files in ${name}.")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS OFF)
endmacro()

set(library_package libdhcplib${PROJECT_VERSION_MAJOR})
# The same as in the file "shlibs", which dpkg-shlibdeps reads for other packages. It does not find that file while CPack
# builds ours.
set(needs_library "${library_package} (>= ${PROJECT_VERSION})")

describe_binary_package(Library ${library_package} libs "libdhcplib-common (>= ${PROJECT_VERSION})"
  "Reads, checks and rewrites DHCPv4 and DHCPv6 packets
A library for DHCP agents. It turns received frames into typed fields, and
adds or removes relay agent information (option 82). It is written for
hostile input.")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/packaging/shlibs
     CONTENT "libDhcpLib @PROJECT_VERSION_MAJOR@ @needs_library@\nlibDhcpPlatform @PROJECT_VERSION_MAJOR@ @needs_library@\n")
set(scripts ${PROJECT_SOURCE_DIR}/packaging/libdhcplib)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${scripts}/triggers ${scripts}/postinst ${scripts}/postrm
    ${PROJECT_BINARY_DIR}/packaging/shlibs)

# Not in the library's package, so that the packages of two major versions can be installed side by side.
describe_package(Configuration libdhcplib-common libs ""
  "Feature toggles of DhcpLib
The file /etc/dhcplib/DhcpLib.json turns features of the library on and off
in all programs that use it.")
set(CPACK_DEBIAN_CONFIGURATION_PACKAGE_ARCHITECTURE all)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/packaging/conffiles CONTENT "@DHCPLIB_FULL_CONFIG_DIR@/DhcpLib.json\n")
set(CPACK_DEBIAN_CONFIGURATION_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/conffiles)

describe_package(Development libdhcplib-dev libdevel "${library_package} (= ${PROJECT_VERSION})"
  "Headers to build programs that use DhcpLib
The headers of the C++20 library, and what CMake and pkg-config need to
find it.")
list(APPEND CPACK_COMPONENTS_ALL Headers)
set(CPACK_COMPONENT_HEADERS_GROUP Development)
set(CPACK_COMPONENT_DEVELOPMENT_GROUP Development)

if(TARGET dhcptool)
  describe_binary_package(dhcptool dhcptool net "${needs_library}"
    "Prints DHCPv4 and DHCPv6 messages and what goes wrong between them
It reads captures or live traffic, follows the exchanges of each client,
counts, queries leases, and rewrites captures as a relay agent does.")
endif()

if(TARGET dhcprelay)
  describe_binary_package(dhcprelay dhcprelay net "${needs_library}"
    "Relay agent for DHCPv4 and DHCPv6
It relays between clients on links and VLANs of this host and servers
elsewhere, with a trust policy, limits and counters. The installation does
not enable the systemd unit: write /etc/dhcprelay.json first.")
  set(scripts ${PROJECT_SOURCE_DIR}/packaging/dhcprelay)
  set(CPACK_DEBIAN_DHCPRELAY_PACKAGE_CONTROL_EXTRA ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
endif()

include(CPack)
