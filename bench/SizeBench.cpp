#include "SizeBench.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>

#include "BlockingSocket.h"
#include "common/Deadline.h"
#include "Settings.h"
#include "SizePeer.h"

namespace {

constexpr unsigned int timeoutMs = 10000;
constexpr unsigned int readyMs = 15000;

void require(bool succeeded, const char* what) {
    if (!succeeded) throw std::runtime_error(std::string(what) + " failed");
}

/// Tries again and again for a while.
template <class Condition>
void await(Condition holds, const char* what) {
    const auto deadline = common::Deadline::after(common::now(), readyMs);
    while (!holds()) require(!deadline.hasPassed(), what);
}

}  // namespace

SizeFloor::SizeFloor()
    : port_(freePort()),
      peer_("qor-bench.exe", "--raw-size-peer " + std::to_string(port_)),
      socket_(connectTo(port_)),
      moved_(sizepeer::bytes),
      values_(sizepeer::doubles) {}

SizeFloor::~SizeFloor() {
    closesocket(socket_);
}

void SizeFloor::read() {
    require(sendWhole(socket_, &sizepeer::give, 1), "the raw peer's send");
    require(receiveWhole(socket_, moved_.data(), sizepeer::bytes), "the raw peer's receive");
    std::memcpy(values_.data(), moved_.data(), sizepeer::bytes);
}

void SizeFloor::write() {
    char taken = 0;
    std::memcpy(moved_.data(), values_.data(), sizepeer::bytes);
    require(sendWhole(socket_, &sizepeer::take, 1), "the raw peer's send");
    require(sendWhole(socket_, moved_.data(), sizepeer::bytes), "the raw peer's send");
    require(receiveWhole(socket_, &taken, 1), "the raw peer's receive");
}

SizeBench::SizeBench()
    : port_(freePort()),
      settingsPath_(writeSettings(port_, "size")),
      peer_("qor-bench.exe", "--size-peer " + std::to_string(port_)),
      facade_(std::make_unique<QorControlFacade>(settingsPath_, nullptr, 0,
                                                 programFolder() + "qor-bench.exe")) {
    await([&] { return facade_->pingQor(timeoutMs); }, "the first ping");
    QorControlFacade::EcuConnect settings = {};
    settings.protocol = 1;
    require(facade_->connect(settings, QorControlFacade::EcuConnect::Default, nullptr), "connect");
    await([&] { return facade_->isEcuOnline(); }, "the connect");
    for (int number = 0; number < sizepeer::parameters; ++number) {
        wex::ParamDescription description;
        require(facade_->getParamDescription(sizepeer::parameter(number), description),
                "a description");
    }
}

SizeBench::~SizeBench() {
    facade_.reset();
    DeleteFileA(settingsPath_.c_str());
}

void SizeBench::read(int number) {
    require(facade_->getParamData(sizepeer::parameter(number), values_, timeoutMs), "getParamData");
    require(values_.size() == sizepeer::doubles, "a whole getParamData");
}

void SizeBench::write() {
    values_.resize(sizepeer::doubles);
    require(facade_->setParamData(sizepeer::parameter(0), values_, {}, {}, timeoutMs),
            "setParamData");
}

void SizeBench::letGo() {
    std::vector<double>().swap(values_);
}
