#include "SizeBench.h"

#include <cstring>

#include "BlockingSocket.h"
#include "Require.h"
#include "SizePeer.h"

namespace {

constexpr unsigned int timeoutMs = 10000;

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

SizeBench::SizeBench() : peer_(Transport::tcp, 0, "size", "--size-peer") {
    for (int number = 0; number < sizepeer::parameters; ++number) {
        wex::ParamDescription description;
        require(peer_.facade().getParamDescription(sizepeer::parameter(number), description),
                "a description");
    }
}

void SizeBench::read(int number) {
    require(peer_.facade().getParamData(sizepeer::parameter(number), values_, timeoutMs),
            "getParamData");
    require(values_.size() == sizepeer::doubles, "a whole getParamData");
}

void SizeBench::write() {
    values_.resize(sizepeer::doubles);
    require(peer_.facade().setParamData(sizepeer::parameter(0), values_, {}, {}, timeoutMs),
            "setParamData");
}

void SizeBench::letGo() {
    std::vector<double>().swap(values_);
}
