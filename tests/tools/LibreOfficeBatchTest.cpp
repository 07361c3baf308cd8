#include "OdtFile.h"
#include "TestSupport.h"
#include "support/ConversionError.h"
#include "tools/LibreOfficeBatch.h"
#include "tools/OfficeImport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace testing_support;
using ConversionTools::LibreOfficeBatch;

namespace {

// A stand-in LibreOffice: converts every argument after --outdir DIR in
// order, judging each by its content: FAIL is refused with LibreOffice's
// words, HANG never finishes (its pid is left beside it), CRASH ends the
// office by a signal; anything else becomes "odt:" and the content.
const char *fakeSuite = R"(log="$(dirname "$0")/calls"
shift 5; outdir=$1; shift
echo "$*" >> "$log"
for f in "$@"; do
    name=$(basename "$f"); stem=${name%.*}; content=$(cat "$f")
    case "$content" in
        FAIL*) echo "Error: source file could not be loaded" >&2 ;;
        HANG*) sleep 600 & echo $! > "$(dirname "$0")/hung.pid"; wait ;;
        CRASH*) kill -SEGV $$ ;;
        *) printf 'odt:%s' "$content" > "$outdir/$stem.odt" ;;
    esac
done
)";

std::string outcomeOf(std::future<fs::path> &future)
{
    if (future.wait_for(100s) != std::future_status::ready)
        return "no answer";
    try {
        const fs::path odt = future.get();
        return readFile(odt) + " in " + odt.filename().string();
    } catch (const ConversionError &error) {
        return error.what();
    } catch (const std::exception &error) {
        return std::string("other error: ") + error.what();
    }
}

// Running, not a zombie waiting for a parent to collect it.
bool alive(pid_t pid)
{
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(stat, line))
        return false;
    const auto close = line.rfind(')');
    return close != std::string::npos && line.size() > close + 2 && line[close + 2] != 'Z';
}

// The folders left in `root`, each of which must hold exactly one ODT: a
// result. Anything else (a profile, a batch) counts as a failure.
std::size_t leftIn(const fs::path &root)
{
    std::size_t results = 0;
    for (const auto &entry : fs::directory_iterator(root)) {
        std::vector<fs::path> inside;
        for (const auto &file : fs::directory_iterator(entry.path()))
            inside.push_back(file.path());
        EXPECT_EQ(inside.size(), 1u) << entry.path();
        if (inside.size() == 1 && inside.front().extension() == ".odt")
            ++results;
    }
    return results;
}

class FakeBatch : public ::testing::Test {
protected:
    FakeBatch()
    {
        setenv("TMPDIR", (dir / "tmp").c_str(), 1);
        fs::create_directories(dir / "tmp");
        writeScript(dir / "suite" / "soffice", fakeSuite);
    }
    ~FakeBatch() override { unsetenv("TMPDIR"); }

    LibreOfficeBatch::Options options(int workers, std::size_t perStart)
    {
        LibreOfficeBatch::Options options;
        options.soffice = dir / "suite" / "soffice";
        options.workers = workers;
        options.documentsPerStart = perStart;
        options.documentTimeout = 3s;
        options.startAllowance = 0s;
        options.gatherDelay = 300ms;
        return options;
    }
    fs::path document(const std::string &relative, const std::string &content)
    {
        fs::create_directories((dir / "docs" / relative).parent_path());
        writeFile(dir / "docs" / relative, content);
        return dir / "docs" / relative;
    }
    // Each start's documents, one start per entry.
    std::vector<std::vector<std::string>> starts() const
    {
        std::vector<std::vector<std::string>> calls;
        std::istringstream lines(readFile(dir / "suite" / "calls"));
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            calls.emplace_back(std::istream_iterator<std::string>(words),
                               std::istream_iterator<std::string>());
        }
        return calls;
    }
    TempDir dir;
};

} // namespace

