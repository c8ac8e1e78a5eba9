#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// Starts a tool, waits for it under a time-out and captures its standard output
// and standard error together, in the order it wrote them.
//
// Returns the whole output as strict UTF-8 ("" when it is not valid UTF-8).
// Throws:
//   - std::system_error with the platform's own wording when the tool can't be
//     started (missing file, no permission, a working folder that isn't there);
//   - CollectorError::operationFailed("Timeout after {n}s: {path} {args}\n{output}")
//     when it runs past `timeout` seconds. It is then asked to stop (SIGTERM)
//     and given at most 2 more seconds; nothing stronger is sent, and a tool
//     that ignores the request is left running (and reaped when it ends);
//   - CollectorError::operationFailed("Command failed: {path} {args}\n{output}")
//     on a non-zero exit status or a death by signal.
// Blocks the calling thread: never call it from the main thread. The child
// inherits the environment and standard input, or reads /dev/null when
// `input` says so: a tool that puts a terminal on its input into raw mode
// (acpiexec does) would otherwise leave the user's terminal without echo
// when its time-out stops it. No descriptor or zombie outlives the call.
enum class ChildInput { inherited, none };
std::string runProcess(const std::string& path, const std::vector<std::string>& args,
                       const std::optional<std::filesystem::path>& currentDirectory, double timeout,
                       ChildInput input = ChildInput::inherited);

// runProcess for a run the user reads the errors of: a tool that can't be
// started is told by its path, "cannot start {path}: {platform's words}", as
// a CollectorError; every other failure is runProcess's own.
std::string runTool(const std::string& path, const std::vector<std::string>& args,
                    const std::optional<std::filesystem::path>& currentDirectory, double timeout);

// runProcess without a working folder that never throws: any failure gives
// "Failure/timeout while running {path} {args}", and the leading "Failure/"
// is how a caller tells it from data.
std::string runProcessCapturing(const std::string& path, const std::vector<std::string>& args,
                                double timeout);

} // namespace korvane
