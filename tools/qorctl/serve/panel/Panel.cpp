#include "serve/panel/Panel.h"

#include <cctype>

#include "watch/plot/BuiltIn.h"
#include "watch/plot/PlotPage.h"

namespace qorctl::serve {
namespace {

const std::string plot = "plot.";  // what draws plots belongs to the page of a watch, too

/// "rpc.js" is built in as PANEL_RPCJS. (With a sign between the words, names of which one begins
/// like another would be sorted in one way by the resource compiler and looked up in another.)
std::string builtInNameOf(const std::string& part) {
    const bool isPlot = part.rfind(plot, 0) == 0;
    std::string name = isPlot ? "PLOT_" : "PANEL_";
    for (const char character : isPlot ? part.substr(plot.size()) : part)
        if (character != '.') name += static_cast<char>(std::toupper(character));
    return name;
}

std::string partOf(const std::string& name) {
    return builtInFile(builtInNameOf(name).c_str());
}

}  // namespace

std::string panelPage() {
    return filledIn(partOf("panel.html"), partOf);
}

}  // namespace qorctl::serve
