#include <gtest/gtest.h>

#include "text/KelText.h"

TEST(Smoke, Builds)
{
    KelText t(u"abc");
    EXPECT_TRUE(t == u"ABC");
    EXPECT_EQ(KelText::Formatted(u"%s-%i", t, 42).View(), u"abc-42");
}
