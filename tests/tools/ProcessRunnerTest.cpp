#include "tools/ProcessRunner.h"

#include "records/CollectorError.h"
#include "support/TempFolder.h"

#include <chrono>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace korvane {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;

const std::string shell = "/bin/sh";

std::string sh(const std::string& script, double timeout = 30) {
    return runProcess(shell, {"-c", script}, std::nullopt, timeout);
}

// The failure a call ends in, as its description.
std::string failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const CollectorError& error) {
        return error.description();
    }
    ADD_FAILURE() << "expected a CollectorError";
    return {};
}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

int openDescriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

// This process's children as "pid state" words, from /proc.
std::vector<std::string> childProcesses() {
    std::vector<std::string> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        if (!std::getline(stat, line)) {
            continue;
        }
        // pid (comm) state ppid ...: comm may hold blanks, so read after the last ')'.
        std::istringstream rest(line.substr(line.rfind(')') + 1));
        std::string state;
        pid_t parent = 0;
        rest >> state >> parent;
        if (parent == getpid()) {
            children.push_back(entry.path().filename().string() + " " + state);
        }
    }
    return children;
}

void waitUntilNoChildren(double seconds) {
    const auto start = Clock::now();
    while (!childProcesses().empty() && secondsSince(start) < seconds) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

TEST(ProcessRunnerTest, OutputOfBothStreamsArrivesWholeAndInOrder) {
    // Far more than a pipe holds, alternating streams: the call must drain
    // while the tool runs or both would stall.
    const int lines = 40000;
    const auto output = sh("i=0; while [ $i -lt " + std::to_string(lines) +
                           " ]; do echo \"out $i\"; echo \"err $i\" >&2; i=$((i+1)); done");
    std::string expected;
    for (int i = 0; i < lines; ++i) {
        expected += "out " + std::to_string(i) + "\nerr " + std::to_string(i) + "\n";
    }
    EXPECT_GT(expected.size(), 512u * 1024u);
    EXPECT_EQ(output, expected);
}

TEST(ProcessRunnerTest, QuietSuccessGivesEmptyText) {
    EXPECT_EQ(sh("exit 0"), "");
}

TEST(ProcessRunnerTest, TrailingLineFeedIsKept) {
    EXPECT_EQ(sh("echo hello"), "hello\n");
}

TEST(ProcessRunnerTest, InvalidUTF8GivesEmptyTextNotAFailure) {
    EXPECT_EQ(sh("printf 'a\\325b'"), "");
}

TEST(ProcessRunnerTest, NonZeroStatusFailsWithPathArgsAndOutput) {
    EXPECT_EQ(failureOf([] { sh("printf x; exit 1"); }), "Command failed: /bin/sh -c printf x; exit 1\nx");
}

TEST(ProcessRunnerTest, InvalidUTF8InAFailureLeavesTheOutputEmpty) {
    EXPECT_EQ(failureOf([] { sh("printf '\\377'; exit 3"); }),
              "Command failed: /bin/sh -c printf '\\377'; exit 3\n");
}

TEST(ProcessRunnerTest, EmptyArgumentsStillHaveTheBlankAfterThePath) {
    EXPECT_EQ(failureOf([] { runProcess("/bin/false", {}, std::nullopt, 10); }),
              "Command failed: /bin/false \n");
    EXPECT_EQ(runProcessCapturing("/nonexistent/tool", {}, 10),
              "Failure/timeout while running /nonexistent/tool ");
}

TEST(ProcessRunnerTest, DeathBySignalIsAFailure) {
    EXPECT_THAT(failureOf([] { sh("echo before; kill -KILL $$"); }),
                StartsWith("Command failed: /bin/sh -c "));
}

TEST(ProcessRunnerTest, LaunchFailureIsThePlatformsOwnError) {
    TempFolder folder;
    const auto notExecutable = folder.path() / "script";
    std::ofstream(notExecutable) << "#!/bin/sh\necho hi\n";

    struct Case {
        std::string path;
        std::optional<std::filesystem::path> directory;
        std::errc code;
        const char* words;
    };
    const Case cases[] = {
        {"/nonexistent/tool", std::nullopt, std::errc::no_such_file_or_directory,
         "No such file or directory"},
        {notExecutable.string(), std::nullopt, std::errc::permission_denied, "Permission denied"},
        {"/bin/true", folder.path() / "missing", std::errc::no_such_file_or_directory,
         "No such file or directory"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        try {
            runProcess(c.path, {"a", "b"}, c.directory, 10);
            ADD_FAILURE() << "expected a launch failure";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code(), c.code);
            EXPECT_STREQ(error.what(), c.words) << "not wrapped, no prefix";
        }
        if (!c.directory) {
            EXPECT_EQ(runProcessCapturing(c.path, {"a", "b"}, 10),
                      "Failure/timeout while running " + c.path + " a b");
        }
    }
}

TEST(ProcessRunnerTest, RunsInTheGivenFolder) {
    TempFolder folder;
    const auto canonical = std::filesystem::canonical(folder.path()).string();
    EXPECT_EQ(runProcess("/bin/pwd", {}, folder.path(), 10), canonical + "\n");
}

TEST(ProcessRunnerTest, TimeOutKeepsWhatWasPrintedAndTruncatesTheSeconds) {
    const auto start = Clock::now();
    const auto message = failureOf([] { sh("echo started; sleep 30", 1.9); });
    EXPECT_EQ(message, "Timeout after 1s: /bin/sh -c echo started; sleep 30\nstarted\n");
    // The polite request ends the shell at once; no 30-second wait.
    EXPECT_LT(secondsSince(start), 1.9 + 2.0 + 1.0);
    waitUntilNoChildren(5);
}

TEST(ProcessRunnerTest, AToolThatIgnoresTerminateIsLeftBehindButReaped) {
    const auto start = Clock::now();
    const auto message = failureOf([] { sh("trap '' TERM; echo stubborn; sleep 3", 0.5); });
    const double elapsed = secondsSince(start);
    EXPECT_THAT(message, StartsWith("Timeout after 0s: /bin/sh -c trap '' TERM"));
    EXPECT_THAT(message, EndsWith("\nstubborn\n"));
    EXPECT_GE(elapsed, 0.5 + 2.0 - 0.1) << "the grace period is waited out";
    EXPECT_LT(elapsed, 0.5 + 2.0 + 1.5) << "and nothing more";

    // Still running now; once it ends it must not stay a zombie.
    waitUntilNoChildren(10);
    EXPECT_THAT(childProcesses(), testing::IsEmpty());
}

TEST(ProcessRunnerTest, AGrandchildHoldingThePipeDoesNotHoldTheCall) {
    const auto start = Clock::now();
    EXPECT_EQ(sh("(sleep 20) & echo done"), "done\n");
    EXPECT_LT(secondsSince(start), 10);
}

TEST(ProcessRunnerTest, NoDescriptorOrZombieOutlivesCalls) {
    const int before = openDescriptors();
    sh("echo ok");
    failureOf([] { sh("exit 2"); });
    failureOf([] { sh("sleep 10", 0.2); });
    runProcessCapturing("/nonexistent", {}, 1);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_THAT(childProcesses(), testing::IsEmpty());
}

TEST(ProcessRunnerTest, ParallelCallsKeepTheirOwnOutput) {
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&results, i] {
            results[i] =
                sh("i=0; while [ $i -lt 2000 ]; do echo " + std::to_string(i) + "; i=$((i+1)); done");
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < 4; ++i) {
        std::string expected;
        for (int line = 0; line < 2000; ++line) {
            expected += std::to_string(i) + "\n";
        }
        EXPECT_EQ(results[i], expected);
    }
}

} // namespace
} // namespace korvane
