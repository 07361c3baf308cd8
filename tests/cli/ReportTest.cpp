#include "Report.h"
#include "TestSupport.h"
#include "support/PlatformError.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <cstdio>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>

extern char **environ;

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace testing_support;

namespace {

std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::optional<QJsonObject> parsed(const std::string &line)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(line), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

// What Python, an independent reader, makes of each literal: the bytes
// os.fsencode recovers, in hex, one line per literal.
std::optional<std::vector<std::string>> pythonBytesOf(const std::vector<std::string> &literals)
{
    if (!fs::exists("/usr/bin/python3"))
        return std::nullopt;
    TempDir dir;
    std::string text;
    for (const auto &literal : literals)
        text += literal + "\n";
    writeFile(dir / "literals", text);
    const std::string command =
        "/usr/bin/python3 -c 'import json, os, sys\nfor l in open(sys.argv[1], encoding=\"utf-8\"):"
        " print(os.fsencode(json.loads(l)).hex())' " +
        (dir / "literals").string() + " > " + (dir / "bytes").string();
    if (std::system(command.c_str()) != 0)
        return std::nullopt;
    return linesOf(readFile(dir / "bytes"));
}

std::string hexOf(const std::string &bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (const unsigned char byte : bytes) {
        hex += digits[byte >> 4];
        hex += digits[byte & 15];
    }
    return hex;
}

Report::Entry fullEntry()
{
    Report::Entry entry;
    entry.input = "/archive/Akten 1999/Brief \"M\u00fcller\".wpd";
    entry.size = 123456789012;
    entry.sha256 = std::string(64, 'c');
    entry.kind = "wpDocument";
    entry.family = "WordPerfect 5";
    entry.job = "WordPerfect document \u2192 ODT";
    entry.output = "/out/Akten 1999/Brief \"M\u00fcller\".odt";
    entry.outputSha256 = std::string(64, 'd');
    entry.status = Report::Status::convertedWithLosses;
    entry.losses = {"footnotes", "a picture\nin a frame"};
    entry.milliseconds = 1234;
    return entry;
}

} // namespace

TEST(Report, StringsAreEscapedAndBadBytesKeptRecoverably)
{
    struct Row {
        std::string bytes;
        std::string literal;
    };
    const std::vector<Row> rows = {
        {"plain name.wpd", "\"plain name.wpd\""},
        {"say \"hi\" \\ there", "\"say \\\"hi\\\" \\\\ there\""},
        {"a\nb\tc\rd\be\ff", "\"a\\nb\\tc\\rd\\be\\ff\""},
        {std::string("\x01\x1f\x7f", 3), "\"\\u0001\\u001f\x7f\""},
        {std::string("nul\0byte", 8), "\"nul\\u0000byte\""},
        {"caf\xc3\xa9 \xe6\x97\xa5 \xf0\x9f\x93\x84", "\"caf\xc3\xa9 \xe6\x97\xa5 \xf0\x9f\x93\x84\""},
        {"caf\xe9.wpd", "\"caf\\udce9.wpd\""},
        {"\xff\xfe", "\"\\udcff\\udcfe\""},
        {"\xc0\xaf", "\"\\udcc0\\udcaf\""},                       // overlong '/'
        {"\xed\xa0\x80", "\"\\udced\\udca0\\udc80\""},            // a surrogate spelled in UTF-8
        {"\xf4\x90\x80\x80", "\"\\udcf4\\udc90\\udc80\\udc80\""}, // past U+10FFFF
        {"end \xe6\x97", "\"end \\udce6\\udc97\""},               // cut short
        {"\xe6\x97\xa5\x80", "\"\xe6\x97\xa5\\udc80\""},          // a stray continuation byte
    };
    std::vector<std::string> literals;
    for (const auto &row : rows) {
        SCOPED_TRACE(hexOf(row.bytes));
        EXPECT_EQ(Report::jsonString(row.bytes), row.literal);
        literals.push_back(Report::jsonString(row.bytes));
        EXPECT_TRUE(parsed("{\"v\":" + literals.back() + "}")) << "valid JSON";
    }
    const auto recovered = pythonBytesOf(literals);
    if (!recovered)
        GTEST_SKIP() << "python3 is not installed to read the literals back";
    ASSERT_EQ(recovered->size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ((*recovered)[i], hexOf(rows[i].bytes))
            << "Python gets the very bytes back from " << literals[i];
}

TEST(Report, ALineHoldsEveryFieldWithNullsWhereNothingIs)
{
    Report::Entry failed;
    failed.input = "/archive/odd.bin";
    failed.size = 7;
    failed.kind = "unknown";
    failed.family = "unknown";
    failed.status = Report::Status::failed;
    failed.reason = "I could not read odd.bin.";
    struct Row {
        Report::Entry entry;
        const char *status;
    };
    const Row rows[] = {{fullEntry(), "converted with losses"}, {failed, "failed"}};
    const QStringList keys{"input",  "size",         "sha256", "kind",   "family", "job",
                           "output", "outputSha256", "status", "reason", "losses", "milliseconds"};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.status);
        const std::string text = Report::line(row.entry);
        ASSERT_TRUE(text.ends_with("}\n"));
        EXPECT_EQ(text.find('\n'), text.size() - 1) << "one line";
        const auto object = parsed(text);
        ASSERT_TRUE(object) << text;
        QStringList found = object->keys();
        QStringList expected = keys;
        found.sort();
        expected.sort();
        EXPECT_EQ(found, expected);
        const Report::Entry &entry = row.entry;
        EXPECT_EQ(object->value("input").toString().toStdString(), entry.input.string());
        EXPECT_EQ(object->value("size").toInteger(), static_cast<qint64>(entry.size));
        EXPECT_EQ(object->value("status").toString().toStdString(), row.status);
        EXPECT_EQ(object->value("milliseconds").toInteger(), entry.milliseconds);
        EXPECT_EQ(object->value("kind").toString().toStdString(), entry.kind);
        const auto stringOrNull = [&](const char *key, const std::optional<std::string> &value) {
            if (value)
                EXPECT_EQ(object->value(key).toString().toStdString(), *value) << key;
            else
                EXPECT_TRUE(object->value(key).isNull()) << key;
        };
        stringOrNull("sha256", entry.sha256.empty() ? std::nullopt : std::optional(entry.sha256));
        stringOrNull("job", entry.job.empty() ? std::nullopt : std::optional(entry.job));
        stringOrNull("output", entry.output ? std::optional(entry.output->string()) : std::nullopt);
        stringOrNull("outputSha256", entry.outputSha256);
        stringOrNull("reason", entry.reason);
        const QJsonArray losses = object->value("losses").toArray();
        ASSERT_EQ(static_cast<std::size_t>(losses.size()), entry.losses.size());
        for (std::size_t i = 0; i < entry.losses.size(); ++i)
            EXPECT_EQ(losses[static_cast<qsizetype>(i)].toString().toStdString(), entry.losses[i]);
    }
}

