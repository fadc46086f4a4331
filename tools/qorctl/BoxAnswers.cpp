#include "BoxAnswers.h"

#include <windows.h>

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace qorctl {
namespace {

/// The system's numbers of buttons begin with 1; 8 and 9 (close, help) end no box.
const char* const names[] = {"ok", "cancel", "abort", "retry", "ignore",  "yes",
                             "no", "",       "",      "again", "continue"};

/// The buttons of each kind of box, from the left.
const std::vector<unsigned int> buttonsOfKind[] = {
    {IDOK},        {IDOK, IDCANCEL},    {IDABORT, IDRETRY, IDIGNORE},      {IDYES, IDNO, IDCANCEL},
    {IDYES, IDNO}, {IDRETRY, IDCANCEL}, {IDCANCEL, IDTRYAGAIN, IDCONTINUE}};

const std::vector<unsigned int>& buttonsOf(unsigned int type) {
    const std::size_t kind = type & MB_TYPEMASK;
    return buttonsOfKind[kind < std::size(buttonsOfKind) ? kind : 0];
}

unsigned int choiceOf(const std::string& word) {
    for (std::size_t i = 0; i < std::size(names); ++i)
        if (!word.empty() && _stricmp(word.c_str(), names[i]) == 0)
            return static_cast<unsigned int>(i) + 1;
    throw std::invalid_argument(
        fmt::format("\"{}\" is no button: ok, cancel, abort, retry, ignore, yes, no, again or "
                    "continue, or some of them with commas",
                    word));
}

}  // namespace

BoxAnswers::BoxAnswers(const std::string& words) {
    std::istringstream rest(words + ",");
    for (std::string word; std::getline(rest, word, ',');) choices_.push_back(choiceOf(word));
}

unsigned int BoxAnswers::choiceFor(unsigned int type) const {
    const std::vector<unsigned int>& buttons = buttonsOf(type);
    for (const unsigned int choice : choices_)
        if (std::find(buttons.begin(), buttons.end(), choice) != buttons.end()) return choice;
    const std::size_t preset = (type & MB_DEFMASK) / MB_DEFBUTTON2;
    return buttons[preset < buttons.size() ? preset : 0];
}

std::string whyNoAnswers(const std::string& words) {
    try {
        static_cast<void>(BoxAnswers(words));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return {};
}

std::string buttonName(unsigned int choice) {
    const bool isKnown = choice >= 1 && choice <= std::size(names) && *names[choice - 1] != '\0';
    return isKnown ? names[choice - 1] : fmt::format("button {}", choice);
}

std::string buttonNames(unsigned int type) {
    std::string text;
    for (const unsigned int button : buttonsOf(type))
        text += (text.empty() ? "" : "/") + buttonName(button);
    return text;
}

}  // namespace qorctl
