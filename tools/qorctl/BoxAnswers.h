#pragma once

#include <string>
#include <vector>

namespace qorctl {

/// What QOR's message boxes are to be answered with: words as "yes,ok", of which a box gets the
/// first that it has a button for, or its default button if it has none of them.
class BoxAnswers {
public:
    BoxAnswers() = default;
    /// Throws std::invalid_argument for a word that is no button.
    explicit BoxAnswers(const std::string& words);

    /// Whether boxes are answered at all.
    bool areGiven() const { return !choices_.empty(); }

    /// The system's number of the button, for a box of this style.
    unsigned int choiceFor(unsigned int type) const;

private:
    std::vector<unsigned int> choices_;
};

/// What is wrong with such words; empty if nothing is.
std::string whyNoAnswers(const std::string& words);

/// "yes", "ok" ... for the system's number of a button.
std::string buttonName(unsigned int choice);

/// "yes/no/cancel": the buttons of a box of this style.
std::string buttonNames(unsigned int type);

}  // namespace qorctl
