#include "records/CollectorError.h"

#include <filesystem>
#include <system_error>

namespace korvane {

std::string errorDescription(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const CollectorError& error) {
        return error.description();
    } catch (const std::filesystem::filesystem_error& error) {
        // The path the failure concerns, with the platform's words: the user
        // must learn which file or folder stood in the way.
        std::string text = error.path1().string();
        if (!error.path2().empty()) {
            text += " -> " + error.path2().string();
        }
        return (text.empty() ? "" : text + ": ") + error.code().message();
    } catch (const std::system_error& error) {
        // File and launch errors carry the platform's words in their code;
        // what() may add the library's framing and paths.
        return error.code().message();
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "unknown error";
    }
}

} // namespace korvane
