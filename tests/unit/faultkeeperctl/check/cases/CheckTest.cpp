#include "faultkeeperctl/check/CheckReport.h"

#include "CheckCase.h"

#include "support/FreshDirectory.h"

namespace CheckCases
{

TEST_P(CheckTest, TellsAllThatIsWrong)
{
    const Support::CFreshDirectory directory;
    const Support::CWorkingDirectory inside(directory.Path());
    WriteEdited("", GetParam().edits);
    EXPECT_EQ(Faultkeeper::Apps::CheckText(Faultkeeper::Apps::CheckConfiguration("", GetParam().lineWidth)),
              GetParam().expected);
}

} // namespace CheckCases
