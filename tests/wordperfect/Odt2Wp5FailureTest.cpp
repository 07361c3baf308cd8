// odt2wp5's failures: one line on stderr, a non-zero status, and never a destination file.

#include "OdtFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include <sys/stat.h>

#include "richtext/Losses.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

// A package shaped like a password-protected one: the manifest describes how content.xml is encrypted.
std::string encryptedPackage()
{
    const std::string manifest =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><manifest:manifest"
        " xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">"
        "<manifest:file-entry manifest:full-path=\"/\" "
        "manifest:media-type=\"application/vnd.oasis.opendocument.text\"/>"
        "<manifest:file-entry manifest:full-path=\"content.xml\" manifest:media-type=\"text/xml\">"
        "<manifest:encryption-data manifest:checksum-type=\"SHA1/1K\" manifest:checksum=\"AAAA\">"
        "<manifest:algorithm manifest:algorithm-name=\"Blowfish CFB\" "
        "manifest:initialisation-vector=\"AAAA\"/>"
        "</manifest:encryption-data></manifest:file-entry></manifest:manifest>";
    const std::string content = "\x8f\x12\x00\xffnot xml at all";
    return zipOf({{"mimetype", "application/vnd.oasis.opendocument.text"},
                  {"META-INF/manifest.xml", manifest},
                  {"content.xml", content}});
}

struct Case {
    const char *name;
    int status;
    const char *messagePart;
};

TEST(Odt2Wp5Failures, SayWhyInOneLineAndLeaveNoFile)
{
    testing_support::TempDir scratch;
    const std::string good = scratch.write("good.fodt", wptest::flatOdt("", "<text:p>text</text:p>"));
    const std::string encrypted = scratch.write("locked.odt", encryptedPackage());
    const std::string garbage = scratch.write("garbage.odt", "PK\x03\x04 this is not really a zip");
    const std::string missing = scratch.file("missing.odt");
    const std::string destination = scratch.file("out.wpd");
    const std::string inMissingFolder = scratch.file("no/such/folder/out.wpd");
    struct Run {
        Case expected;
        std::vector<std::string> arguments;
        std::string destination;
    };
    const Run runs[] = {
        {{"encrypted", 1, "encrypted"}, {"--wp6", encrypted, destination}, destination},
        {{"not a package", 1, ""}, {"--wp6", garbage, destination}, destination},
        {{"missing source", 1, "missing.odt"}, {"--wp5", missing, destination}, destination},
        {{"unwritable destination", 1, "out.wpd"}, {"--wp6", good, inMissingFolder}, inMissingFolder},
        {{"unknown version", 2, "usage"}, {"--wp7", good, destination}, destination},
        {{"too few arguments", 2, "usage"}, {"--wp6", good}, destination},
    };
    for (const Run &run : runs) {
        std::vector<std::string> argv{ODT2WP5_PATH};
        argv.insert(argv.end(), run.arguments.begin(), run.arguments.end());
        const ProgramRun result = ProgramRun::of(argv);
        EXPECT_EQ(result.status, run.expected.status) << run.expected.name;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1)
            << run.expected.name << ": " << result.err;
        EXPECT_NE(result.err.find(run.expected.messagePart), std::string::npos)
            << run.expected.name << ": " << result.err;
        EXPECT_EQ(result.out, "") << run.expected.name;
        EXPECT_FALSE(testing_support::readFile(run.destination).size()) << run.expected.name;
    }
    // Nothing but the inputs is left: no temporary file beside the destination.
    EXPECT_EQ(scratch.names(), (std::set<std::string>{"good.fodt", "locked.odt", "garbage.odt"}));
}

TEST(Odt2Wp5Failures, ReplacesAnOldDestinationWhole)
{
    testing_support::TempDir scratch;
    const std::string source = scratch.write("a.fodt", wptest::flatOdt("", "<text:p>fresh words</text:p>"));
    const std::string destination = scratch.write("a.wpd", "old content");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, "--wp6", source, destination});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const ProgramRun text = ProgramRun::of({WPD2TEXT_PATH, destination});
    EXPECT_NE(text.out.find("fresh words"), std::string::npos);
    EXPECT_EQ(scratch.names(), (std::set<std::string>{"a.fodt", "a.wpd"}));
    struct stat status {};
    ASSERT_EQ(::stat(destination.c_str(), &status), 0);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask)
        << "permissions of any new file, not private to its writer";
}

TEST(Odt2Wp5Output, APackageNeverReachesOutsideItself)
{
    testing_support::TempDir scratch;
    const std::string content =
        Odt{.body = R"(<text:p>inside<draw:frame svg:width="1in" svg:height="1in"><draw:image
        xlink:href="../../escaped.txt"/></draw:frame><draw:frame><draw:image xlink:href="/etc/passwd"/></draw:frame
        ><draw:frame><draw:image xlink:href="file:///etc/passwd"/></draw:frame></text:p>)"}
            .contentXml();
    // Entries whose names climb out of the package, and pictures that point outside it.
    const std::string package = zipOf({{"mimetype", "application/vnd.oasis.opendocument.text"},
                                       {"content.xml", content},
                                       {"../../escaped.txt", "out"},
                                       {"/tmp/quillmorph-absolute.txt", "out"}});
    std::filesystem::create_directories(scratch.file("deep/er"));
    const std::string source = scratch.write("deep/er/a.odt", package);
    const std::string destination = scratch.file("deep/er/a.wpd");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, "--wp6", source, destination});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(scratch.names(), (std::set<std::string>{"deep"}));
    EXPECT_FALSE(std::filesystem::exists(scratch.file("escaped.txt")));
    EXPECT_FALSE(std::filesystem::exists("/tmp/quillmorph-absolute.txt"));
    const std::string written = testing_support::readFile(destination);
    EXPECT_NE(written.find("inside"), std::string::npos);
    EXPECT_EQ(written.find("root:"), std::string::npos) << "a file of this machine was read in";
}

TEST(Odt2Wp5Output, ADestinationNameAsLongAsAllowedIsWritten)
{
    testing_support::TempDir scratch;
    const std::string source = scratch.write("a.fodt", wptest::flatOdt("", "<text:p>long</text:p>"));
    const std::string name = std::string(251, 'n') + ".wpd";
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, "--wp5", source, scratch.file(name)});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(scratch.names(), (std::set<std::string>{"a.fodt", name}));
}

} // namespace

// Found by fuzzing: base64 that the reader takes (here, padding where none is due) reached
// librevenge's decoder in the writer, which threw and ended the converter. The picture is left
// out and counted; the text is written.
TEST(Odt2Wp5Output, APictureWithDamagedBase64IsLeftOut)
{
    for (const char *version : {"--wp6", "--wp5"}) {
        testing_support::TempDir scratch;
        const std::string source = scratch.write(
            "a.fodt", wptest::flatOdt("", "<text:p>kept<draw:frame><draw:image><office:binary-data>"
                                          "iVBORw0KGgo=="
                                          "</office:binary-data></draw:image></draw:frame></text:p>"));
        const std::string destination = scratch.file("a.wpd");
        const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, version, source, destination});
        ASSERT_EQ(run.status, 0) << version << ": " << run.err;
        EXPECT_EQ(richtext::Losses::fromStderr(run.err).kinds(),
                  std::vector<std::string>{std::string(richtext::loss::unreadablePictures)})
            << run.err;
        EXPECT_NE(ProgramRun::of({WPD2TEXT_PATH, destination}).out.find("kept"), std::string::npos);
    }
}
