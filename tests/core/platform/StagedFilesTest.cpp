// Held-back writes: the files on disk change only at Commit, once each and in
// the order they were first written; reads in between see what was written;
// a failure part way through names its file and leaves the later ones alone.
#include <gtest/gtest.h>

#include "platform/StagedFiles.h"
#include "settings/iniFile.h"
#include "tests/core/CoreTestSupport.h"

TEST(StagedFiles, WritesReachTheDiskAtCommitOnlyAndReadsSeeThemBefore)
{
    MemoryFiles memory;
    memory.files[u"KEL.INI"] = "[GENERAL]\r\nNUMPAD=OFF\r\n";
    {
        StagedFiles staged;
        // Two saves of one file (two pages) and one of a new file.
        KelText numpad(u"ON"), units(u"METRIC");
        iniFile first(u"KEL.INI"), second(u"KEL.INI");
        first.Add(new iniString(u"GENERAL", u"NUMPAD", &numpad, u""));
        second.Add(new iniString(u"GENERAL", u"UNITS", &units, u""));
        EXPECT_EQ(first.SaveEntries(nullptr, nullptr, 1), 1);
        EXPECT_EQ(second.SaveEntries(nullptr, nullptr, 1), 1);
        EXPECT_TRUE(staged.WriteBytes(u"NEW.INI", "new", 3));
        EXPECT_EQ(memory.files[u"KEL.INI"], "[GENERAL]\r\nNUMPAD=OFF\r\n");
        EXPECT_EQ(memory.files.count(u"NEW.INI"), 0u);
        EXPECT_TRUE(staged.Query(u"NEW.INI").exists);

        // The second save read the first one's result: both values are there.
        KelText readNumpad, readUnits;
        iniFile reader(u"KEL.INI");
        reader.Add(new iniString(u"GENERAL", u"NUMPAD", &readNumpad, u""));
        reader.Add(new iniString(u"GENERAL", u"UNITS", &readUnits, u""));
        EXPECT_EQ(reader.ReadAll(), 1);
        EXPECT_EQ(readNumpad, u"ON");
        EXPECT_EQ(readUnits, u"METRIC");
        std::string bytes;
        EXPECT_TRUE(staged.ReadBytes(u"NEW.INI", bytes));
        EXPECT_EQ(bytes, "new");

        const int writesBefore = memory.writes;
        std::u16string failed;
        EXPECT_TRUE(staged.Commit(failed));
        EXPECT_FALSE(staged.Pending());
        EXPECT_EQ(memory.writes - writesBefore, 2); // once per file
    }
    EXPECT_EQ(memory.files[u"NEW.INI"], "new");
    EXPECT_EQ(memory.files.size(), 2u); // no temporary file left
    EXPECT_NE(memory.files[u"KEL.INI"].find(std::string("U\0N\0I\0T\0S\0", 10)), std::string::npos);

    // Work that is dropped, or that fails on its first file, writes nothing.
    {
        StagedFiles staged;
        EXPECT_TRUE(staged.WriteBytes(u"NEW.INI", "dropped", 7));
    }
    EXPECT_EQ(memory.files[u"NEW.INI"], "new");
    {
        memory.files[u"A.INI"] = "old";
        StagedFiles staged;
        EXPECT_TRUE(staged.WriteBytes(u"A.INI", "a", 1));
        EXPECT_TRUE(staged.WriteBytes(u"NEW.INI", "b", 1));
        memory.readOnly.insert(u"A.INI");
        std::u16string failed;
        EXPECT_EQ(staged.Commit(failed).error, WriteError::ReadOnly);
        EXPECT_EQ(failed, u"A.INI");
        EXPECT_EQ(memory.files[u"A.INI"], "old");
        EXPECT_EQ(memory.files[u"NEW.INI"], "new");
        EXPECT_FALSE(staged.Pending());
    }
}
