#include "ZeroMq.h"

#include <zmq.h>

#include <array>
#include <stdexcept>

#include "EchoPeer.h"

namespace {

constexpr int answerMs = 10000;  // far beyond a round trip: who waits so long, waits in vain

void check(bool isFine) {
    if (!isFine) throw std::runtime_error(std::string("ZeroMQ: ") + zmq_strerror(zmq_errno()));
}

void reply(const Server::Tell& tell) {
    void* const socket = zmq_socket(zmq_ctx_new(), ZMQ_REP);
    check(zmq_bind(socket, "tcp://127.0.0.1:*") == 0);
    std::array<char, 256> place;
    std::size_t length = place.size();
    check(zmq_getsockopt(socket, ZMQ_LAST_ENDPOINT, place.data(), &length) == 0);
    tell(place.data());
    char bytes[echoBytes];
    for (;;) {
        check(zmq_recv(socket, bytes, sizeof bytes, 0) == echoBytes);
        check(zmq_send(socket, bytes, sizeof bytes, 0) == echoBytes);
    }
}

}  // namespace

ZeroMq::ZeroMq()
    : server_(reply),
      context_(zmq_ctx_new(), zmq_ctx_term),
      socket_(zmq_socket(context_.get(), ZMQ_REQ), zmq_close) {
    const int lingerMs = 0;  // nothing is left to be sent when this ends
    check(zmq_setsockopt(socket_.get(), ZMQ_LINGER, &lingerMs, sizeof lingerMs) == 0);
    check(zmq_setsockopt(socket_.get(), ZMQ_RCVTIMEO, &answerMs, sizeof answerMs) == 0);
    check(zmq_connect(socket_.get(), server_.place().c_str()) == 0);
}

void ZeroMq::roundTrip() {
    char bytes[echoBytes] = {};
    check(zmq_send(socket_.get(), bytes, sizeof bytes, 0) == echoBytes);
    check(zmq_recv(socket_.get(), bytes, sizeof bytes, 0) == echoBytes);
}
