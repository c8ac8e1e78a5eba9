#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// Where platform code reads environment variables from, so tests can hand in
// their own instead of changing the process's.
struct Environment {
    std::function<std::optional<std::string>(std::string_view name)> lookup;

    std::optional<std::string> operator()(std::string_view name) const { return lookup(name); }

    // The process's own environment; an empty value counts as unset.
    static Environment process();
};

} // namespace korvane
