#include "OfficeImport.h"

#include "ConversionTools.h"
#include "LibreOfficeBatch.h"
#include "PandocRtf.h"
#include "classify/InputFile.h"
#include "support/ConversionError.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QFile>
#include <QStringDecoder>
#include <QUrl>
#include <QUuid>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>

namespace fs = std::filesystem;

namespace ConversionTools {
namespace {

std::mutex placesMutex;
std::optional<std::vector<fs::path>> overriddenPlaces;

std::vector<fs::path> libreOfficePlaces()
{
    std::lock_guard lock(placesMutex);
    if (overriddenPlaces)
        return *overriddenPlaces;
    return {"/usr/bin/soffice", "/usr/lib/libreoffice/program/soffice"};
}

} // namespace

std::optional<fs::path> libreOfficeURL()
{
    for (const auto &place : libreOfficePlaces()) {
        if (isExecutableFile(place))
            return place;
    }
    return std::nullopt;
}

void overrideLibreOfficePlaces(std::optional<std::vector<fs::path>> places)
{
    std::lock_guard lock(placesMutex);
    overriddenPlaces = std::move(places);
}

} // namespace ConversionTools

namespace ConversionTools {
namespace {

const fs::path pandocPath = "/usr/bin/pandoc";

fs::path makeWorkFolder()
{
    const std::string uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    const fs::path folder = fs::path(QDir::tempPath().toStdString()) / ("quillmorph-" + uuid);
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw PlatformError(error.message());
    return folder;
}

std::optional<std::string> utf8(const std::string &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    if (decoder.hasError())
        return std::nullopt;
    return text.toStdString();
}

[[noreturn]] void failedWith(const std::string &stderrBytes, const char *whenNotText)
{
    throw ConversionError::officeToolFailed(utf8(stderrBytes).value_or(whenNotText));
}

bool fileThere(const fs::path &path)
{
    std::error_code error;
    return fs::exists(path, error);
}

// Plain text in UTF-8 where it is valid, else in Latin-1, whose every byte is a character.
QString textOf(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

// pandoc has no plain-text reader: each line becomes a paragraph of HTML.
fs::path textAsHTML(const fs::path &input, const fs::path &workFolder)
{
    QFile file(QString::fromStdString(input.string()));
    if (!file.open(QIODevice::ReadOnly))
        throw PlatformError(file.errorString().toStdString());
    const QByteArray bytes = file.readAll();
    const QString text = textOf(bytes);
    QString html = QStringLiteral("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"></head><body>\n");
    for (const QString &line : text.split(QChar('\n'))) {
        QString paragraph = line;
        if (paragraph.endsWith(QChar('\r')))
            paragraph.chop(1);
        html += QStringLiteral("<p>") + paragraph.toHtmlEscaped() + QStringLiteral("</p>\n");
    }
    html += QStringLiteral("</body></html>\n");
    const fs::path page = workFolder / "plain-text.html";
    QFile out(QString::fromStdString(page.string()));
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(html.toUtf8()) < 0)
        throw PlatformError(out.errorString().toStdString());
    return page;
}

fs::path rtfInUnicode(const fs::path &input, const fs::path &workFolder)
{
    QFile file(QString::fromStdString(input.string()));
    if (!file.open(QIODevice::ReadOnly))
        throw PlatformError(file.errorString().toStdString());
    const std::string rewritten = PandocRtf::prepared(file.readAll().toStdString());
    const fs::path copy = workFolder / "unicode.rtf";
    QFile out(QString::fromStdString(copy.string()));
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        out.write(rewritten.data(), static_cast<qint64>(rewritten.size())) !=
            static_cast<qint64>(rewritten.size()))
        throw PlatformError(out.errorString().toStdString());
    return copy;
}

fs::path withLibreOffice(const fs::path &soffice, fs::path input, const fs::path &workFolder,
                         const fs::path &expected)
{
    if (const auto text = legacyTextInUtf8(input)) {
        const fs::path copy = workFolder / input.filename();
        QFile out(QString::fromStdString(copy.string()));
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            out.write(text->data(), static_cast<qint64>(text->size())) != static_cast<qint64>(text->size()))
            throw PlatformError(out.errorString().toStdString());
        input = copy;
    }
    const std::string profile =
        QUrl::fromLocalFile(QString::fromStdString((workFolder / "loprofile").string()))
            .toString()
            .toStdString();
    const Output output = run(soffice,
                              {"-env:UserInstallation=" + profile, "--headless", "--convert-to", "odt",
                               "--outdir", workFolder.string(), input.string()},
                              "soffice");
    if (fileThere(expected))
        return expected;
    failedWith(output.stderr, "LibreOffice produced no output");
}

// pandoc sets a web page's <title> and an RTF file's document information
// (title, author, date) above the text, where neither a browser nor a word
// processor shows them. Its own template without that block keeps them in
// the document's properties only. Word documents keep the block: there a
// Title-styled paragraph of the text itself becomes the title.
std::optional<std::string> bodyOnlyTemplate()
{
    const std::string original = run(pandocPath, {"--print-default-template=odt"}, "pandoc").stdout;
    const auto start = original.find("$if(title)$");
    const auto abstract = original.find("$if(abstract)$", start == std::string::npos ? 0 : start);
    const auto end = original.find("$endif$", abstract == std::string::npos ? original.size() : abstract);
    if (start == std::string::npos || end == std::string::npos)
        return std::nullopt; // another pandoc's template: left as it is
    return original.substr(0, start) + original.substr(end + 7);
}

std::optional<fs::path> templateWithoutTitleBlock(const fs::path &workFolder)
{
    // Asked of pandoc once per run: it does not change while we run.
    static std::mutex mutex;
    static std::optional<std::optional<std::string>> cached;
    std::optional<std::string> bodyOnly;
    {
        std::lock_guard lock(mutex);
        if (!cached)
            cached = bodyOnlyTemplate();
        bodyOnly = *cached;
    }
    if (!bodyOnly)
        return std::nullopt;
    const fs::path path = workFolder / "body-only.template";
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bodyOnly->data(), static_cast<qint64>(bodyOnly->size())) !=
            static_cast<qint64>(bodyOnly->size()))
        throw PlatformError(file.errorString().toStdString());
    return path;
}

