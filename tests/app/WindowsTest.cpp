#include "TestSupport.h"
#include "settings/Settings.h"
#include "app/SettingsWindowController.h"
#include "app/HelpWindowController.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QTextBrowser>
#include <QWidget>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

class Windows : public ::testing::Test {
protected:
    std::unique_ptr<Settings> store()
    {
        return std::make_unique<Settings>(std::make_unique<QSettings>(
            QString::fromStdString((dir / "settings.conf").string()), QSettings::IniFormat));
    }
    TempDir dir;
};

void pick(QComboBox *popUp, int index)
{
    popUp->setCurrentIndex(index);
    Q_EMIT popUp->activated(index);
}

} // namespace

TEST_F(Windows, SettingsShowTheStoreAndWriteEachChoiceAtOnce)
{
    auto settings = store();
    SettingsWindowController controller(*settings);
    EXPECT_EQ(controller.window()->windowTitle(), "Settings");
    EXPECT_EQ(controller.window()->minimumSize(), controller.window()->maximumSize()) << "not resizable";
    EXPECT_EQ(controller.docPopUp->itemText(1), "Rich Text \u2014 classic (.rtf)");
    for (QComboBox *popUp :
         {controller.docPopUp, controller.graphicPopUp, controller.wpPopUp, controller.charsetPopUp})
        EXPECT_EQ(popUp->currentIndex(), 0) << "an empty store shows the fallbacks";

    struct Row {
        QComboBox *popUp;
        QString key;
        QString second;
        QString first;
    };
    const Row rows[] = {
        {controller.docPopUp, Settings::documentTargetKey, "rtf", "odt"},
        {controller.graphicPopUp, Settings::graphicTargetKey, "svg", "png"},
        {controller.wpPopUp, Settings::wordPerfectTargetKey, "wp5", "wp6"},
        {controller.charsetPopUp, Settings::rtfCharsetKey, "mac", "ansi"},
    };
    for (const auto &row : rows) {
        pick(row.popUp, 1);
        EXPECT_EQ(store()->defaults().value(row.key).toString(), row.second);
    }
    EXPECT_EQ(settings->rtfCharset(), RTFCharset::mac);

    SettingsWindowController reopened(*store());
    EXPECT_EQ(reopened.docPopUp->currentIndex(), 1) << "a fresh start shows the stored choice";
    EXPECT_EQ(reopened.charsetPopUp->currentIndex(), 1);
    for (const auto &row : rows) {
        pick(row.popUp, 0);
        EXPECT_EQ(store()->defaults().value(row.key).toString(), row.first);
    }
}

TEST_F(Windows, SettingsWindowIsKeptWhenClosed)
{
    auto settings = store();
    SettingsWindowController controller(*settings);
    controller.showCentred();
    pick(controller.graphicPopUp, 1);
    controller.window()->close();
    controller.showCentred();
    EXPECT_TRUE(controller.window()->isVisible());
    EXPECT_EQ(controller.graphicPopUp->currentIndex(), 1);
}

TEST_F(Windows, HelpShowsThePageBesideTheProgramWithItsPicture)
{
    auto settings = store();
    ConversionTools::overrideProgramFolder({});
    ASSERT_TRUE(HelpWindowController::helpURL()) << "the build copies Help.html beside the programs";
    HelpWindowController controller(*settings);
    EXPECT_EQ(controller.window()->windowTitle(), "Quillmorph Help");
    EXPECT_EQ(controller.window()->size(), QSize(720, 820));
    EXPECT_TRUE(controller.webView->toPlainText().contains("What Quillmorph converts"));
    const QVariant picture =
        controller.webView->document()->resource(QTextDocument::ImageResource, QUrl("quillmorph-icon.png"));
    EXPECT_TRUE(picture.isValid() && !picture.value<QImage>().isNull())
        << "the page's picture loads by relative path";
}

TEST_F(Windows, HelpPrefersInstalledResourcesAndSaysWhenThereIsNone)
{
    auto settings = store();
    const fs::path bin = dir / "prefix" / "bin";
    fs::create_directories(bin / "Resources");
    ConversionTools::overrideProgramFolder(bin);
    {
        HelpWindowController controller(*settings);
        EXPECT_EQ(controller.webView->toPlainText().trimmed(), "Help file not found.");
    }
    writeFile(bin / "Resources" / "Help.html", "<p>beside the program</p>");
    EXPECT_EQ(HelpWindowController::helpURL(), bin / "Resources" / "Help.html");
    fs::create_directories(dir / "prefix" / "lib" / "quillmorph");
    writeFile(dir / "prefix" / "lib" / "quillmorph" / "Help.html", "<p>installed</p>");
    EXPECT_EQ(HelpWindowController::helpURL(), dir / "prefix" / "lib" / "quillmorph" / "Help.html");
    HelpWindowController controller(*settings);
    EXPECT_EQ(controller.webView->toPlainText().trimmed(), "installed");
    ConversionTools::overrideProgramFolder({});
}

TEST_F(Windows, HelpWindowComesBackWhereItWasLeft)
{
    ConversionTools::overrideProgramFolder({});
    {
        auto settings = store();
        HelpWindowController controller(*settings);
        controller.showWindow();
        controller.window()->resize(500, 600);
        controller.window()->close();
    }
    auto settings = store();
    HelpWindowController again(*settings);
    EXPECT_EQ(again.window()->size(), QSize(500, 600));
}
