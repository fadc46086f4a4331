#include "Parameters.h"

#include <windows.h>

#include "qorcontrol/DirectControl.h"

namespace guide {

// [getParamDescription]
// "Cooling fan on above [degC]".
bool titleOf(const QorControlFacade& qor, const std::string& name, std::string& title) {
    wex::ParamDescription about = {};
    if (!qor.getParamDescription(name, about)) return false;
    title = about.text2 + " [" + about.text4 + "]";
    return true;
}
// [/getParamDescription]

// [getParamData]
bool readNumber(const QorControlFacade& qor, const std::string& name, double& number) {
    std::vector<double> values;
    if (!qor.getParamData(name, values, 1000)) return false;
    if (values.empty()) return false;  // QOR may answer without a value
    number = values.front();
    return true;
}
// [/getParamData]

// [getParamData of a map]
// A map's values come row by row; its axes are the two further arrays. A curve has no third one.
bool readCell(const QorControlFacade& qor, const std::string& map, std::size_t column,
              std::size_t row, double& cell) {
    std::vector<double> values, x, y;
    if (!qor.getParamData(map, values, x, y, 1000)) return false;
    if (column >= x.size() || row >= y.size() || values.size() != x.size() * y.size()) return false;
    cell = values[row * x.size() + column];
    return true;
}
// [/getParamData of a map]

// [getParamDataAsString]
bool readText(const QorControlFacade& qor, const std::string& name, std::string& text) {
    if (!qor.getParamDataAsString(name, text, 1000)) return false;
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    return true;
}
// [/getParamDataAsString]

// [setParamData]
// Writes and reads back what QOR has made of it. getParamData would only return what was written.
bool writeChecked(const QorControlFacade& qor, const std::string& name, double number) {
    if (!qor.setParamData(name, {number}, {}, {}, 1000)) return false;
    std::vector<std::vector<double>> read;
    if (!qor.getParamDataAtOnce({name}, read, 1000)) return false;
    return !read[0].empty() && read[0][0] == number;
}
// [/setParamData]

// [setDynamicData]
bool writeAsText(const QorControlFacade& qor, const std::string& name, const std::string& value) {
    return qor.setDynamicData(name, value, 1000);
}
// [/setDynamicData]

// [startDirectCtrl]
// Moves an actuator and looks at what that does. The guard gives the actuator back whatever
// happens.
bool driveActuator(const QorControlFacade& qor, const std::string& actuator, double position,
                   const std::string& measured, std::vector<double>& values) {
    qorcontrol::DirectControl control(qor, actuator, 1000);
    bool done = control.set(position);
    for (int i = 0; done && i < 5; ++i) {
        Sleep(200);
        std::vector<std::vector<double>> now;
        done = qor.getParamDataAtOnce({measured}, now, 1000) && !now[0].empty();
        if (done) values.push_back(now[0].front());
    }
    return control.giveBack() && done;
}
// [/startDirectCtrl]

// [getParamDataAtOnce]
// One value per name, all of one moment.
bool snapshot(const QorControlFacade& qor, const std::vector<std::string>& names,
              std::vector<double>& firsts) {
    std::vector<std::vector<double>> values;
    if (!qor.getParamDataAtOnce(names, values, 1000)) return false;
    firsts.clear();
    for (const std::vector<double>& array : values) {
        if (array.empty()) return false;
        firsts.push_back(array.front());
    }
    return true;
}
// [/getParamDataAtOnce]

}  // namespace guide
