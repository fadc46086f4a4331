#pragma once

#include <atomic>
#include <string>

#include "HostObjects.h"
#include "QorControlFacade.h"

/// The examples of the host guide: life, connection, pages, models.
namespace guide {

bool measureOnce(const std::string& settingsPath, const std::string& hostPath, double& speed);
bool awaitQor(const QorControlFacade& qor, const std::atomic<bool>& cancelled);
QorControlFacade::EcuConnect ecuOverKLine();
std::string connectEcu(const QorControlFacade& qor, ConnectWindow& window);
bool connectInBackground(const QorControlFacade& qor, unsigned int patienceMs);
const char* stateOf(const QorControlFacade& qor);
bool isChanged(const QorControlFacade& qor, const std::string& name, bool& changed);
bool openModel(const QorControlFacade& qor, const std::string& model, const std::string& hex);
std::string whyNoModel(const QorControlFacade& qor,
                       const QorControlFacade::ModelDescription& files);
bool openCanBus(const QorControlFacade& qor);
std::string folderOfQor(QorControlFacade& qor);
const std::string& pageName(bool working);
bool shutDown(QorControlFacade& qor);

}  // namespace guide
