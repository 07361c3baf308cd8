#include "TestSupport.h"
#include "settings/Settings.h"

#include <gtest/gtest.h>

using testing_support::TempDir;

namespace {

class SettingsStore : public ::testing::Test {
protected:
    std::unique_ptr<Settings> fresh()
    {
        return std::make_unique<Settings>(std::make_unique<QSettings>(
            QString::fromStdString((dir / "Quillmorph.conf").string()), QSettings::IniFormat));
    }
    TempDir dir;
};

} // namespace

TEST_F(SettingsStore, NothingStoredGivesTheFallbacks)
{
    const auto settings = fresh();
    EXPECT_EQ(settings->documentTarget(), DocTarget::odt);
    EXPECT_EQ(settings->graphicTarget(), GraphicTarget::png);
    EXPECT_EQ(settings->wordPerfectTarget(), WPTarget::wp6);
    EXPECT_EQ(settings->rtfCharset(), RTFCharset::ansi);
    EXPECT_FALSE(settings->defaults().value(Settings::hideLibreOfficeNoticeKey, false).toBool());
}

TEST_F(SettingsStore, OnlyTheExactSecondRawValueSelectsTheSecondCase)
{
    const auto settings = fresh();
    struct Row {
        QString key;
        QString stored;
        bool second;
    };
    const Row rows[] = {
        {Settings::documentTargetKey, "rtf", true},    {Settings::documentTargetKey, "RTF", false},
        {Settings::documentTargetKey, "rtf ", false},  {Settings::documentTargetKey, "", false},
        {Settings::graphicTargetKey, "svg", true},     {Settings::graphicTargetKey, "jpg", false},
        {Settings::wordPerfectTargetKey, "wp5", true}, {Settings::wordPerfectTargetKey, "wp4", false},
        {Settings::rtfCharsetKey, "mac", true},        {Settings::rtfCharsetKey, "Mac", false},
        {Settings::rtfCharsetKey, "ansi", false},      {Settings::documentTargetKey, "odt", false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE((row.key + "=" + row.stored).toStdString());
        settings->defaults().setValue(row.key, row.stored);
        bool isSecond = false;
        if (row.key == Settings::documentTargetKey)
            isSecond = settings->documentTarget() == DocTarget::rtf;
        else if (row.key == Settings::graphicTargetKey)
            isSecond = settings->graphicTarget() == GraphicTarget::svg;
        else if (row.key == Settings::wordPerfectTargetKey)
            isSecond = settings->wordPerfectTarget() == WPTarget::wp5;
        else
            isSecond = settings->rtfCharset() == RTFCharset::mac;
        EXPECT_EQ(isSecond, row.second);
    }
}

TEST_F(SettingsStore, ValuesPersistAcrossInstancesAndAreNotCached)
{
    fresh()->defaults().setValue(Settings::graphicTargetKey, "svg");
    const auto reader = fresh();
    EXPECT_EQ(reader->graphicTarget(), GraphicTarget::svg);
    // Another writer (the settings window of a running app) changes the file.
    fresh()->defaults().setValue(Settings::graphicTargetKey, "png");
    EXPECT_EQ(reader->graphicTarget(), GraphicTarget::png);
}
