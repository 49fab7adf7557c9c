#include "faultkeeperd/store/TableNote.h"

#include "support/FileSizeLimit.h"
#include "support/FreshDirectory.h"
#include "system/ChildProcess.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using namespace Faultkeeper::Apps;
using namespace Support;

namespace
{

class TableNote : public testing::Test
{
protected:
    /// What a note that the next owner finds says of the store "/a".
    ETableRelation Found() const
    {
        CTableNote note(Path());
        note.Read();
        return note.RelationTo("/a");
    }

    std::string Path() const { return m_directory.File("note"); }

    CFreshDirectory m_directory;
};

} // namespace

TEST_F(TableNote, ThatIsNotThereSaysNothing)
{
    EXPECT_EQ(Found(), etrUnknown);
    CTableNote none("");
    none.Read();
    none.Write(etrStored, "/a");
    none.FallBehind();
    EXPECT_EQ(none.RelationTo("/a"), etrUnknown);
}

TEST_F(TableNote, IsOneLine)
{
    CTableNote note(Path());
    note.Write(etrStored, "/a");
    EXPECT_EQ(ReadFile(Path()), "= /a\n");
    EXPECT_EQ(Found(), etrStored);
    note.FallBehind();
    EXPECT_EQ(ReadFile(Path()), "> /a\n");
    EXPECT_EQ(Found(), etrAhead);
    note.FallBehind();
    EXPECT_EQ(Found(), etrAhead);
    note.Write(etrApart, "");
    EXPECT_EQ(ReadFile(Path()), "+ \n");
    EXPECT_EQ(Found(), etrApart);
    note.FallBehind();
    EXPECT_EQ(Found(), etrApart);
}

TEST_F(TableNote, OfAnotherStoreMakesTheTableTheNewer)
{
    CTableNote note(Path());
    note.Write(etrStored, "/b");
    EXPECT_EQ(Found(), etrElsewhere);
    note.FallBehind();
    EXPECT_EQ(Found(), etrElsewhere);
}

TEST_F(TableNote, OfNobodyKnowsWhatMakesTheTableTheNewer)
{
    CTableNote note(Path());
    note.FallBehind();
    EXPECT_EQ(ReadFile(Path()), "? \n");
    EXPECT_EQ(Found(), etrElsewhere);
}

TEST_F(TableNote, ThatCouldNotBeWrittenWholeMakesTheTableTheNewer)
{
    for (const char* const text : {"", "\n", "x /a\n", "?"})
    {
        WriteFile(Path(), text);
        EXPECT_EQ(Found(), etrElsewhere) << text;
    }
}

TEST_F(TableNote, ThatIsNoFileIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_EQ(Found(), etrUnknown);
    CTableNote(Path()).Write(etrStored, "/a");
    EXPECT_EQ(Found(), etrUnknown);
}

TEST_F(TableNote, OfALongerPathLeavesNothingBehind)
{
    CTableNote note(Path());
    note.Write(etrStored, "/a/longer/path");
    note.Write(etrApart, std::string());
    EXPECT_EQ(ReadFile(Path()), "+ \n");
}

TEST_F(TableNote, ThatCannotBeWrittenWholeIsRemoved)
{
    ASSERT_EQ(symlink("/dev/full", Path().c_str()), 0); // takes nothing; it is no file of ours, and stays
    CTableNote note(Path());
    note.Write(etrStored, "/a");
    EXPECT_TRUE(std::filesystem::is_symlink(Path()));
    ASSERT_EQ(unlink(Path().c_str()), 0);
    note.Write(etrAhead, "/a");
    EXPECT_EQ(ReadFile(Path()), "> /a\n") << "all of it, as nothing was there";
}

TEST_F(TableNote, ThatCannotBeWrittenSaysNoMoreThatTheStoreHasAll)
{
    CTableNote note(Path());
    note.Write(etrStored, "/a");
    {
        const CFileSizeLimit nothing(0);
        note.FallBehind();
        EXPECT_EQ(Found(), etrElsewhere) << "the table goes before the store";
        note.Write(etrStored, "/a");
        EXPECT_EQ(Found(), etrUnknown) << "the store goes before the table";
        note.Write(etrApart, "");
        EXPECT_EQ(Found(), etrElsewhere);
    }
}

TEST_F(TableNote, IsWrittenAsSoonAsThatCanBeDone)
{
    CTableNote note(Path());
    {
        const CFileSizeLimit nothing(0);
        note.Write(etrAhead, "/a");
    }
    note.FallBehind();
    EXPECT_EQ(ReadFile(Path()), "> /a\n");
    {
        const CFileSizeLimit nothing(0);
        note.Write(etrStored, "/a");
    }
    note.Write(etrStored, "/a");
    EXPECT_EQ(ReadFile(Path()), "= /a\n");
}

TEST_F(TableNote, OfAnotherUserIsNotRemoved)
{
    WriteFile(Path(), "> /a\n");
    ASSERT_EQ(chmod(Path().c_str(), 0444), 0);
    ASSERT_EQ(chmod(m_directory.Path().c_str(), 0777), 0);
    const bool root = geteuid() == 0; // others cannot become anybody else, and have a file of their own there
    CChildProcess user(
        [this, root]
        {
            if (root && setuid(65534) != 0)
                return 1;
            CTableNote(Path()).Write(etrStored, "/a");
            return 0;
        });
    EXPECT_EQ(user.Wait(), 0);
    EXPECT_EQ(std::filesystem::exists(Path()), root);
}

TEST_F(TableNote, IsMadeAnewIfSomebodyHasRemovedIt)
{
    CTableNote note(Path());
    note.Write(etrStored, "/a");
    ASSERT_EQ(unlink(Path().c_str()), 0);
    note.FallBehind();
    EXPECT_EQ(Found(), etrAhead);
}
