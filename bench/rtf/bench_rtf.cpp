// Speed of the classic RTF rewriting, and of the whole WordPerfect -> RTF
// job against LibreOffice converting the same document to RTF.
#include "engine/ClassicRTF.h"
#include "engine/DocumentSteps.h"
#include "render/RTFDowngrade.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

// The best of a few runs: the least disturbed by the rest of the machine.
double bestSeconds(int runs, const std::function<void()> &work)
{
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        const auto start = Clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return best;
}

// 20 MiB of what our writer produces, with the dialect words a platform
// writer would add, so every pass of the rewriting has work to do.
std::string twentyMebibytes()
{
    const std::string header = "{\\rtf1\\ansi\\ansicpg1252\\cocoartf2761\n\\cocoatextscaling0\\cocoaplatform0"
                               "{\\fonttbl\\f0\\fnil Times New Roman;}\n{\\colortbl;\\red0\\green0\\blue0;}\n"
                               "{\\*\\expandedcolortbl;;}\n\\deftab720\n";
    const std::string paragraph =
        "\\pard\\tx566\\pardeftab720\\partightenfactor0\\pardirnatural\\ql\\li0\\ri0\\fi0\\sb0\\sa0"
        "{\\f0\\fs24\\cf1 Caf\\'e9 \\'93quoted\\'94 na\\'efve \\u9786\\'3f r\\'e9sum\\'e9 and plain words "
        "that fill a line of ordinary text in a letter}{\\*\\generator x;}\\par\n";
    std::string rtf = header;
    rtf.reserve((20u << 20) + paragraph.size());
    while (rtf.size() < (20u << 20))
        rtf += paragraph;
    return rtf + "}";
}

void benchClassic()
{
    const std::string rtf = twentyMebibytes();
    const double megabytes = double(rtf.size()) / 1e6;
    for (const RTFDowngrade::Charset charset : {RTFDowngrade::Charset::ansi, RTFDowngrade::Charset::mac}) {
        std::size_t size = 0;
        const double seconds = bestSeconds(3, [&] { size = RTFDowngrade::classic(rtf, charset).size(); });
        std::printf("classic %-4s: %.1f MB in %.3f s = %.1f MB/s (output %.1f MB)\n",
                    charset == RTFDowngrade::Charset::mac ? "mac" : "ansi", megabytes, seconds,
                    megabytes / seconds, double(size) / 1e6);
    }
}

fs::path largestCorpusDocument()
{
    fs::path largest;
    std::uintmax_t size = 0;
    const fs::path corpus = fs::path(QM_SOURCE_DIR) / ".." / "shared" / "corpus" / "wp";
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(corpus, error))
        if (entry.is_regular_file() && entry.file_size() > size &&
            entry.path().filename().string().find("crypt") != 0) {
            size = entry.file_size();
            largest = entry.path();
        }
    return largest;
}

void benchJob()
{
    const fs::path source = largestCorpusDocument();
    if (source.empty()) {
        std::printf("whole job: skipped, the shared corpus is not beside the checkout\n");
        return;
    }
    QTemporaryDir work;
    const fs::path ours = fs::path(work.path().toStdString()) / "ours.rtf";
    const double quillmorph = bestSeconds(3, [&] {
        const Decoded decoded = Converter::steps::documentBytes(source, std::nullopt);
        Converter::steps::writeClassicRTF(decoded, RTFCharset::ansi, ours);
    });
    std::printf("whole job, %s (%ju bytes): Quillmorph %.2f s\n", source.filename().c_str(),
                static_cast<std::uintmax_t>(fs::file_size(source)), quillmorph);

    const QString profile = "-env:UserInstallation=file://" + work.path() + "/profile";
    const auto runOffice = [&] {
        QProcess office;
        office.start("soffice", {profile, "--headless", "--convert-to", "rtf", "--outdir",
                                 work.path() + "/office", QString::fromStdString(source.string())});
        office.waitForFinished(600'000);
    };
    runOffice(); // the first run builds the profile; it is not what a user waits for each time
    const double soffice = bestSeconds(3, runOffice);
    std::printf("whole job, soffice --convert-to rtf: %.2f s\n", soffice);
    std::printf("ratio soffice/Quillmorph: %.2f (above 1: Quillmorph is faster)\n", soffice / quillmorph);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchClassic();
    benchJob();
    return 0;
}
