#pragma once

#include "records/CollectorError.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace korvane {

// The description of the CollectorError a call ends in; a test failure when
// it ends any other way.
inline std::string failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const CollectorError& error) {
        return error.description();
    }
    ADD_FAILURE() << "expected a CollectorError";
    return {};
}

} // namespace korvane
