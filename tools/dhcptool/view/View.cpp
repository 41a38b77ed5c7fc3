#include "view/View.h"

#include "view/JsonView.h"
#include "view/LineView.h"
#include "view/QuickView.h"
#include "view/VerboseView.h"

namespace DhcpTool {

std::unique_ptr<View> makeView(const ViewSettings& settings) {
    switch (settings.kind) {
        case ViewKind::quick:
            return std::make_unique<QuickView>(settings);
        case ViewKind::verbose:
            return std::make_unique<VerboseView>(settings);
        case ViewKind::json:
            return std::make_unique<JsonView>(settings);
        case ViewKind::line:
            break;
    }
    return std::make_unique<LineView>(settings);
}

}  // namespace DhcpTool
