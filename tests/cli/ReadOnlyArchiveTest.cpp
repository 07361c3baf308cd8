// quillmorph-convert over a tree of the corpus on a file system mounted read-only, as an
// archive is served: everything goes to --output-dir, the report accounts for every file,
// a repeated run makes nothing, and two shards split the tree.

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

// Mounts made here vanish with the test process: it gets a mount namespace of
// its own (as root, or as root of a user namespace of its own).
bool privateMounts()
{
    if (::unshare(CLONE_NEWNS) != 0) {
        const uid_t uid = ::getuid();
        const gid_t gid = ::getgid();
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return false;
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << uid << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << gid << " 1";
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

struct Outcome {
    int status = -1;
    std::string out;
};

Outcome convert(const QStringList &args)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice()); // a password question is answered "skip"
    process.start(QString::fromStdString(QM_CONVERT), args);
    process.waitForFinished(600000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAll().toStdString()};
}

QString q(const fs::path &path)
{
    return QString::fromStdString(path.string());
}

std::set<fs::path> filesBelow(const fs::path &folder)
{
    std::set<fs::path> found;
    for (const auto &entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            found.insert(entry.path());
    return found;
}

// The report's records by input; a line that is not one JSON object fails the test.
std::map<fs::path, QJsonObject> records(const fs::path &report, std::size_t &lines)
{
    std::map<fs::path, QJsonObject> byInput;
    std::istringstream in(readFile(report));
    lines = 0;
    for (std::string line; std::getline(in, line);) {
        ++lines;
        QJsonParseError error;
        const QJsonDocument json = QJsonDocument::fromJson(QByteArray::fromStdString(line), &error);
        EXPECT_TRUE(error.error == QJsonParseError::NoError && json.isObject()) << "not a record: " << line;
        const fs::path input = json.object().value("input").toString().toStdString();
        EXPECT_FALSE(byInput.contains(input)) << "twice: " << input;
        byInput[input] = json.object();
    }
    return byInput;
}

} // namespace

TEST(ReadOnlyArchive, ConvertsIntoAMirroredTreeReportsEveryFileAndRerunsMakeNothing)
{
    const auto corpus = corpusDir();
    if (!corpus)
        GTEST_SKIP() << "../shared/corpus is not beside the checkout";
    if (!privateMounts())
        GTEST_SKIP() << "no private mount namespace here (needs root or unprivileged user namespaces)";
    TempDir dir;
    const fs::path archive = dir / "archive";
    fs::create_directories(archive);
    ASSERT_EQ(::mount("tmpfs", archive.c_str(), "tmpfs", 0, "size=64m"), 0) << systemMessage(errno);
    // Documents, graphics and a few office documents, in folders of different depths.
    fs::create_directories(archive / "letters");
    fs::create_directories(archive / "pictures" / "1990" / "march");
    fs::copy(*corpus / "wp", archive / "letters" / "wp", fs::copy_options::recursive);
    fs::copy(*corpus / "wpg", archive / "pictures" / "1990" / "march" / "wpg", fs::copy_options::recursive);
    fs::create_directories(archive / "office");
    for (const char *name : {"testRTF.rtf", "testWORD.docx", "test.html"})
        fs::copy(*corpus / "office" / name, archive / "office" / name);
    ASSERT_EQ(::mount(nullptr, archive.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0)
        << systemMessage(errno);
    ASSERT_NE(::access(archive.c_str(), W_OK), 0) << "the archive must be read-only";
    const std::set<fs::path> inputs = filesBelow(archive);

    const fs::path tree = dir / "converted";
    const fs::path report = dir / "first.jsonl";
    qputenv("TMPDIR", QByteArray::fromStdString((dir / "tmp").string()));
    fs::create_directories(dir / "tmp");
    const Outcome first =
        convert({"--jobs", "2", "--output-dir", q(tree), "--report", q(report), q(archive)});
    ASSERT_NE(first.status, -1) << first.out;

    std::size_t lines = 0;
    const auto firstRecords = records(report, lines);
    EXPECT_EQ(lines, inputs.size()) << "one line per input";
    std::size_t converted = 0;
    for (const auto &input : inputs) {
        SCOPED_TRACE(input.string());
        ASSERT_TRUE(firstRecords.contains(input));
        const QJsonObject &record = firstRecords.at(input);
        const std::string status = record.value("status").toString().toStdString();
        EXPECT_TRUE(status == "converted" || status == "converted with losses" || status == "failed" ||
                    status == "skipped")
            << status;
        if (status == "failed" || status == "skipped") {
            EXPECT_EQ(record.value("reason").toString().toStdString().find("read-only"), std::string::npos)
                << "nothing is written beside the inputs";
            continue;
        }
        ++converted;
        const fs::path output = record.value("output").toString().toStdString();
        EXPECT_EQ(output.parent_path(), tree / input.parent_path().lexically_relative(archive)) << "mirrored";
        EXPECT_TRUE(fs::is_regular_file(output));
    }
    // The corpus holds a few documents that fail on their own; most convert.
    EXPECT_GT(converted, inputs.size() * 3 / 4);
    EXPECT_EQ(filesBelow(archive), inputs);
    EXPECT_TRUE(fs::is_empty(dir / "tmp")) << "nothing left in the temporary folder";

    const std::set<fs::path> made = filesBelow(tree);
    const fs::path again = dir / "again.jsonl";
    const Outcome second = convert(
        {"--jobs", "2", "--skip-existing", "--output-dir", q(tree), "--report", q(again), q(archive)});
    const auto secondRecords = records(again, lines);
    EXPECT_EQ(lines, inputs.size());
    for (const auto &[input, record] : secondRecords) {
        const std::string before = firstRecords.at(input).value("status").toString().toStdString();
        const std::string now = record.value("status").toString().toStdString();
        EXPECT_EQ(now, before.starts_with("converted") ? "skipped" : before) << input << ": converted again";
    }
    EXPECT_EQ(filesBelow(tree), made) << "no numbered copy, nothing new:\n" << second.out;
    EXPECT_NE(second.out.find("0 converted"), std::string::npos) << second.out;

    std::multiset<fs::path> sharded;
    for (const char *shard : {"1/2", "2/2"}) {
        const Outcome listing = convert({"--dry-run", "--shard", shard, q(archive)});
        std::istringstream rows(listing.out);
        for (std::string row; std::getline(rows, row);)
            sharded.insert(row.substr(0, row.find('\t')));
    }
    EXPECT_EQ(std::set<fs::path>(sharded.begin(), sharded.end()), inputs);
    EXPECT_EQ(sharded.size(), inputs.size()) << "each file in exactly one shard";
}
