#include "EngineRun.h"
#include "FakeTools.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "engine/DocumentSteps.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

std::exception_ptr convertToODT(const FakeTools &tools, std::optional<std::string> password)
{
    return performAndWait(JobCase::wpToODT{tools.work("Letter.wpd"), std::move(password)},
                          tools.work("Letter.odt"));
}

} // namespace

TEST(WriteODTPackage, RemovesAStaleFileBeforeTheToolRuns)
{
    FakeTools tools;
    writeFile(tools.work("Letter.odt"), "stale from an earlier run");
    tools.add("wpd2odt", "[ -e \"$2\" ] && echo stale > \"$2.seen\"; exit 1");
    const auto outcome = convertToODT(tools, std::nullopt);
    EXPECT_FALSE(fs::exists(tools.work("Letter.odt.seen"))) << "the tool saw the stale file";
    EXPECT_EQ(outcomeText(outcome), "conversionFailed(\"\")");
    EXPECT_FALSE(fs::exists(tools.work("Letter.odt")));
    EXPECT_EQ(tools.argsOf("wpd2odt"),
              tools.work("Letter.wpd").string() + " " + tools.work("Letter.odt").string() + "\n");
}

TEST(WriteODTPackage, TheFileDecidesNotTheStatus)
{
    FakeTools tools;
    tools.add("wpd2odt", "printf package > \"$2\"; exit 7");
    EXPECT_EQ(convertToODT(tools, std::nullopt), nullptr);
    EXPECT_EQ(readFile(tools.work("Letter.odt")), "package");

    tools.add("wpd2odt", ": > \"$2\"; exit 0");
    EXPECT_EQ(outcomeText(convertToODT(tools, std::nullopt)), "conversionFailed(\"\")");
    EXPECT_FALSE(fs::exists(tools.work("Letter.odt"))) << "an empty result is removed";

    fs::remove(tools.folder() / "wpd2odt");
    EXPECT_EQ(outcomeText(convertToODT(tools, std::nullopt)), "toolMissing(\"wpd2odt\")");
}

TEST(WriteODTPackage, PasswordsAreInferredWrongWhenNothingComesOut)
{
    FakeTools tools;
    tools.add("wpd2odt", ": > \"$4\"");
    EXPECT_EQ(outcomeText(convertToODT(tools, "secret")), "wrongPassword");
    EXPECT_EQ(outcomeText(convertToODT(tools, "")), "wrongPassword");
    const std::string in = tools.work("Letter.wpd").string();
    const std::string out = tools.work("Letter.odt").string();
    EXPECT_EQ(tools.argsOf("wpd2odt"), "--password secret " + in + " " + out + "\n" + in + " " + out + "\n")
        << "an empty password adds no arguments";
    EXPECT_FALSE(fs::exists(tools.work("Letter.odt")));
}

TEST(DocumentBytes, TakesOpenDocumentFromWpd2odtWithoutFallback)
{
    FakeTools tools;
    tools.add("wpd2odt", "printf '<office:document/>'");
    tools.add("wpd2html", "printf '<html/>'");
    const LogTail tail;
    const Decoded decoded = Converter::steps::documentBytes(tools.work("a.wpd"), std::nullopt);
    EXPECT_EQ(decoded.data, "<office:document/>");
    EXPECT_EQ(decoded.type, Decoded::Type::openDocumentText);
    EXPECT_TRUE(tail.messagesContaining("falling back").empty());
    EXPECT_FALSE(fs::exists(tools.argsFile("wpd2html")));
    EXPECT_EQ(tools.argsOf("wpd2odt"), "--stdout " + tools.work("a.wpd").string() + "\n");
}

TEST(DocumentBytes, FallsBackToHTMLWhenWpd2odtGivesNothingOrIsMissing)
{
    for (const bool wpd2odtPresent : {true, false}) {
        SCOPED_TRACE(wpd2odtPresent ? "wpd2odt writes nothing" : "wpd2odt missing");
        FakeTools tools;
        if (wpd2odtPresent)
            tools.add("wpd2odt", "exit 0");
        tools.add("wpd2html", "printf '<html>x</html>'");
        const LogTail tail;
        const Decoded decoded = Converter::steps::documentBytes(tools.work("a.wpd"), "pw");
        EXPECT_EQ(decoded.data, "<html>x</html>");
        EXPECT_EQ(decoded.type, Decoded::Type::html);
        EXPECT_EQ(tail.messagesContaining("falling back"),
                  (std::vector<std::string>{"wpd2odt produced nothing; falling back to wpd2html"}));
        EXPECT_EQ(tools.argsOf("wpd2html"), "--password pw " + tools.work("a.wpd").string() + "\n");
    }
}

TEST(DocumentBytes, NothingFromEitherToolIsAFailureOrAWrongPassword)
{
    FakeTools tools;
    tools.add("wpd2odt", "exit 1");
    tools.add("wpd2html", "exit 1");
    struct Row {
        std::optional<std::string> password;
        ConversionError expected;
    };
    const Row rows[] = {
        {std::nullopt, ConversionError::conversionFailed("")},
        {"wrong", ConversionError::wrongPassword()},
        {"", ConversionError::wrongPassword()},
    };
    for (const auto &row : rows) {
        try {
            Converter::steps::documentBytes(tools.work("a.wpd"), row.password);
            ADD_FAILURE() << "decoded from nothing";
        } catch (const ConversionError &error) {
            EXPECT_EQ(error, row.expected);
        }
    }
    const std::string in = tools.work("a.wpd").string();
    EXPECT_EQ(tools.argsOf("wpd2html"), in + "\n--password wrong " + in + "\n" + in + "\n");
}
