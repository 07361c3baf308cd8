#include "render/RTFDowngrade.h"

#include "Fixtures.h"
#include "richtext/RtfWriter.h"

#include <gtest/gtest.h>

namespace {

std::string everythingAsRTF()
{
    richtext::RtfWriter writer;
    fixtures::everything(writer);
    return writer.rtf();
}

// The classic rewriting removes flat ignorable groups and tab defaults; our
// writer must put nothing there that the document needs.
TEST(WriterDialect, PassesTheAnsiRewritingUnchanged)
{
    const std::string rtf = everythingAsRTF();
    EXPECT_EQ(RTFDowngrade::classic(rtf, RTFDowngrade::Charset::ansi), rtf);
}

TEST(WriterDialect, ChangesOnlyHeaderAndEscapesUnderMac)
{
    const std::string rtf = everythingAsRTF();
    std::string expected = rtf;
    expected.replace(expected.find("\\ansi\\ansicpg1252"), 17, "\\mac");
    expected.replace(expected.find("caf\\'e9"), 7, "caf\\'8e");
    EXPECT_EQ(RTFDowngrade::classic(rtf, RTFDowngrade::Charset::mac), expected);
}

} // namespace
