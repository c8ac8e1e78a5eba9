// `korvane scan` over a whole-machine-sized ioreg text, as a user runs it: a
// process of its own, timed from start to exit, with its peak resident
// memory, beside `grep -c '+-o'` over the same file, in one run.
//
//   korvane_registry_scale_bench [KORVANE] [RUNS]
//
// KORVANE defaults to the program beside this one; each figure is the best
// time and the highest peak of RUNS runs (3).

#include "bench/support/WholeMachineDump.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace korvane {
namespace {

struct Figures {
    double seconds = 1e9;
    double peakMiB = 0;
};

// One run of the command with its output dropped; ends the bench when the
// command fails, since its figures would mean nothing.
void runOnce(const std::vector<std::string>& command, Figures& figures) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        // Not /dev/null: grep sees that and stops at the first match. A named
        // file unlinked at once, since not every system has O_TMPFILE.
        char name[] = "/tmp/korvane-scale-bench-XXXXXX";
        const int output = ::mkstemp(name);
        ::unlink(name);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        std::vector<char*> arguments;
        for (const auto& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "%s failed\n", command[0].c_str());
        std::exit(1);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    figures.seconds = std::min(figures.seconds, seconds);
    figures.peakMiB =
        std::max(figures.peakMiB, static_cast<double>(usage.ru_maxrss) * KORVANE_MAXRSS_UNIT / (1 << 20));
}

// Beside the path this bench was started by: /proc/self/exe is Linux's alone.
std::string besideThisProgram(const std::string& self, const char* name) {
    return self.substr(0, self.rfind('/') + 1) + name;
}

} // namespace
} // namespace korvane

int main(int argc, char** argv) {
    using namespace korvane;
    const std::string korvane = argc > 1 ? argv[1] : besideThisProgram(argv[0], "korvane");
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    WholeMachineDump dump;
    // A child's peak starts from what it shares with this process at fork.
    dump.dropText();
    const std::string file = dump.path().string();
    const double fileMiB = static_cast<double>(dump.size()) / (1 << 20);

    const std::vector<std::pair<std::string, std::vector<std::string>>> commands = {
        {"grep -c '+-o'", {"grep", "-c", "+-o", file}},
        {"korvane scan --ioreg", {korvane, "scan", "--ioreg", file}},
        {"korvane scan --registry", {korvane, "scan", "--registry", file}},
    };
    std::vector<Figures> figures(commands.size());
    for (int run = 0; run < runs; ++run) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            runOnce(commands[i].second, figures[i]);
        }
    }
    std::printf("%.1f MiB ioreg text, best time and highest peak of %d runs\n", fileMiB, runs);
    std::printf("%-26s %9s %8s %10s %7s\n", "", "time", "x grep", "peak", "x file");
    for (std::size_t i = 0; i < commands.size(); ++i) {
        std::printf("%-26s %7.3f s %7.1fx %6.0f MiB %6.2fx\n", commands[i].first.c_str(), figures[i].seconds,
                    figures[i].seconds / figures[0].seconds, figures[i].peakMiB,
                    figures[i].peakMiB / fileMiB);
    }
    return 0;
}
