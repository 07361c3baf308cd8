// Encrypted documents of three WordPerfect generations, made in code with the cipher libwpd undoes,
// through the application's intake and the companion with the real converters: each is recognised
// as encrypted, asks for its password, refuses a wrong one and converts with the right one.

#include "CompanionRun.h"
#include "ScriptedPrompter.h"
#include "TestSupport.h"
#include "WordPerfectCipher.h"
#include "app/AppDelegate.h"
#include "classify/InputFile.h"
#include "settings/Settings.h"

#include <gtest/gtest.h>

#include <deque>
#include <sstream>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

const std::string password = "Quill";

struct Generation {
    std::string name;
    std::string file;
    std::string bytes;
    std::string family;
    // libwpd 0.10 accepts the right password for an encrypted WordPerfect 4.2 document
    // but then reads no text from it; its own wpd2text shows the same.
    bool textComesBack;
};

std::vector<Generation> generations()
{
    return {
        {"WordPerfect 5", "Minutes5.wp5",
         WordPerfectCipher::wp5(std::string{'\xFF', 'W', 'P', 'C', 16, 0, 0, 0, 1, 0x0A, 0, 1, 0, 0, 0, 0} +
                                    "Closed meeting minutes\x0A",
                                password),
         "WordPerfect 5.x", true},
        {"Macintosh", "MinutesMac.wp", WordPerfectCipher::macintosh("Closed meeting minutes\x0D", password),
         "WordPerfect for Macintosh, encrypted", true},
        {"WordPerfect 4.2", "MINUTES.DOC", WordPerfectCipher::wp42("Closed meeting minutes\x0A", password),
         "WordPerfect 4.2, encrypted", false},
    };
}

class EncryptedGenerations : public ::testing::Test {
protected:
    EncryptedGenerations()
        : settings(std::make_unique<QSettings>(
              QString::fromStdString((folder.path() / "settings.conf").string()), QSettings::IniFormat))
    {
        // RTF keeps the words readable in the output file itself.
        settings.defaults().setValue(Settings::documentTargetKey, "rtf");
    }
    TempDir folder;
    Settings settings;
};

} // namespace

TEST_F(EncryptedGenerations, AreRecognisedAndConvertWithTheRightPasswordInTheApp)
{
    for (const auto &generation : generations()) {
        SCOPED_TRACE(generation.name);
        const fs::path source = folder.path() / generation.file;
        writeFile(source, generation.bytes);
        EXPECT_EQ(versionFamilyOf(InputFile::classify(source)), generation.family);

        ScriptedPrompter prompter;
        RecordingRevealer revealer;
        AppDelegate delegate(prompter, revealer, settings);
        prompter.answer(0, "wrong");
        prompter.answer(0, password);
        delegate.applicationOpen({source});
        ASSERT_TRUE(
            waitUntil([&] { return delegate.pendingConversions == 0 && revealer.revealed.size() == 1; }, 60));
        ASSERT_EQ(prompter.shown.size(), 2u) << "the password, then again after the wrong one";
        EXPECT_TRUE(prompter.shown[0].alert.passwordField);
        EXPECT_TRUE(prompter.shown[1].alert.passwordField);
        const std::string rtf = readFile(revealer.revealed[0]);
        EXPECT_EQ(rtf.rfind("{\\rtf1", 0), 0u);
        if (generation.textComesBack) {
            EXPECT_NE(rtf.find("Closed meeting minutes"), std::string::npos);
        }
        fs::remove(revealer.revealed[0]);
    }
}

TEST_F(EncryptedGenerations, ConvertWithTheRightPasswordInTheCompanion)
{
    for (const auto &generation : generations()) {
        SCOPED_TRACE(generation.name);
        const fs::path source = folder.path() / generation.file;
        writeFile(source, generation.bytes);
        for (const bool onTheCommandLine : {false, true}) {
            std::vector<std::string> args{source.string()};
            if (onTheCommandLine)
                args.insert(args.begin(), {"--password", password});
            ScriptedPasswords passwords({"wrong", password});
            std::ostringstream out;
            EXPECT_EQ(runCompanion(args, settings, passwords, out, 1), 0) << out.str();
            EXPECT_EQ(passwords.retries(), onTheCommandLine ? 0 : 1);
            const fs::path output = source.parent_path() / (source.stem().string() + ".rtf");
            if (generation.textComesBack) {
                EXPECT_NE(readFile(output).find("Closed meeting minutes"), std::string::npos) << out.str();
            }
            fs::remove(output);
        }
    }
}
