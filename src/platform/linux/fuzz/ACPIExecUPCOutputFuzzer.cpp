// acpiexec's output carries whatever the machine's firmware prints while its
// methods run, and a run ended at its time-out stops anywhere: the parser
// takes any bytes without a crash or a hang.
#include "platform/linux/ACPIExecUPCOutput.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    (void)korvane::ACPIExecUPCOutput::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
