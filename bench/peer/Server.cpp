#include "Server.h"

#include <fmt/core.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace {

[[noreturn]] void beServer(const std::function<void(const Server::Tell&)>& serve, pid_t parent,
                           int pipeEnd) {
    // Nobody is left behind, whatever becomes of the parent; it may have ended already.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    try {
        serve([pipeEnd](const std::string& place) {
            if (write(pipeEnd, place.data(), place.size()) != static_cast<ssize_t>(place.size()))
                throw std::runtime_error("nobody wants to know where it is");
            close(pipeEnd);
        });
    } catch (const std::exception& error) {
        fmt::print(stderr, "qor-bench-peer, the server: {}\n", error.what());
    }
    _exit(1);
}

std::string readToEnd(int pipeEnd) {
    std::string text;
    std::array<char, 256> piece;
    for (ssize_t got = 1; got > 0;) {
        got = read(pipeEnd, piece.data(), piece.size());
        if (got > 0) text.append(piece.data(), static_cast<std::size_t>(got));
    }
    return text;
}

}  // namespace

Server::Server(const std::function<void(const Tell&)>& serve) {
    std::array<int, 2> ends;
    if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe can be made");
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        beServer(serve, parent, ends[1]);
    }
    close(ends[1]);
    if (process_ > 0) place_ = readToEnd(ends[0]);
    close(ends[0]);
    if (process_ < 0) throw std::runtime_error("no process can be made");
}

Server::~Server() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}
