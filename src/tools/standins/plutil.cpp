// A stand-in for macOS's plutil, for the forms the generator uses:
//
//   plutil -lint PATH...                   check that each file is a property list
//   plutil -convert xml1 PATH [-o OUT]     rewrite a property list as XML
//
// XML and binary property lists are understood. A file that is no property list
// fails with status 1 and is left untouched.

#include "base/FileIO.h"
#include "tools/PropertyList.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int usageStatus = 2;

int usage() {
    std::fprintf(stderr, "usage: plutil -lint PATH...\n"
                         "       plutil -convert xml1 PATH [-o OUT]\n");
    return usageStatus;
}

// Reads and parses one file, printing why when it fails.
korvane::PlistPtr load(const std::string& path) {
    const auto bytes = korvane::readFileBytes(path);
    if (!bytes) {
        std::printf("%s: file does not exist or is not readable\n", path.c_str());
        return nullptr;
    }
    auto root = korvane::parsePropertyList(*bytes);
    if (!root) {
        std::printf("%s: Property List error: not a valid XML or binary property list\n", path.c_str());
    }
    return root;
}

int lint(const std::vector<std::string>& paths) {
    int status = 0;
    for (const auto& path : paths) {
        if (load(path)) {
            std::printf("%s: OK\n", path.c_str());
        } else {
            status = 1;
        }
    }
    return status;
}

int convert(const std::string& path, const std::string& output) {
    const auto root = load(path);
    if (!root) {
        return 1;
    }
    try {
        korvane::writeFileAtomically(output, korvane::propertyListXML(root.get()));
    } catch (const std::exception& error) {
        std::printf("%s: %s\n", output.c_str(), error.what());
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() >= 2 && args[0] == "-lint") {
        return lint({args.begin() + 1, args.end()});
    }
    if (args.size() == 3 && args[0] == "-convert" && args[1] == "xml1") {
        return convert(args[2], args[2]);
    }
    if (args.size() == 5 && args[0] == "-convert" && args[1] == "xml1" && args[3] == "-o") {
        return convert(args[2], args[4]);
    }
    return usage();
}