fs::path withPandoc(const fs::path &input, const fs::path &workFolder, const fs::path &expected)
{
    const auto reader = pandocReaderFor(input);
    if (!reader)
        throw ConversionError::officeToolFailed(
            "Word 97\u20132003 documents can only be read when LibreOffice is installed.");
    const bool plainText = *reader == "text";
    const fs::path source = plainText          ? textAsHTML(input, workFolder)
                            : *reader == "rtf" ? rtfInUnicode(input, workFolder)
                                               : input;
    std::vector<std::string> args{"--from", plainText ? "html" : *reader, "--to", "odt"};
    if (*reader == "html" || *reader == "rtf") {
        if (const auto bodyOnly = templateWithoutTitleBlock(workFolder))
            args.push_back("--template=" + bodyOnly->string());
    }
    args.insert(args.end(), {"--output", expected.string(), source.string()});
    const Output output = run(pandocPath, args, "pandoc");
    if (fileThere(expected))
        return expected;
    failedWith(output.stderr, "pandoc could not read the file");
}

} // namespace

std::optional<std::string> legacyTextInUtf8(const fs::path &input)
{
    if (pandocReaderFor(input) != "text")
        return std::nullopt;
    QFile file(QString::fromStdString(input.string()));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt; // LibreOffice will say what is wrong with it
    const QByteArray bytes = file.readAll();
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder.decode(bytes); // decoding happens only when the result is taken
    if (!decoder.hasError())
        return std::nullopt;
    return QString::fromLatin1(bytes).toStdString();
}

std::optional<std::string> pandocReaderFor(const fs::path &input)
{
    std::vector<std::uint8_t> header;
    try {
        header = readFileHeader(input, 512);
    } catch (const PlatformError &) {
    }
    const std::string ext = lowercaseExtension(input);
    const auto startsWith = [&header](std::initializer_list<std::uint8_t> signature) {
        return header.size() >= signature.size() &&
               std::equal(signature.begin(), signature.end(), header.begin());
    };
    if (startsWith({0xD0, 0xCF, 0x11, 0xE0}))
        return std::nullopt;
    if (startsWith({0x50, 0x4B, 0x03, 0x04}))
        return ext == "odt" ? "odt" : "docx"; // an OpenDocument package whose media type came late
    const InputFile::Kind kind = InputFile::classifyHeader("no-extension", header).kind;
    const std::string start(header.begin(),
                            header.begin() + static_cast<long>(std::min<std::size_t>(8, header.size())));
    if (start.find("{\\rtf") != std::string::npos)
        return "rtf";
    if (kind == InputFile::Kind::office)
        return "html"; // the classifier's HTML markers
    if (ext == "doc")
        return std::nullopt;
    if (ext == "docx" || ext == "rtf" || ext == "odt")
        return ext;
    if (ext == "html" || ext == "htm")
        return "html";
    return "text";
}

