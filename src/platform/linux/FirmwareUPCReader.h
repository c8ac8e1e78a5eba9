#pragma once

#include "platform/linux/ACPIExecUPCOutput.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

namespace korvane {

// One evaluation of every _UPC object in the machine's ACPI tables, or why
// there is none.
struct FirmwareUPCEvaluation {
    bool hasNoTables = false;         // no DSDT: a machine without ACPI
    bool areTablesUnreadable = false; // the kernel makes them readable by root only
    bool isToolMissing = false;       // acpiexec isn't installed or won't start
    std::string failure;              // acpiexec ran and failed: "did not finish within 10 s"
    std::size_t tableCount = 0;
    ACPIExecUPCOutput output;
};

// Evaluates the _UPC objects of the firmware's tables (DSDT and every SSDT*
// of <sysfs root>/firmware/acpi/tables) with ACPICA's acpiexec, in one run
// for all ports of the machine: `acpiexec -b "All _UPC" DSDT SSDT1 ...`.
// "All" rather than one "Evaluate PATH" per port, because acpiexec refuses a
// batch line of more than 1023 characters, which a machine with two
// controllers already passes.
//
// A run costs about a second whatever the tables (acpiexec waits for its
// debugger thread to time out before it exits), so its result is kept for
// the reader's life and handed out again while the tables' names, sizes and
// times stay as they were.
class FirmwareUPCReader {
  public:
    static constexpr double defaultTimeout = 10; // seconds

    FirmwareUPCReader(std::filesystem::path tablesDirectory, std::string acpiexec,
                      double timeout = defaultTimeout)
        : tablesDirectory_(std::move(tablesDirectory)), acpiexec_(std::move(acpiexec)), timeout_(timeout) {}

    // Never throws; blocks while acpiexec runs, so never on the main thread.
    // Safe to call from several threads: a second caller waits for the run.
    std::shared_ptr<const FirmwareUPCEvaluation> evaluate() const;

  private:
    std::filesystem::path tablesDirectory_;
    std::string acpiexec_;
    double timeout_;

    mutable std::mutex mutex_;
    mutable std::string cachedKey_;
    mutable std::shared_ptr<const FirmwareUPCEvaluation> cached_;
};

} // namespace korvane
