// What the user sees, and what is left on disk, when converters or the file system misbehave: the
// application's engine with the real converters, or stand-ins that crash, hang or babble.

#include "FakeTools.h"
#include "OdtFile.h"
#include "ScriptedPrompter.h"
#include "app/AppDelegate.h"
#include "settings/Settings.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <QThreadPool>
#include <QTimer>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <set>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

const fs::path samples = QM_SAMPLES_DIR;
const fs::path graphic = fs::path(QM_SHARED_DIR) / "corpus" / "wpg" / "WPG.wpg";

// Mounts made here vanish with the test process: it gets a mount namespace of its own.
bool mountTmpfs(const fs::path &at, const std::string &options)
{
    static const bool isolated =
        ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    fs::create_directories(at);
    return isolated && ::mount("tmpfs", at.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

bool remountReadOnly(const fs::path &at)
{
    return ::mount(nullptr, at.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

// Takes every byte a file system has left.
void fill(const fs::path &file)
{
    const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const std::string block(4096, 'f');
    while (::write(fd, block.data(), block.size()) > 0) {
    }
    ::close(fd);
}

// The real wpd2odt, except that files whose arguments mention `held` wait (up to five minutes)
// until `go` exists.
void holdWpd2odt(FakeTools &tools, const std::string &held, const fs::path &go)
{
    tools.add("wpd2odt", "case \"$*\" in *" + held + "*) i=0; while [ ! -e '" + go.string() +
                             "' ] && [ $i -lt 30000 ]; do sleep 0.01; i=$((i+1)); done;; esac\n"
                             "exec '" QM_TOOLS_DIR "/wpd2odt' \"$@\"");
}

class Faults : public ::testing::Test {
protected:
    Faults()
        : settings(std::make_unique<QSettings>(QString::fromStdString((dir / "settings.conf").string()),
                                               QSettings::IniFormat)),
          delegate(prompter, revealer, settings)
    {
        ConversionTools::overrideProgramFolder({});
    }
    ~Faults() override { ConversionTools::overrideProgramFolder({}); }

    void SetUp() override
    {
        if (!fs::exists(samples / "min51.wp5"))
            GTEST_SKIP() << "needs the WordPerfect samples beside the checkout";
    }

    // One input of each job (WordPerfect to ODT and to RTF, graphic to PNG, ODT to WordPerfect 6) in
    // `folder`, each converted with its own setting; returns "message / informative" of each alert.
    std::vector<std::string> convertOneOfEach(const fs::path &folder)
    {
        struct Row {
            const char *name;
            QString key, target;
        };
        const Row rows[] = {{"Letter.wp5", Settings::documentTargetKey, "odt"},
                            {"Memo.wp5", Settings::documentTargetKey, "rtf"},
                            {"Picture.wpg", Settings::graphicTargetKey, "png"},
                            {"Note.fodt", Settings::wordPerfectTargetKey, "wp6"}};
        std::vector<std::string> alerts;
        for (const auto &row : rows) {
            settings.defaults().setValue(row.key, row.target);
            const std::size_t before = prompter.shown.size();
            delegate.applicationOpen({folder / row.name});
            EXPECT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }));
            for (std::size_t i = before; i < prompter.shown.size(); ++i)
                alerts.push_back(prompter.shown[i].alert.message + " / " +
                                 prompter.shown[i].alert.informative);
        }
        return alerts;
    }

    void placeOneOfEach(const fs::path &folder)
    {
        fs::copy_file(samples / "min51.wp5", folder / "Letter.wp5");
        fs::copy_file(samples / "min51.wp5", folder / "Memo.wp5");
        fs::copy_file(graphic, folder / "Picture.wpg");
        writeFile(folder / "Note.fodt", Odt{.body = "<text:p>A note.</text:p>"}.flat());
    }

    static inline const std::set<std::string> oneOfEach = {"Letter.wp5", "Memo.wp5", "Picture.wpg",
                                                           "Note.fodt"};

    TempDir dir;
    Settings settings;
    ScriptedPrompter prompter;
    RecordingRevealer revealer;
    AppDelegate delegate;
};

const std::string unableToConvert = " / It may be a file type that the conversion software cannot read.";

} // namespace

