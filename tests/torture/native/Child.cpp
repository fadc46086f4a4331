#include "Child.h"

#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace torture {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string contentsOf(std::FILE* file) {
    std::string text;
    std::rewind(file);
    char piece[4096];
    while (const std::size_t length = std::fread(piece, 1, sizeof piece, file))
        text.append(piece, length);
    return text;
}

/// False if it has not ended in time; it is ended then.
bool await(pid_t child, unsigned int withinMs, int& status) {
    for (unsigned int waitedMs = 0; waitedMs < withinMs; ++waitedMs) {
        if (waitpid(child, &status, WNOHANG) == child) return true;
        usleep(1000);
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return false;
}

}  // namespace

Ended runInChild(const std::function<int()>& body, unsigned int withinMs) {
    const File output(std::tmpfile());
    if (!output) throw std::runtime_error("no temporary file");
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) {
        dup2(fileno(output.get()), STDOUT_FILENO);
        dup2(fileno(output.get()), STDERR_FILENO);
        const int code = body();
        std::fflush(nullptr);
        _exit(code);
    }
    int status = 0;
    Ended ended;
    if (!await(child, withinMs, status))
        ended.how = "hangs\n";
    else if (WIFSIGNALED(status))
        ended.how = "ended by signal " + std::to_string(WTERMSIG(status)) + "\n";
    else
        ended.inOrder = WEXITSTATUS(status) == 0;
    if (!ended.inOrder) ended.how += contentsOf(output.get());
    return ended;
}

}  // namespace torture
