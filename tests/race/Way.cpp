#include "Way.h"

#include "Desktop.h"
#include "LinkEnd.h"
#include "WindowEnd.h"

void PrintTo(Way way, std::ostream* out) {
    *out << (way == Way::tcp ? "tcp" : way == Way::windows ? "windows" : "interruptedWindows");
}

std::string settingsFor(Way way, const std::string& name) {
    return way == Way::tcp ? name + ":" + std::to_string(qorPort) : name;
}

std::unique_ptr<QorEnd> makeEnd(Way way, const std::string& name) {
    const std::string settings = settingsFor(way, name);
    if (way == Way::tcp) return std::make_unique<LinkEnd>(settings, LinkEnd::Pieces::cut);
    desktop::letSendsBeInterrupted(way == Way::interruptedWindows);
    return std::make_unique<WindowEnd>(settings);
}