// A full disk, then a read-only one: each job fails with the system's words or its own, and leaves
// the folder as it was.
TEST_F(Faults, AFullOrReadOnlyDiskFailsEachJobAndIsLeftAsItWas)
{
    if (!fs::exists(graphic))
        GTEST_SKIP() << "needs ../shared/corpus/wpg beside the checkout";
    for (const int error : {ENOSPC, EROFS}) {
        SCOPED_TRACE(systemMessage(error));
        const fs::path disk = dir / std::to_string(error);
        if (!mountTmpfs(disk, "size=1m"))
            GTEST_SKIP() << "cannot mount a small file system here (needs root in a mount namespace)";
        placeOneOfEach(disk);
        auto expected = oneOfEach;
        if (error == ENOSPC) {
            fill(disk / "filler");
            expected.insert("filler");
        } else {
            ASSERT_TRUE(remountReadOnly(disk));
        }
        EXPECT_EQ(convertOneOfEach(disk), (std::vector<std::string>{
                                              "I was unable to convert Letter.wp5." + unableToConvert,
                                              "I could not convert Memo.wp5. / " + systemMessage(error),
                                              "I could not convert Picture.wpg. / " + systemMessage(error),
                                              "I was unable to convert Note.fodt." + unableToConvert,
                                          }));
        EXPECT_EQ(namesIn(disk), expected) << "no output, no temporary file";
    }
    EXPECT_TRUE(revealer.revealed.empty());
}

TEST_F(Faults, ConvertersThatCrashOrBabbleAreJudgedByWhatTheyLeave)
{
    if (!fs::exists(graphic))
        GTEST_SKIP() << "needs ../shared/corpus/wpg beside the checkout";
    placeOneOfEach(dir.path());
    FakeTools tools;
    // Crashing after a partial write into a temporary file, as a real converter would die.
    for (const char *tool : {"wpd2odt", "wpg2svg", "odt2wp5"})
        tools.add(tool, "eval out=\\${$#}; printf partial > \"$out.part\"; kill -SEGV $$");
    EXPECT_EQ(convertOneOfEach(dir.path()), (std::vector<std::string>{
                                                "I was unable to convert Letter.wp5." + unableToConvert,
                                                "I was unable to convert Memo.wp5." + unableToConvert,
                                                "I was unable to convert Picture.wpg." + unableToConvert,
                                                "I was unable to convert Note.fodt." + unableToConvert,
                                            }));
    for (const auto &name : namesIn(dir.path()))
        EXPECT_FALSE(name.ends_with(".odt") || name.ends_with(".rtf") || name.ends_with(".png") ||
                     name.ends_with(".wp6"))
            << name << " was left by a crash";

    // Garbage: where the tool writes the destination itself, a non-empty file is its success and
    // is kept; where Quillmorph reads the output (RTF, PNG), the garbage is caught. (It never opens
    // with '<': that would be taken for XML, and fail as XML, once in 256 runs.)
    tools.add("wpd2odt", "case $1 in --stdout) printf Z; head -c 2999 /dev/urandom;;\n"
                         "*) eval out=\\${$#}; head -c 3000 /dev/urandom > \"$out\";; esac");
    tools.add("wpg2svg", "head -c 3000 /dev/urandom");
    tools.add("odt2wp5", "eval out=\\${$#}; head -c 3000 /dev/urandom > \"$out\"");
    prompter.shown.clear();
    EXPECT_EQ(convertOneOfEach(dir.path()), (std::vector<std::string>{
                                                "I could not convert Memo.wp5. / The document is neither an "
                                                "OpenDocument package nor OpenDocument XML.",
                                                "I was unable to convert Picture.wpg." + unableToConvert,
                                            }));
    EXPECT_EQ(fs::file_size(dir / "Letter.odt"), 3000u);
    EXPECT_EQ(fs::file_size(dir / "Note.wp6"), 3000u);
    EXPECT_FALSE(fs::exists(dir / "Memo.rtf"));
    EXPECT_FALSE(fs::exists(dir / "Picture.png"));
}