namespace {

// One prefetched or requested document: its result arrives on a batch
// thread, and whoever asked for it may have gone by then.
struct BatchSlot {
    std::mutex mutex;
    std::condition_variable arrived;
    std::optional<LibreOfficeBatch::Result> result;
    bool abandoned = false;
};

void removeResult(const LibreOfficeBatch::Result &result)
{
    if (const auto *odt = std::get_if<fs::path>(&result)) {
        std::error_code ignored;
        fs::remove_all(odt->parent_path(), ignored);
    }
}

} // namespace

struct OfficeBatchImport::Shared {
    std::unique_ptr<LibreOfficeBatch> batch;
    mutable std::mutex mutex;
    std::map<fs::path, std::shared_ptr<BatchSlot>> prefetched;

    ~Shared()
    {
        batch.reset(); // every completion has run once this returns
        for (const auto &[input, slot] : prefetched) {
            std::lock_guard lock(slot->mutex);
            if (slot->result)
                removeResult(*slot->result);
            slot->abandoned = true;
        }
    }

    std::shared_ptr<BatchSlot> submit(const fs::path &input)
    {
        auto slot = std::make_shared<BatchSlot>();
        batch->submit(input, [slot](LibreOfficeBatch::Result result) {
            std::lock_guard lock(slot->mutex);
            if (slot->abandoned) {
                removeResult(result);
                return;
            }
            slot->result = std::move(result);
            slot->arrived.notify_all();
        });
        return slot;
    }

    fs::path convert(const fs::path &input)
    {
        std::shared_ptr<BatchSlot> slot;
        {
            std::lock_guard lock(mutex);
            if (const auto found = prefetched.find(input); found != prefetched.end()) {
                slot = found->second;
                prefetched.erase(found);
            }
        }
        if (!slot)
            slot = submit(input);
        std::unique_lock lock(slot->mutex);
        slot->arrived.wait(lock, [&] { return slot->result.has_value(); });
        if (const auto *error = std::get_if<std::exception_ptr>(&*slot->result))
            std::rethrow_exception(*error);
        return std::get<fs::path>(*slot->result);
    }
};

namespace {

std::mutex activeMutex;
std::shared_ptr<OfficeBatchImport::Shared> activeImport;

std::shared_ptr<OfficeBatchImport::Shared> active()
{
    std::lock_guard lock(activeMutex);
    return activeImport;
}

} // namespace

OfficeBatchImport::OfficeBatchImport(int workers)
{
    const auto soffice = libreOfficeURL();
    if (!soffice)
        return;
    LibreOfficeBatch::Options options;
    options.soffice = *soffice;
    options.workers = std::max(1, workers);
    shared = std::make_shared<Shared>();
    shared->batch = std::make_unique<LibreOfficeBatch>(options);
    std::lock_guard lock(activeMutex);
    activeImport = shared;
}

OfficeBatchImport::~OfficeBatchImport()
{
    std::lock_guard lock(activeMutex);
    if (activeImport == shared)
        activeImport.reset();
    // A conversion still waiting keeps the batch until it has its result.
}

bool OfficeBatchImport::enabled() const
{
    return shared != nullptr;
}

void OfficeBatchImport::prefetch(const fs::path &input)
{
    if (!shared)
        return;
    std::lock_guard lock(shared->mutex);
    if (!shared->prefetched.contains(input))
        shared->prefetched.emplace(input, shared->submit(input));
}

void OfficeBatchImport::discard(const fs::path &input)
{
    if (!shared)
        return;
    std::shared_ptr<BatchSlot> slot;
    {
        std::lock_guard lock(shared->mutex);
        const auto found = shared->prefetched.find(input);
        if (found == shared->prefetched.end())
            return;
        slot = found->second;
        shared->prefetched.erase(found);
    }
    std::lock_guard lock(slot->mutex);
    if (slot->result)
        removeResult(*slot->result);
    slot->abandoned = true;
}

std::size_t OfficeBatchImport::waiting() const
{
    if (!shared)
        return 0;
    std::lock_guard lock(shared->mutex);
    return shared->prefetched.size();
}

fs::path officeToODT(const fs::path &input)
{
    if (const auto batched = active())
        return batched->convert(input);
    const fs::path workFolder = makeWorkFolder();
    std::string stem = input.filename().string();
    if (const auto dot = stem.rfind('.'); dot != std::string::npos && dot > 0)
        stem.erase(dot);
    const fs::path expected = workFolder / (stem + ".odt");
    if (const auto soffice = libreOfficeURL())
        return withLibreOffice(*soffice, input, workFolder, expected);
    return withPandoc(input, workFolder, expected);
}

} // namespace ConversionTools