TEST_F(FakeBatch, DocumentsNamedAlikeShareStartsEachIntoItsOwnFolderAndWorkersKeepTheirProfiles)
{
    writeScript(dir / "suite" / "soffice",
                "echo \"$1\" >> '" + (dir / "profiles").string() + "'\n" + fakeSuite);
    std::vector<fs::path> inputs;
    for (int i = 0; i < 12; ++i) {
        const std::string folder = std::string(1, static_cast<char>('a' + i));
        inputs.push_back(document(folder + "/Letter" + (i % 2 ? ".rtf" : ".docx"), "text " + folder));
    }
    // LibreOffice reads plain text as UTF-8: Latin-1 text is handed over in UTF-8.
    inputs.push_back(document("m/Letter.txt", "caf\xe9"));
    {
        LibreOfficeBatch batch(options(2, 5));
        std::vector<std::future<fs::path>> results;
        for (const auto &input : inputs)
            results.push_back(batch.submit(input));
        for (std::size_t i = 0; i < 12; ++i) {
            const std::string folder = std::string(1, static_cast<char>('a' + i));
            EXPECT_EQ(outcomeOf(results[i]), "odt:text " + folder + " in Letter.odt");
        }
        EXPECT_EQ(outcomeOf(results[12]), "odt:caf\xc3\xa9 in Letter.odt");
        const auto counts = batch.counts();
        EXPECT_EQ(counts.converted, 13u);
        EXPECT_EQ(counts.failed + counts.retriedAlone + counts.hung, 0u);
    }
    std::size_t documents = 0;
    for (const auto &start : starts()) {
        EXPECT_LE(start.size(), 5u) << "a fresh LibreOffice after documentsPerStart";
        documents += start.size();
    }
    EXPECT_EQ(documents, 13u);
    EXPECT_LT(starts().size(), 13u) << "several documents per start";

    std::map<std::string, int> uses;
    std::istringstream lines(readFile(dir / "profiles"));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(
            line.starts_with("-env:UserInstallation=file://" + (dir / "tmp").string() + "/quillmorph-"))
            << line;
        ++uses[line];
    }
    EXPECT_LE(uses.size(), 2u) << "one profile per worker";
    int mostUsed = 0;
    for (const auto &[profile, count] : uses)
        mostUsed = std::max(mostUsed, count);
    EXPECT_GE(mostUsed, 2) << "three or more starts on two workers: a profile serves more than one";
    EXPECT_EQ(leftIn(dir / "tmp"), 13u) << "one folder per result; profiles and batches go with the batch";
}

TEST_F(FakeBatch, ABadDocumentFailsAloneAndItsNeighboursConvert)
{
    const std::string refused = "officeToolFailed(\"Error: source file could not be loaded\n\")";
    const std::string hung =
        "officeToolFailed(\"LibreOffice stopped making progress on this document and was ended.\")";
    struct Row {
        std::vector<std::string> contents;
        std::vector<std::string> outcomes;
    };
    const std::vector<Row> rows = {
        {{"one", "FAIL", "two"}, {"odt:one in 0.odt", refused, "odt:two in 2.odt"}},
        {{"one", "HANG", "two", "three"},
         {"odt:one in 0.odt", hung, "odt:two in 2.odt", "odt:three in 3.odt"}},
        {{"HANG", "one"}, {hung, "odt:one in 1.odt"}},
        {{"one", "CRASH", "two"}, {"odt:one in 0.odt", "officeToolFailed(\"\")", "odt:two in 2.odt"}},
        {{"FAIL", "HANG", "one", "FAIL", "two"},
         {refused, hung, "odt:one in 2.odt", refused, "odt:two in 4.odt"}},
    };
    int round = 0;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.contents.front() + "… " + std::to_string(row.contents.size()) + " documents");
        fs::remove(dir / "suite" / "calls");
        fs::remove(dir / "suite" / "hung.pid");
        const std::string folder = "round" + std::to_string(++round) + "/";
        LibreOfficeBatch batch(options(1, 50));
        std::vector<std::future<fs::path>> results;
        for (std::size_t i = 0; i < row.contents.size(); ++i)
            results.push_back(batch.submit(document(folder + std::to_string(i) + ".docx", row.contents[i])));
        for (std::size_t i = 0; i < row.contents.size(); ++i)
            EXPECT_EQ(outcomeOf(results[i]), row.outcomes[i]) << "document " << i;
        ASSERT_FALSE(starts().empty());
        EXPECT_EQ(starts().front().size(), row.contents.size()) << "all of them shared the first start";
        if (fs::exists(dir / "suite" / "hung.pid")) {
            const pid_t pid = std::stoi(readFile(dir / "suite" / "hung.pid"));
            EXPECT_FALSE(alive(pid)) << "the hung office's own child was killed with it";
        }
    }
}

TEST_F(FakeBatch, StoppingEndsAHungOfficeAndFailsWhatIsLeft)
{
    LibreOfficeBatch::Options settings = options(1, 50);
    settings.documentTimeout = 600s;
    settings.workRoot = dir / "work";
    fs::create_directories(settings.workRoot);
    std::vector<std::future<fs::path>> results;
    {
        LibreOfficeBatch batch(settings);
        results.push_back(batch.submit(document("first.docx", "one")));
        ASSERT_EQ(outcomeOf(results[0]), "odt:one in first.odt");
        results.push_back(batch.submit(document("stuck.docx", "HANG")));
        while (!fs::exists(dir / "suite" / "hung.pid"))
            std::this_thread::sleep_for(20ms);
        results.push_back(batch.submit(document("later.docx", "two")));
    }
    const std::string stopped =
        "officeToolFailed(\"The conversion was stopped before LibreOffice reached this document.\")";
    EXPECT_EQ(outcomeOf(results[1]), stopped);
    EXPECT_EQ(outcomeOf(results[2]), stopped);
    EXPECT_FALSE(alive(std::stoi(readFile(dir / "suite" / "hung.pid"))));
    EXPECT_EQ(leftIn(settings.workRoot), 1u) << "only the result of the first document";
}