TEST_F(Faults, AHungConverterHoldsOnlyItsOwnFile)
{
    FakeTools tools;
    const fs::path go = tools.work("go");
    holdWpd2odt(tools, "Hung", go);
    fs::copy_file(samples / "min51.wp5", dir / "Hung.wp5");
    fs::copy_file(samples / "min51.wp5", dir / "Quick.wp5");
    fs::copy_file(samples / "min6.wpd", dir / "Later.wpd");
    delegate.applicationOpen({dir / "Hung.wp5", dir / "Quick.wp5"});
    ASSERT_TRUE(waitUntil([&] { return revealer.revealed.size() == 1; }));
    // The interface still takes new work and finishes it while the converter hangs.
    delegate.applicationOpen({dir / "Later.wpd"});
    ASSERT_TRUE(waitUntil([&] { return revealer.revealed.size() == 2; }));
    EXPECT_EQ(delegate.pendingConversions, 1);
    EXPECT_FALSE(fs::exists(dir / "Hung.odt"));
    writeFile(go, "");
    ASSERT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }));
    EXPECT_GT(fs::file_size(dir / "Hung.odt"), 0u);
    EXPECT_TRUE(prompter.shown.empty());
}

TEST_F(Faults, InputsRemovedOrReplacedWhileQueuedAreReadWhenTheirTurnComes)
{
    FakeTools tools;
    const fs::path go = tools.work("go");
    holdWpd2odt(tools, "Hold", go);
    // Every worker busy, so that the next files wait in the queue.
    fs::copy_file(samples / "min51.wp5", dir / "Hold 0.wp5");
    delegate.applicationOpen({dir / "Hold 0.wp5"});
    const int workers = QThreadPool::globalInstance()->maxThreadCount();
    std::vector<fs::path> held;
    for (int i = 1; i < workers; ++i) {
        held.push_back(dir / ("Hold " + std::to_string(i) + ".wp5"));
        fs::copy_file(samples / "min51.wp5", held.back());
    }
    delegate.applicationOpen(held);
    ASSERT_TRUE(waitUntil([&] { return QThreadPool::globalInstance()->activeThreadCount() == workers; }));
    for (const char *name : {"Removed.wp5", "Replaced.wp5", "Swapped.wp5"})
        fs::copy_file(samples / "min51.wp5", dir / name);
    delegate.applicationOpen({dir / "Removed.wp5", dir / "Replaced.wp5", dir / "Swapped.wp5"});
    EXPECT_EQ(delegate.pendingConversions, workers + 3);

    fs::remove(dir / "Removed.wp5");
    fs::copy_file(samples / "min6.wpd", dir / "Replaced.wp5", fs::copy_options::overwrite_existing);
    writeFile(dir / "Swapped.wp5", "no longer a document");
    writeFile(go, "");
    ASSERT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }));

    std::set<std::string> alerts; // in the order the two finish
    for (const auto &shown : prompter.shown)
        alerts.insert(shown.alert.message + " / " + shown.alert.informative);
    EXPECT_EQ(alerts, (std::set<std::string>{
                          "I was unable to convert Removed.wp5." + unableToConvert,
                          "I was unable to convert Swapped.wp5." + unableToConvert,
                      }));
    EXPECT_GT(fs::file_size(dir / "Replaced.odt"), 0u) << "the new content is converted";
    EXPECT_FALSE(fs::exists(dir / "Removed.odt"));
    EXPECT_FALSE(fs::exists(dir / "Swapped.odt"));
    EXPECT_EQ(revealer.revealed.size(), static_cast<std::size_t>(workers + 1));
}

