#include "mapfile/MapFileCodec.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto parse = korvane::parseMapFile(bytes);
    if (parse.map.has_value() != (parse.problem == korvane::MapFileProblem::none)) {
        __builtin_trap();
    }
    // Whatever was read must come back the same from what the writer makes
    // of it: a map that changes on every save loses the user's work.
    if (parse.map && korvane::parseMapFile(korvane::mapFileText(*parse.map)).map != parse.map) {
        __builtin_trap();
    }
    return 0;
}