// The whole file, read in pieces, not just its first buffer.
TEST(Report, HashesFilesWithSHA256)
{
    TempDir dir;
    writeFile(dir / "file", std::string(1000000, 'a'));
    EXPECT_EQ(Report::sha256Of(dir / "file"),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_THROW(Report::sha256Of(dir / "missing"), PlatformError);
}

TEST(Report, AReportCutByAKillLosesOnlyItsCutLineWhenAppendedTo)
{
    TempDir dir;
    const std::string added = Report::line(fullEntry());
    struct Row {
        std::string before;
        std::string after;
    };
    const Row rows[] = {
        {"", added},
        {"{\"a\":1}\n", "{\"a\":1}\n" + added},
        {"{\"a\":1}\n{\"input\":\"/arch", "{\"a\":1}\n" + added},
        {"{\"input\":\"/arch", added},
        {std::string(10000, 'x') + "\n" + std::string(9000, 'y'), std::string(10000, 'x') + "\n" + added},
        {"{\"a\":1}\n      ", "{\"a\":1}\n" + added},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.before.substr(0, 20));
        writeFile(dir / "report.jsonl", row.before);
        Report::Writer writer(dir / "report.jsonl");
        writer.write(fullEntry());
        EXPECT_EQ(readFile(dir / "report.jsonl"), row.after);
    }
    EXPECT_THROW(Report::Writer(dir / "no folder" / "report.jsonl"), PlatformError);
}

TEST(Report, ThreadsShareOneWriterLineByLine)
{
    TempDir dir;
    {
        Report::Writer writer(dir / "report.jsonl");
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&writer, t] {
                Report::Entry entry = fullEntry();
                for (int i = 0; i < 250; ++i) {
                    entry.milliseconds = t * 1000 + i;
                    writer.write(entry);
                }
            });
        }
        for (auto &thread : threads)
            thread.join();
    }
    const auto lines = linesOf(readFile(dir / "report.jsonl"));
    ASSERT_EQ(lines.size(), 1000u);
    std::set<qint64> seen;
    std::size_t offset = 0;
    for (const auto &line : lines) {
        const auto object = parsed(line);
        ASSERT_TRUE(object) << line;
        seen.insert(object->value("milliseconds").toInteger());
        const std::size_t start = offset + line.find('{');
        const std::size_t end = offset + line.size(); // the newline
        EXPECT_EQ(start / 4096, end / 4096) << "a line within one page, so that a kill cannot cut it";
        offset = end + 1;
    }
    EXPECT_EQ(seen.size(), 1000u);
}

// Two writers in other processes share one report and are killed while
// they write, ten times over: what is left is whole lines only. (Without
// the page rule about one kill in twenty cuts a line.)
TEST(Report, AKilledRunLeavesWholeLinesOnly)
{
    TempDir dir;
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        const fs::path report = dir / ("report" + std::to_string(round) + ".jsonl");
        std::vector<pid_t> writers;
        for (const char *tag : {"one", "two"}) {
            std::string program = REPORT_FLOOD;
            std::string file = report.string();
            std::string name = tag;
            char *argv[] = {program.data(), file.data(), name.data(), nullptr};
            pid_t pid = 0;
            ASSERT_EQ(posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv, environ), 0);
            writers.push_back(pid);
        }
        const auto bothWriting = [&report] {
            const std::string text = fs::exists(report) ? readFile(report) : "";
            return text.find("/archive/one/") != std::string::npos &&
                   text.find("/archive/two/") != std::string::npos;
        };
        const auto deadline = std::chrono::steady_clock::now() + 60s;
        while (!bothWriting() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + 3 * round));
        for (const pid_t pid : writers) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        const std::string text = readFile(report);
        ASSERT_FALSE(text.empty());
        const std::string tail = text.substr(text.rfind('\n') + 1);
        EXPECT_EQ(tail.find_first_not_of(' '), std::string::npos)
            << "whole lines, at most blanks after them: " << tail;
        std::map<std::string, int> perWriter;
        for (const auto &line : linesOf(text.substr(0, text.size() - tail.size()))) {
            const auto object = parsed(line);
            ASSERT_TRUE(object) << "not a whole line: " << line;
            ++perWriter[object->value("input").toString().section('/', 2, 2).toStdString()];
        }
        EXPECT_EQ(perWriter.size(), 2u);
    }
}
