#pragma once

#include <string>
#include <vector>

#include "QorControlFacade.h"

/// The examples of the host guide: parameters.
namespace guide {

bool titleOf(const QorControlFacade& qor, const std::string& name, std::string& title);
bool readNumber(const QorControlFacade& qor, const std::string& name, double& number);
bool readCell(const QorControlFacade& qor, const std::string& map, std::size_t column,
              std::size_t row, double& cell);
bool readText(const QorControlFacade& qor, const std::string& name, std::string& text);
bool writeChecked(const QorControlFacade& qor, const std::string& name, double number);
bool writeAsText(const QorControlFacade& qor, const std::string& name, const std::string& value);
bool driveActuator(const QorControlFacade& qor, const std::string& actuator, double position,
                   const std::string& measured, std::vector<double>& values);
bool snapshot(const QorControlFacade& qor, const std::vector<std::string>& names,
              std::vector<double>& firsts);

}  // namespace guide
