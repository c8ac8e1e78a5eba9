#include "cli/CommandLine.h"

#include <iostream>

int main(int argc, char** argv) {
    return korvane::runCommandLine(std::vector<std::string>(argv, argv + argc), std::cout, std::cerr);
}
