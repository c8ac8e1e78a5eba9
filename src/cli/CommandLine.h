#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace korvane {

// `korvane` as a whole: `arguments` as the process got them (the program's
// name first), the results written to `out` and the log and every note to
// `err`. Returns the exit status: 2, after one line on `err`, for a mistyped
// command or option, a stray argument or a bad value. The program's main()
// passes its own streams; tests pass buffers.
int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);
// The same with `in` as standard input, which `korvane map` reads.
int runCommandLine(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
                   std::ostream& err);

} // namespace korvane
