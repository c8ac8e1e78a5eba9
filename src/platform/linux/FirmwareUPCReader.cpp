#include "platform/linux/FirmwareUPCReader.h"

#include "base/Text.h"
#include "records/CollectorError.h"
#include "scanner/PropertyReaders.h"
#include "tools/ProcessRunner.h"

#include <algorithm>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace korvane {

namespace {

// A real machine has a DSDT and a few dozen SSDTs.
constexpr std::size_t maxTables = 256;
constexpr std::size_t maxFailureBytes = 160;

struct Table {
    std::filesystem::path path;
    std::string stamp; // name, size and change time
};

// DSDT first, then SSDT, SSDT1, SSDT2, ..., SSDT10 as the kernel numbers them.
std::vector<Table> tablesIn(const std::filesystem::path& directory) {
    std::vector<Table> tables;
    std::error_code error;
    std::filesystem::directory_iterator it(directory, error);
    for (std::size_t seen = 0; !error && it != std::filesystem::directory_iterator() && seen < 4096;
         it.increment(error), ++seen) {
        const std::string name = it->path().filename().string();
        struct stat info {};
        if ((name != "DSDT" && !name.starts_with("SSDT")) || ::stat(it->path().c_str(), &info) != 0) {
            continue;
        }
        std::ostringstream stamp;
        stamp << name << ':' << info.st_size << ':' << info.st_mtim.tv_sec << '.' << info.st_mtim.tv_nsec;
        tables.push_back({it->path(), stamp.str()});
        if (tables.size() == maxTables) {
            break;
        }
    }
    std::sort(tables.begin(), tables.end(), [](const Table& a, const Table& b) {
        const bool aIsDSDT = a.path.filename() == "DSDT";
        const bool bIsDSDT = b.path.filename() == "DSDT";
        if (aIsDSDT != bIsDSDT) {
            return aIsDSDT;
        }
        return localizedStandardLess(a.path.filename().string(), b.path.filename().string());
    });
    return tables;
}

// Opened and read, not just asked of access(): root may open anything, and
// what is no file must count as unreadable for root too.
bool isReadableFile(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return false;
    }
    char byte = 0;
    const bool isReadable = ::read(fd, &byte, 1) >= 0;
    ::close(fd);
    return isReadable;
}

bool isExecutableFile(const std::string& path) {
    struct stat info {};
    return !path.empty() && ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

// The first line of what a failed run printed after runProcess's own first
// line ("Command failed: ..."), which is what acpiexec said about it.
std::string toolMessage(const std::string& description) {
    std::size_t start = description.find('\n');
    while (start != std::string::npos && start + 1 < description.size()) {
        const std::size_t end = description.find('\n', start + 1);
        std::string line = trimmed(description.substr(start + 1, end - start - 1));
        if (!line.empty()) {
            return line.substr(0, maxFailureBytes);
        }
        start = end;
    }
    return {};
}

FirmwareUPCEvaluation run(const std::string& acpiexec, const std::vector<Table>& tables, double timeout) {
    FirmwareUPCEvaluation evaluation;
    evaluation.tableCount = tables.size();
    std::vector<std::string> arguments{"-b", "All _UPC"};
    for (const auto& table : tables) {
        arguments.push_back(table.path.string());
    }
    try {
        evaluation.output = ACPIExecUPCOutput::parse(
            runProcess(acpiexec, arguments, std::nullopt, timeout, ChildInput::none));
    } catch (const std::system_error&) {
        evaluation.isToolMissing = true;
        return evaluation;
    } catch (const CollectorError& error) {
        if (error.description().starts_with("Timeout after")) {
            std::ostringstream failure;
            failure << "acpiexec did not finish within " << timeout << " s";
            evaluation.failure = failure.str();
        } else {
            const std::string message = toolMessage(error.description());
            evaluation.failure = message.empty() ? "acpiexec failed" : "acpiexec failed: " + message;
        }
        return evaluation;
    } catch (...) {
        evaluation.failure = "acpiexec could not be run";
        return evaluation;
    }
    const auto& output = evaluation.output;
    if (!output.loadedTables && output.answers.empty() && output.failures.empty()) {
        evaluation.failure = "acpiexec's output held no results";
    }
    return evaluation;
}

} // namespace

std::shared_ptr<const FirmwareUPCEvaluation> FirmwareUPCReader::evaluate() const {
    const std::vector<Table> tables = tablesIn(tablesDirectory_);
    auto evaluation = std::make_shared<FirmwareUPCEvaluation>();
    if (tables.empty() || tables.front().path.filename() != "DSDT") {
        evaluation->hasNoTables = true;
        return evaluation;
    }
    evaluation->areTablesUnreadable = !isReadableFile(tables.front().path);
    evaluation->isToolMissing = !isExecutableFile(acpiexec_);
    if (evaluation->areTablesUnreadable || evaluation->isToolMissing) {
        return evaluation;
    }

    std::string key = acpiexec_;
    for (const auto& table : tables) {
        key += '\n' + table.stamp;
    }
    const std::lock_guard lock(mutex_);
    if (!cached_ || cachedKey_ != key) {
        cached_ = std::make_shared<const FirmwareUPCEvaluation>(run(acpiexec_, tables, timeout_));
        cachedKey_ = std::move(key);
    }
    return cached_;
}

} // namespace korvane
