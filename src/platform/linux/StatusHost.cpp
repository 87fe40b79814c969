#include "platform/linux/StatusHost.h"

namespace tidewell {
namespace {

/// For panels that pick the best of several pictures. The others take the one with the largest area.
const std::vector<int> everyHeight{16, 22, 24, 32, 48};

}  // namespace

StatusHost statusHost(std::string_view processName)
{
    if (processName == "waybar")
        return {.shape = StatusIconShape::wide};
    if (processName == "gnome-shell" || processName.starts_with("ayatana-indicat"))
        return {.shape = StatusIconShape::dot, .iconFile = true};
    if (processName == "lxqt-panel")
        return {.heights = everyHeight};
    // These read the tooltip as HTML, where a line break is no break.
    if (processName.starts_with("kded") || processName == "plasmashell")
        return {.heights = everyHeight, .lineBreak = "<br/>"};
    return {};
}

StatusHost withShape(StatusHost host, StatusIconShape shape)
{
    host.shape = shape;
    host.iconFile = host.iconFile && shape == StatusIconShape::dot;
    return host;
}

}  // namespace tidewell
