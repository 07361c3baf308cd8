// Encrypted WordPerfect 5 documents, made in code with the cipher WordPerfect 5 uses.

#include "OdtFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WordPerfectCipher.h"
#include "WordPerfectFixtures.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

const std::string password = "Quill";
const std::vector<std::string> paragraphs = {"Minutes of the closed meeting", "Budget approved unanimously"};

std::set<std::string> secretWords()
{
    std::string all;
    for (const std::string &paragraph : paragraphs)
        all += paragraph + " ";
    return OdtFile::wordsOfPlainText(all);
}

std::string writeEncryptedFixture(const testing_support::TempDir &folder)
{
    return folder.write("secret.wp", testing_support::WordPerfectCipher::wp5(
                                         WordPerfectFixtures::wp51(paragraphs), password));
}

bool containsAll(const std::set<std::string> &words, const std::set<std::string> &wanted)
{
    return std::includes(words.begin(), words.end(), wanted.begin(), wanted.end());
}

struct PasswordCase {
    std::string name;
    std::vector<std::string> options;
    std::string error; // part of the stderr line; empty when the conversion must succeed
};

void PrintTo(const PasswordCase &c, std::ostream *out)
{
    *out << c.name;
}

class PasswordTest : public testing::TestWithParam<PasswordCase> {};

TEST_P(PasswordTest, DecryptsOnlyWithTheRightPassword)
{
    testing_support::TempDir folder;
    const std::string source = writeEncryptedFixture(folder);
    const std::string destination = folder.file("out.odt");
    std::vector<std::string> argv = {WPD2ODT_PATH};
    argv.insert(argv.end(), GetParam().options.begin(), GetParam().options.end());

    std::vector<std::string> packageArgv = argv;
    packageArgv.insert(packageArgv.end(), {source, destination});
    const ProgramRun package = ProgramRun::of(packageArgv);
    argv.insert(argv.end(), {"--stdout", source});
    const ProgramRun flat = ProgramRun::of(argv);

    if (GetParam().error.empty()) {
        ASSERT_EQ(package.status, 0) << package.err;
        EXPECT_TRUE(
            containsAll(OdtFile::words(OdtFile::package(destination).read("content.xml")), secretWords()));
        ASSERT_EQ(flat.status, 0) << flat.err;
        EXPECT_TRUE(containsAll(OdtFile::words(flat.out), secretWords()));
        return;
    }
    for (const ProgramRun *run : {&package, &flat}) {
        EXPECT_EQ(run->status, 1);
        EXPECT_EQ(run->out, "");
        EXPECT_EQ(std::count(run->err.begin(), run->err.end(), '\n'), 1) << run->err;
        EXPECT_NE(run->err.find(GetParam().error), std::string::npos) << run->err;
    }
    EXPECT_FALSE(std::filesystem::exists(destination));
    EXPECT_EQ(folder.names(), std::set<std::string>{"secret.wp"});
}

const std::string noPassword = "is encrypted and no password was given";
const std::string wrongPassword = "is wrong";

INSTANTIATE_TEST_SUITE_P(
    Cases, PasswordTest,
    testing::Values(PasswordCase{"Right", {"--password", password}, ""},
                    // WordPerfect 5 keys ignore case.
                    PasswordCase{"RightInOtherCase", {"--password", "qUILL"}, ""},
                    PasswordCase{"RightAfterEquals", {"--password=" + password}, ""},
                    PasswordCase{"Wrong", {"--password", "Quilt"}, wrongPassword},
                    PasswordCase{"LongerThanTheKey", {"--password", password + "s"}, wrongPassword},
                    PasswordCase{"Missing", {}, noPassword},
                    // The application passes an empty password when it has none.
                    PasswordCase{"Empty", {"--password", ""}, noPassword}),
    [](const auto &info) { return info.param.name; });

TEST(PasswordTest, PasswordForAPlainDocumentIsIgnored)
{
    testing_support::TempDir folder;
    const std::string source = folder.write("plain.wp", WordPerfectFixtures::wp51(paragraphs));
    const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--stdout", "--password", password, source});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(containsAll(OdtFile::words(run.out), secretWords()));
}

// A real document, its prefix packets encrypted too, converts exactly as the plain one does.
TEST(PasswordTest, EncryptedSampleMatchesThePlainOne)
{
    const std::string plain = testing_support::readFile(std::string(QM_SAMPLES_DIR) + "/min51.wp5");
    if (plain.empty())
        GTEST_SKIP() << "min51.wp5 not found in " << QM_SAMPLES_DIR;
    testing_support::TempDir folder;
    const std::string source =
        folder.write("secret.wp5", testing_support::WordPerfectCipher::wp5(plain, password));
    const ProgramRun decrypted = ProgramRun::of({WPD2ODT_PATH, "--stdout", "--password", password, source});
    const ProgramRun reference =
        ProgramRun::of({WPD2ODT_PATH, "--stdout", std::string(QM_SAMPLES_DIR) + "/min51.wp5"});
    ASSERT_EQ(decrypted.status, 0) << decrypted.err;
    ASSERT_EQ(reference.status, 0) << reference.err;
    EXPECT_FALSE(OdtFile::words(reference.out).empty());
    EXPECT_EQ(decrypted.out, reference.out);
}

} // namespace
