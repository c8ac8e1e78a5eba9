#pragma once

#include <string>

namespace korvane {

// Where each external tool is. The program's composition root fills it in for
// the platform (tests with their own); callers take paths from here and never
// spell a tool's path themselves.
struct ToolPaths {
    std::string ditto;
    std::string plutil;
    std::string sysctl;
    // ACPICA's AML evaluator, for the firmware's connector types on Linux.
    std::string acpiexec{};
};

} // namespace korvane
