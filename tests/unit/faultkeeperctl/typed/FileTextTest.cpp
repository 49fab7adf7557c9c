#include "faultkeeperctl/typed/FileText.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

using namespace Faultkeeper::Apps;

namespace
{
std::string Read(const std::string& content)
{
    const Support::CFreshDirectory directory;
    Support::WriteFile(directory.File("file"), content);
    return FileText(directory.File("file"));
}
} // namespace

TEST(FileTextTest, IsAllThatIsInTheFile)
{
    EXPECT_EQ(Read(""), "");
    EXPECT_EQ(Read("raise x\r\n\n"), "raise x\r\n\n");
    EXPECT_EQ(Read(std::string(10000, 'x')), std::string(10000, 'x'));
}

TEST(FileTextTest, AMarkOfUtf8AtTheBeginningIsLeftOut)
{
    EXPECT_EQ(Read("\xEF\xBB\xBFraise x\n"), "raise x\n");
    EXPECT_EQ(Read("\xEF\xBB\xBF"), "");
    EXPECT_EQ(Read("x\xEF\xBB\xBF"), "x\xEF\xBB\xBF");
    EXPECT_EQ(Read("\xEF\xBB"), "\xEF\xBB");
}