TEST_F(Faults, OddNamesAndSymbolicLinksConvertBesideWhatTheUserDropped)
{
    const std::string longest(251, 'L');
    const std::string odd[] = {"with spaces.wp5", "quotes \"double\" 'single'.wp5",
                               "line\nbreak.wp5", "caf\xE9 latin-1.wp5",
                               longest + ".wp5",  std::string(255, 'M')};
    std::vector<fs::path> inputs;
    for (const auto &name : odd) {
        inputs.push_back(dir / name);
        fs::copy_file(samples / "min51.wp5", inputs.back());
    }
    // Links: to a document elsewhere, to nothing; and outputs that are links already.
    fs::create_directories(dir / "elsewhere");
    fs::copy_file(samples / "min51.wp5", dir / "elsewhere" / "real.wp5");
    writeFile(dir / "elsewhere" / "precious.odt", "precious");
    fs::create_symlink("elsewhere/real.wp5", dir / "link.wp5");
    fs::create_symlink("nowhere.wp5", dir / "dangling.wp5");
    fs::copy_file(samples / "min51.wp5", dir / "Taken.wp5");
    fs::create_symlink("elsewhere/precious.odt", dir / "Taken.odt");
    fs::copy_file(samples / "min51.wp5", dir / "Pointer.wp5");
    fs::create_symlink("nowhere.odt", dir / "Pointer.odt");
    inputs.insert(inputs.end(),
                  {dir / "link.wp5", dir / "dangling.wp5", dir / "Taken.wp5", dir / "Pointer.wp5"});
    prompter.answer(0); // "OK" to the dangling link
    prompter.answer(1); // "Replace" for Taken.odt

    const LogTail tail;
    delegate.applicationOpen(inputs);
    ASSERT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }));

    std::vector<std::string> alerts;
    for (const auto &shown : prompter.shown)
        alerts.push_back(shown.alert.message);
    EXPECT_EQ(alerts, (std::vector<std::string>{"I could not read dangling.wp5.",
                                                "A file named \u201CTaken.odt\u201D already exists."}));
    const std::string outputs[] = {
        "with spaces.odt", "quotes \"double\" 'single'.odt", "line\nbreak.odt", "caf\xE9 latin-1.odt",
        longest + ".odt",  std::string(251, 'M') + ".odt",   "link.odt",        "Taken.odt",
        "Pointer.odt"};
    for (const auto &name : outputs) {
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(dir / name))) << name;
        EXPECT_GT(fs::file_size(dir / name), 0u) << name;
    }
    EXPECT_EQ(readFile(dir / "elsewhere" / "precious.odt"), "precious")
        << "a link is replaced, never its target";
    EXPECT_EQ(namesIn(dir / "elsewhere"), (std::set<std::string>{"real.wp5", "precious.odt"}));
    EXPECT_EQ(tail.messagesContaining("converted \u2192 ").size(), 9u);
}

TEST_F(Faults, AOneGigabyteDocumentConverts)
{
#ifndef QM_SLOW_TESTS
    GTEST_SKIP() << "a gigabyte through libwpd takes minutes under the sanitizers; in the full suite only";
#endif
    const fs::path big = dir / "Huge.wp5";
    fs::copy_file(samples / "min51.wp5", big);
    fs::resize_file(big, std::uintmax_t{1} << 30);
    bool responsive = false;
    delegate.applicationOpen({big});
    QTimer::singleShot(0, [&] { responsive = true; });
    ASSERT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }, 300));
    EXPECT_TRUE(responsive);
    EXPECT_TRUE(prompter.shown.empty());
    EXPECT_GT(fs::file_size(dir / "Huge.odt"), 0u);
    EXPECT_EQ(fs::file_size(big), std::uintmax_t{1} << 30) << "the input is untouched";
}

TEST_F(Faults, FilesOfOneNameDroppedTogetherNeverShareAnOutput)
{
    fs::copy_file(samples / "min51.wp5", dir / "Letter.wp5");
    fs::copy_file(samples / "min6.wpd", dir / "Letter.wpd");
    writeFile(dir / "Letter (1).odt", "older");
    delegate.applicationOpen({dir / "Letter.wp5", dir / "Letter.wpd"});
    ASSERT_TRUE(waitUntil([&] { return delegate.pendingConversions == 0; }));
    EXPECT_TRUE(prompter.shown.empty()) << "nothing stood there to ask about";
    EXPECT_EQ(std::set<fs::path>(revealer.revealed.begin(), revealer.revealed.end()),
              (std::set<fs::path>{dir / "Letter.odt", dir / "Letter (2).odt"}));
    EXPECT_NE(readFile(dir / "Letter.odt"), readFile(dir / "Letter (2).odt"));
    EXPECT_EQ(readFile(dir / "Letter (1).odt"), "older");
}