// The companion's switch: while an OfficeBatchImport lives, officeToODT goes
// through its batch; documents announced ahead share starts, and what was
// converted and never taken is gone with it.
TEST_F(FakeBatch, AnArchiveRunsOfficeImportSharesStartsAndKeepsOnlyWhatWasTaken)
{
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{dir / "suite" / "soffice"});
    std::vector<fs::path> inputs;
    for (int i = 0; i < 8; ++i)
        inputs.push_back(
            document("run/" + std::to_string(i) + ".docx", i == 3 ? "FAIL" : "text " + std::to_string(i)));
    const auto outcome = [](const fs::path &input) {
        try {
            const fs::path odt = ConversionTools::officeToODT(input);
            return readFile(odt) + " in " + odt.filename().string();
        } catch (const ConversionError &error) {
            return std::string(error.what());
        }
    };
    std::vector<std::string> outcomes;
    {
        ConversionTools::OfficeBatchImport import(2);
        ASSERT_TRUE(import.enabled());
        for (const auto &input : inputs)
            import.prefetch(input);
        import.prefetch(inputs[0]);
        EXPECT_EQ(import.waiting(), 8u) << "a document announced twice is converted once";
        import.discard(inputs[7]);
        for (int i = 0; i < 6; ++i)
            outcomes.push_back(outcome(inputs[static_cast<std::size_t>(i)]));
        outcomes.push_back(outcome(document("run/late.rtf", "late")));
        EXPECT_EQ(import.waiting(), 1u) << "the sixth was announced and never asked for";
    }
    const std::vector<std::string> expected{
        "odt:text 0 in 0.odt", "odt:text 1 in 1.odt",
        "odt:text 2 in 2.odt", "officeToolFailed(\"Error: source file could not be loaded\n\")",
        "odt:text 4 in 4.odt", "odt:text 5 in 5.odt",
        "odt:late in late.odt"};
    EXPECT_EQ(outcomes, expected);
    std::size_t documents = 0;
    for (const auto &start : starts())
        documents += start.size();
    EXPECT_LT(starts().size(), documents) << "several documents per start";
    EXPECT_EQ(leftIn(dir / "tmp"), 6u)
        << "the results taken stay; the batch, the discarded and the untaken go";

    outcomes.clear();
    const std::size_t before = starts().size();
    EXPECT_EQ(outcome(inputs[0]), "odt:text 0 in 0.odt");
    EXPECT_EQ(starts().size(), before + 1) << "once it has ended, each call starts LibreOffice again";
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{});
    EXPECT_FALSE(ConversionTools::OfficeBatchImport(2).enabled())
        << "without LibreOffice there is nothing to batch";
    ConversionTools::overrideLibreOfficePlaces(std::nullopt);
}

TEST(RealLibreOfficeBatch, ConvertsCorpusDocumentsNamedAlikeAndFailsAMissingOneAlone)
{
    const auto soffice = ConversionTools::libreOfficeURL();
    const auto corpus = corpusDir();
    if (!soffice)
        GTEST_SKIP() << "LibreOffice is not installed (scripts/setup installs it)";
    if (!corpus)
        GTEST_SKIP() << "../shared/corpus is not beside the checkout";
    TempDir dir;
    setenv("TMPDIR", dir.path().c_str(), 1);
    const std::vector<fs::path> inputs{*corpus / "office" / "testWORD.doc",
                                       *corpus / "office" / "testWORD.docx", dir / "missing.rtf",
                                       *corpus / "office" / "testRTF.rtf", *corpus / "office" / "test.html"};
    LibreOfficeBatch::Options options;
    options.soffice = *soffice;
    options.workers = 1;
    options.gatherDelay = 500ms;
    {
        LibreOfficeBatch batch(options);
        std::vector<std::future<fs::path>> results;
        for (const auto &input : inputs)
            results.push_back(batch.submit(input));
        std::set<fs::path> made;
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            SCOPED_TRACE(inputs[i].filename().string());
            if (inputs[i].filename() == "missing.rtf") {
                EXPECT_THROW(results[i].get(), ConversionError);
                continue;
            }
            const fs::path odt = results[i].get();
            EXPECT_EQ(odt.stem(), inputs[i].stem());
            EXPECT_EQ(OdtFile::package(odt).read("mimetype"), "application/vnd.oasis.opendocument.text");
            made.insert(odt);
        }
        EXPECT_EQ(made.size(), 4u) << "testWORD.doc and testWORD.docx each keep their own";
        EXPECT_EQ(batch.counts().retriedAlone, 1u);
    }
    unsetenv("TMPDIR");
}
