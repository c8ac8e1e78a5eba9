#include "tools/ProcessRunner.h"

#include "support/Failure.h"
#include "support/TempFolder.h"

#include <chrono>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <sstream>
#include <sys/wait.h>
#include <system_error>
#include <thread>

namespace korvane {
namespace {

using Clock = std::chrono::steady_clock;

std::string sh(const std::string& script, double timeout = 30) {
    return runProcess("/bin/sh", {"-c", script}, std::nullopt, timeout);
}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Whether this process has a child, running or ended but not reaped, after
// giving ended ones up to `seconds` to be reaped. Looking reaps nothing.
bool hasChildren(double seconds = 0) {
    const auto start = Clock::now();
    siginfo_t info{};
    while (waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0) {
        if (secondsSince(start) >= seconds) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

TEST(ProcessRunner, OutputOfBothStreamsArrivesWholeAndInOrder) {
    // Far more than a pipe holds, alternating streams: the call must drain
    // while the tool runs or both would stall.
    const int lines = 40000;
    std::string expected;
    for (int i = 0; i < lines; ++i) {
        expected += "out " + std::to_string(i) + "\nerr " + std::to_string(i) + "\n";
    }
    EXPECT_EQ(sh("i=0; while [ $i -lt " + std::to_string(lines) +
                 " ]; do echo \"out $i\"; echo \"err $i\" >&2; i=$((i+1)); done"),
              expected);
    EXPECT_EQ(sh("printf 'a\\325b'"), "") << "invalid UTF-8 is no text at all";
}

// The descriptors a tool started by the runner holds, as it lists them
// itself: ls reads /dev/fd through one more descriptor of its own.
std::vector<int> toolsDescriptors() {
    std::istringstream listing(runProcess("/bin/ls", {"/dev/fd/"}, std::nullopt, 30));
    return {std::istream_iterator<int>(listing), std::istream_iterator<int>()};
}

TEST(ProcessRunner, ToolsStartedSideBySideGetNoneOfEachOthersPipes) {
    // Four threads starting tools at once: a pipe end one of them holds open
    // while another spawns would show up in that other tool's listing. What
    // this process inherited from whoever started it shows up in all of them.
    const std::vector<int> alone = toolsDescriptors();
    std::vector<std::vector<int>> listings(40);
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&listings, t] {
            for (int i = t; i < 40; i += 4) {
                listings[static_cast<std::size_t>(i)] = toolsDescriptors();
            }
        });
    }
    threads.clear(); // joins them
    for (const auto& listing : listings) {
        EXPECT_EQ(listing, alone);
    }
}

TEST(ProcessRunner, AFailingToolThrowsItsPathArgumentsAndOutput) {
    EXPECT_EQ(failureOf([] { sh("printf x; exit 1"); }), "Command failed: /bin/sh -c printf x; exit 1\nx");
    EXPECT_EQ(failureOf([] { runProcess("/bin/false", {}, std::nullopt, 10); }),
              "Command failed: /bin/false \n");
    EXPECT_THAT(failureOf([] { sh("echo before; kill -KILL $$"); }),
                testing::StartsWith("Command failed: /bin/sh -c "));
    EXPECT_EQ(runProcessCapturing("/bin/false", {"a"}, 10), "Failure/timeout while running /bin/false a");
}

TEST(ProcessRunner, ALaunchFailureIsThePlatformsOwnError) {
    TempFolder folder;
    const auto notExecutable = folder.path() / "script";
    std::ofstream(notExecutable) << "#!/bin/sh\necho hi\n";
    const std::tuple<std::string, std::optional<std::filesystem::path>, const char*> rows[] = {
        {"/nonexistent/tool", std::nullopt, "No such file or directory"},
        {notExecutable.string(), std::nullopt, "Permission denied"},
        {"/bin/true", folder.path() / "missing", "No such file or directory"},
    };
    for (const auto& [path, directory, words] : rows) {
        const auto run = [&path = path, &directory = directory] { runProcess(path, {"a"}, directory, 10); };
        EXPECT_THAT(run, testing::ThrowsMessage<std::system_error>(testing::StrEq(words)))
            << path << ": not wrapped, no prefix";
    }
    const auto canonical = std::filesystem::canonical(folder.path()).string();
    EXPECT_EQ(runProcess("/bin/pwd", {}, folder.path(), 10), canonical + "\n");
}

TEST(ProcessRunner, ATimeOutKeepsWhatWasPrintedAndAsksTheToolToStop) {
    const auto start = Clock::now();
    EXPECT_EQ(failureOf([] { sh("echo started; sleep 30", 1.9); }),
              "Timeout after 1s: /bin/sh -c echo started; sleep 30\nstarted\n");
    EXPECT_LT(secondsSince(start), 1.9 + 2.0 + 1.0) << "the polite request ends the shell at once";
}

TEST(ProcessRunner, AToolThatIgnoresTheRequestIsLeftBehindButReaped) {
    const auto start = Clock::now();
    const auto message = failureOf([] { sh("trap '' TERM; echo stubborn; sleep 3", 0.5); });
    const double elapsed = secondsSince(start);
    EXPECT_EQ(message, "Timeout after 0s: /bin/sh -c trap '' TERM; echo stubborn; sleep 3\nstubborn\n");
    EXPECT_GE(elapsed, 0.5 + 2.0 - 0.1) << "the grace period is waited out";
    EXPECT_LT(elapsed, 0.5 + 2.0 + 1.5) << "and nothing more";
    EXPECT_FALSE(hasChildren(10)) << "no zombie once it ends";
}

TEST(ProcessRunner, NoDescriptorZombieOrGrandchildOutlivesOrHoldsACall) {
    auto openDescriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/dev/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto before = openDescriptors();
    const auto start = Clock::now();
    EXPECT_EQ(sh("(sleep 20) & echo done"), "done\n");
    EXPECT_LT(secondsSince(start), 10) << "a grandchild holding the pipe must not hold the call";
    failureOf([] { sh("exit 2"); });
    failureOf([] { sh("sleep 10", 0.2); });
    runProcessCapturing("/nonexistent", {}, 1);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

} // namespace
} // namespace korvane
