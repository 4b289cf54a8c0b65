#include <gtest/gtest.h>

#include "text/MessageSwitches.h"

TEST(MsgSwitchList, FirstRegistrationWinsAndOrderIsKept)
{
    MsgSwitchList list;
    EXPECT_EQ(list.Register(5, u"Bad cost tables", u"BadCostTables"), 1);
    EXPECT_EQ(list.Register(4, u"Bad duct standard", u"BadSpec"), 1);
    EXPECT_EQ(list.Register(5, u"Other text", u"OtherName"), 0);

    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(list.At(0)->code, 5u);
    EXPECT_EQ(list.At(1)->code, 4u);
    EXPECT_EQ(list.At(2), nullptr);
    EXPECT_EQ(list.At(-1), nullptr);

    const MsgSwitch* found = list.Find(5);
    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->name.SameAs(u"BadCostTables"));
    EXPECT_TRUE(list.TextOf(5).SameAs(u"Bad cost tables"));
    EXPECT_EQ(list.Find(6), nullptr); // an unknown code: no record, empty text
    EXPECT_TRUE(list.TextOf(6).IsEmpty());

    // The stored copy does not depend on the caller's text.
    KelText text(u"changes");
    list.Register(2, text, u"Name");
    text = u"changed";
    EXPECT_TRUE(list.TextOf(2).SameAs(u"changes"));

    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.Find(5), nullptr);
}
