#include "VersionText.h"

#include "DhcpLib/Config.h"
#include "DhcpLib/Version.h"

namespace Cli {

std::string versionText(std::string_view program) {
    return std::string(program) + ' ' + DhcpLib::version + "\nbuild " DHCPLIB_BUILD_TEXT "\nenterprise number " +
           std::to_string(DhcpLib::enterpriseNumber);
}

}  // namespace Cli
