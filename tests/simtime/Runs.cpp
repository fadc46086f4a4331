#include "Runs.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace simtime {
namespace {

constexpr double msPerDay = 86400000;

void write(std::ostream& out, const Report& report) {
    out << report.simulatedMs << ' ' << report.calls << ' ' << report.failedCalls << ' '
        << report.faults << ' ' << report.takenForNext << ' ' << report.certain << ' '
        << report.doubtful << ' ' << report.marked << ' ' << report.episodes << ' '
        << report.restarts << ' ' << report.isMemoryJudged << ' ' << report.wraps << ' '
        << report.wrapsUnderCalls << ' ' << report.hash << ' ' << report.findingCount << '\n';
    for (const std::string& finding : report.findings) out << finding << '\n';
}

/// False unless all of it is there.
bool read(std::istream& in, Report& report) {
    std::string line;
    if (!(in >> report.simulatedMs >> report.calls >> report.failedCalls >> report.faults >>
          report.takenForNext >> report.certain >> report.doubtful >> report.marked >>
          report.episodes >> report.restarts >> report.isMemoryJudged >> report.wraps >>
          report.wrapsUnderCalls >> report.hash >> report.findingCount))
        return false;
    std::getline(in, line);
    while (std::getline(in, line)) report.findings.push_back(line);
    return true;
}

[[noreturn]] void runHere(const Wish& wish, int pipe) {
    // What the library keeps to the very end of the process still needs the machine then.
    static Station* const station = new Station(wish);
    std::ostringstream out;
    write(out, station->run());
    const std::string text = out.str();
    const bool isWritten =
        ::write(pipe, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    std::exit(isWritten ? 0 : 1);  // with the destructors and what looks for leaks
}

std::string readAll(int pipe) {
    std::string text;
    char piece[4096];
    for (ssize_t got = 0; (got = ::read(pipe, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<std::size_t>(got));
    return text;
}

}  // namespace

Report runApart(const Wish& wish) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) runHere(wish, ends[1]);
    close(ends[1]);
    std::istringstream in(readAll(ends[0]));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    Report report;
    const bool isRead = read(in, report);
    if (isRead && status == 0) return report;
    ++report.findingCount;
    report.findings.push_back("the process ended with status " + std::to_string(status));
    return report;
}

void print(const Wish& wish, const Report& report, double seconds) {
    std::printf("seed %" PRIu64 ": %.2f days, %" PRIu64 " calls (%" PRIu64 " failed), %" PRIu64
                " faults, %" PRIu64 " copies taken for the next answer, answers: %" PRIu64
                " certain, %" PRIu64 " doubtful, %" PRIu64 " marked, %" PRIu64 " episodes, %" PRIu64
                " restarts of the host, %u wraps (%u calls across one), %.2f s, factor %.0f, hash "
                "%016" PRIx64 ", %" PRIu64 " findings\n",
                wish.seed, static_cast<double>(report.simulatedMs) / msPerDay, report.calls,
                report.failedCalls, report.faults, report.takenForNext, report.certain,
                report.doubtful, report.marked, report.episodes, report.restarts, report.wraps,
                report.wrapsUnderCalls, seconds,
                static_cast<double>(report.simulatedMs) / 1000 / (seconds > 0 ? seconds : 1),
                report.hash, report.findingCount);
    for (const std::string& finding : report.findings) std::printf("  %s\n", finding.c_str());
    std::fflush(stdout);
}

}  // namespace simtime
