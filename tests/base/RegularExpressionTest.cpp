#include "base/RegularExpression.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(RegularExpression, AQuotedLiteralMatchesItselfOnlyEvenWhenItHoldsTheQuoteEnd) {
    for (const std::string literal : {"a.b", "\\E(x)", "port\\Q[1]\\E"}) {
        const RegularExpression expression("^" + RegularExpression::quoted(literal) + "$");
        EXPECT_TRUE(expression.isFoundIn(literal)) << literal;
        EXPECT_FALSE(expression.isFoundIn(literal + "x")) << literal;
    }
    EXPECT_FALSE(RegularExpression("(").isUsable());
    EXPECT_FALSE(RegularExpression("(").isFoundIn("("))
        << "an expression that didn't compile matches nothing";
}

} // namespace
} // namespace korvane
