#include <gtest/gtest.h>

#include <algorithm>

#include "tests/win/app/AppTestHelpers.h"

namespace
{
KelText TestKey()
{
    return u"HKEY_CURRENT_USER\\Software\\Orvantix\\" + UniqueName(u"KeyTest") + u"\\";
}
} // namespace

TEST(RegistryKey, TypedReadsLeaveTheTargetAloneOnFailure)
{
    KelText path = TestKey();
    RegistryCleanup cleanup({path});
    RegistryKey key;
    ASSERT_TRUE(key.Create(path + u"Inner"));
    ASSERT_TRUE(key.WriteString(u"Text", u"C:\\Programs\\Plotwise"));
    ASSERT_TRUE(key.WriteDword(u"Number", 7));

    RegistryKey reader(path + u"Inner\\");
    ASSERT_TRUE(reader.IsOpen());
    KelText text(u"unchanged");
    uint32_t number = 99;
    DWORD type = 0;
    EXPECT_EQ(reader.ReadString(u"Number", text, &type), RegistryRead::OtherType);
    EXPECT_EQ(type, DWORD(REG_DWORD));
    EXPECT_TRUE(text.SameAs(u"unchanged"));
    EXPECT_EQ(reader.ReadDword(u"Text", number, &type), RegistryRead::OtherType);
    EXPECT_EQ(type, DWORD(REG_SZ));
    EXPECT_EQ(reader.ReadDword(u"Missing", number), RegistryRead::Absent);
    EXPECT_EQ(number, 99u);

    EXPECT_EQ(reader.ReadString(u"Text", text), RegistryRead::Ok);
    EXPECT_TRUE(text.SameAs(u"C:\\Programs\\Plotwise"));
    EXPECT_EQ(reader.ReadDword(u"Number", number), RegistryRead::Ok);
    EXPECT_EQ(number, 7u);

    // Opened only to read: writing is refused.
    EXPECT_FALSE(reader.WriteDword(u"Number", 8));
}

TEST(RegistryKey, ValuesAreEnumeratedAndDeleted)
{
    KelText path = TestKey();
    RegistryCleanup cleanup({path});
    RegistryKey key;
    ASSERT_TRUE(key.Create(path));
    for (const char16_t* name : {u"Zeta", u"alpha", u"Mid"})
        ASSERT_TRUE(key.WriteDword(name, 1));

    std::vector<KelText> names = key.ValueNames();
    ASSERT_EQ(names.size(), 3u);
    for (const char16_t* name : {u"Zeta", u"alpha", u"Mid"})
        EXPECT_EQ(std::count_if(names.begin(), names.end(),
                                [name](const KelText& n) { return n.SameAs(name); }),
                  1)
            << KelText(name).ToUtf8();

    EXPECT_TRUE(key.DeleteValue(u"Mid"));
    EXPECT_TRUE(key.DeleteValue(u"Mid")); // already gone counts as deleted
    EXPECT_EQ(key.ValueNames().size(), 2u);

    key.Close();
    EXPECT_TRUE(RegistryKey::DeleteTree(path));
    EXPECT_FALSE(RegistryKey::Exists(path));
}

TEST(RegistryKey, KeyTexts)
{
    HKEY root = nullptr;
    KelText below;
    ASSERT_TRUE(
        RegistryKey::SplitPath(u"HKEY_LOCAL_MACHINE\\Software\\Orvantix\\Plotwise\\", root, below));
    EXPECT_EQ(root, HKEY_LOCAL_MACHINE);
    EXPECT_TRUE(below.SameAs(u"Software\\Orvantix\\Plotwise"));
    ASSERT_TRUE(RegistryKey::SplitPath(u"hkcu\\Software", root, below));
    EXPECT_EQ(root, HKEY_CURRENT_USER);
    EXPECT_FALSE(RegistryKey::SplitPath(u"HKEY_NOWHERE\\Software", root, below));
    EXPECT_FALSE(RegistryKey(u"HKEY_CURRENT_USER\\Software\\Orvantix\\No such key").IsOpen());
    // A bare root is never deleted.
    EXPECT_FALSE(RegistryKey::DeleteTree(u"HKEY_CURRENT_USER\\"));
}
