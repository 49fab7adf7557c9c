#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Takes its title from a notice, which has none.
const char* const kTitledBelow = "        <TriggerSets>\n"
                                 "          <TriggerSet>\n"
                                 "            <Options>\n"
                                 "              <Option name=\"autoTrigger\" value=\"yes\"/>\n"
                                 "              <Option name=\"titleSource\" value=\"trigger\"/>\n"
                                 "            </Options>\n"
                                 "            <Triggers>\n"
                                 "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
                                 "            </Triggers>\n"
                                 "          </TriggerSet>\n"
                                 "        </TriggerSets>\n";

// What drivers read.
const SCheckCase kTextCases[] = {
    {"AVisibleErrorWithoutTitle",
     {{kPositioning, "        <Text type=\"title\" text=\"No Satellites\"/>\n", ""}},
     "positioning.xml:4:7: warning: this \"Error\" is visible but has no text \"title\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerWithoutTitleWhereTheSetTakesItsTitle",
     {BusWithoutTitle()},
     "positioning.xml:20:24: warning: \"CAN:Bus:Power:4\" has no text \"title\", which this set's trees are "
     "to "
     "be headed with: they are headed with the error's own\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerWithoutTitleBelowAShallowLink",
     {BusWithoutTitle(),
      {kPositioning, "\"verbose\"", "\"shallow\""},
      {kPositioning, "        <Text type=\"shortProblem\" text=\"Silent\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Silent\"/>\n"
       "        <Text type=\"title\" text=\"Receiver Silent\"/>\n"},
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n" + std::string(kTitledBelow)},
      {kPatterns, "allowPartialMatch=\"no\"", "allowPartialMatch=\"yes\""}},
     "positioning.xml:20:24: warning: \"CAN:Bus:Power:4\" has no text \"title\", which this set's trees are "
     "to be headed with: they are headed with the error's own\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerWithoutTitleWhereTheOnesBelowHaveNone",
     {BusWithoutTitle(),
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n" + std::string(kTitledBelow)},
      {kPatterns, "allowPartialMatch=\"no\"", "allowPartialMatch=\"yes\""}},
     "positioning.xml:20:24: warning: \"CAN:Bus:Power:4\" has no text \"title\", which this set's trees are "
     "to be headed with: they are headed with the error's own\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AVisibleErrorWithoutTitleThatDoesNotRaiseItsParent",
     {BusWithoutTitle(),
      BusVisible(),
      {kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2\""},
      SatellitesWithTheirOwnTitle(),
      {kPatterns, "allowPartialMatch=\"no\"", "allowPartialMatch=\"yes\""}},
     "can.xml:4:7: warning: this \"Error\" is visible but has no text \"title\", which it needs where no "
     "parent "
     "is active\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextOfBlanks",
     {{kCan, "\"Check the fuse.\"", "\"  \""}},
     "can.xml:7:31: warning: the text \"solution\" has nothing but blanks in it\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextOfBlanksThatDoNotBreak",
     {{kCan, "\"Check the fuse.\"", "\"&#xA0; &#x202F;\""}},
     "can.xml:7:31: warning: the text \"solution\" has nothing but blanks in it\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextOfWideBlanks",
     {{kCan, "\"Check the fuse.\"", "\"\u3000&#x2003;&#x205F;\""}},
     "can.xml:7:31: warning: the text \"solution\" has nothing but blanks in it\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextOfLineEnds",
     {{kCan, "\"Check the fuse.\"", "\"&#13;&#10;&#x85;&#x2028;\""}},
     "can.xml:7:31: warning: the text \"solution\" has nothing but blanks in it\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATag",
     {{kCan, "\"Check the fuse.\"", "\"Check the &lt;b>fuse&lt;/b>.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<b>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagThatHasAnAttribute",
     {{kCan, "\"Check the fuse.\"", "\"Check the &lt;font color='red'&gt;fuse&lt;/font&gt;.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<font color='red'>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagThatHasAnAttributeOnALineOfItsOwn",
     {{kCan, "\"Check the fuse.\"", "\"Check the &lt;font&#10;color=red&gt;fuse.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<font\\x0Acolor=red>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagThatEndsItself",
     {{kCan, "\"Check the fuse.\"", "\"Check &lt;img src=x /> the fuse.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<img src=x />\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagWhoseAttributeHasNoValue",
     {{kCan, "\"Check the fuse.\"", "\"The key is &lt;input disabled> now.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<input disabled>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagWithAttributesOfBothKinds",
     {{kCan, "\"Check the fuse.\"", "\"&lt;td nowrap width=3>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<td nowrap width=3>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagOfTwoWords",
     {{kCan, "\"Check the fuse.\"", "\"&lt;/my-tag>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"</my-tag>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagThatQuotesItsEnd",
     {{kCan, "\"Check the fuse.\"", "\"&lt;a href='x>y'>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<a href='x>y'>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithADocumentType",
     {{kCan, "\"Check the fuse.\"", "\"&lt;!DOCTYPE html>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<!DOCTYPE html>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithAnInstruction",
     {{kCan, "\"Check the fuse.\"", "\"&lt;?xml version='1.0'?>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<?xml version='1.0'?>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagBehindAComparison",
     {{kCan, "\"Check the fuse.\"", "\"U &lt;V min=9.5 V> &lt;br/>\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<br/>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithAComment",
     {{kCan, "\"Check the fuse.\"", "\"Check the fuse. &lt;!-- which? -->\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<!--\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithRawText",
     {{kCan, "\"Check the fuse.\"", "\"&lt;![CDATA[Check the fuse.]]>\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<![CDATA[\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithAnEntity",
     {{kCan, "\"Check the fuse.\"", "\"Plug &amp;amp; fuse.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"&amp;\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithANumberedEntity",
     {{kCan, "\"Check the fuse.\"", "\"22 &amp;#176;C\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"&#176;\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithAPlayer",
     {{kCan, "\"Check the fuse.\"", "\"See &lt;video controls>\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<video controls>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithDetails",
     {{kCan, "\"Check the fuse.\"", "\"&lt;details open>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<details open>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagThatEndsWithAnAttributeWithoutValue",
     {{kCan, "\"Check the fuse.\"", "\"&lt;img src='x' loop>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<img src='x' loop>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithATagInCapitals",
     {{kCan, "\"Check the fuse.\"", "\"The key is &lt;INPUT DISABLED> now.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<INPUT DISABLED>\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithALongEntity",
     {{kCan, "\"Check the fuse.\"", "\"Turn it &amp;CounterClockwiseContourIntegral; round.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"&CounterClockwiseContourIntegral;\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextWithALongTag",
     {{kCan, "\"Check the fuse.\"", "\"&lt;a href='" + std::string(400, 'x') + "'>Fuse\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"<a href='" +
         std::string(400, 'x') +
         "'>\"\n"
         "0 errors, 1 warning in 4 files\n"},
    {"ATextWithAnEscape",
     {{kCan, "\"Check the fuse.\"", "\"Check the fuse.\\nThen wait.\""}},
     "can.xml:7:31: warning: the text \"solution\" has markup in it, which screens show as it stands: "
     "\"\\n\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATextTooLongForALine",
     {},
     "positioning.xml:7:31: warning: the text \"solution\" is 32 columns wide, a line has 31\n"
     "0 errors, 1 warning in 4 files\n",
     31},
    {"ATextWithALineTooLong",
     {{kCan, "\"Check the fuse.\"", "\"Check the fuse.&#10;Write down all that was found there.\""}},
     "can.xml:7:31: warning: the text \"solution\" is 36 columns wide, a line has 32\n"
     "0 errors, 1 warning in 4 files\n",
     32},
    {"AWideText",
     {{kCan, "\"Check the fuse.\"", "\"電源が入っているか確認してください。\""}},
     "can.xml:7:31: warning: the text \"solution\" is 36 columns wide, a line has 33\n"
     "0 errors, 1 warning in 4 files\n",
     33},
};

INSTANTIATE_TEST_SUITE_P(Text, CheckTest, testing::ValuesIn(kTextCases), NameOf);

} // namespace
