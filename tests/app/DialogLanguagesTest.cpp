// The dialog texts as they ship, in every language: complete for the resource library's own
// check, and drawn by the real dialog offscreen with every glyph taken from a font that has
// it (the asked-for face or a fallback) and every text inside its control.
#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <QGlyphRun>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRawFont>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "app/ProductConfiguration.h"
#include "app/UpdaterApp.h"
#include "engine/UpdateEngine.h"
#include "foundation/TextConversion.h"
#include "graphics/SharedGDIObject.h"
#include "resourcelib/ManagerImpl.h"
#include "resourcelib/ResourceManagerHolder.h"
#include "support/HiveFolder.h"
#include "support/TestFiles.h"
#include "ui/Label.h"
#include "ui/UiTestApplication.h"
#include "ui/UpdaterDialog.h"

using namespace AppResources;

// Readable failures: QStrings print as their text.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace {

using TestSupport::WaitFor;

constexpr const wchar_t* kLongProductName = L"Lumetta Player Professional Edition";

struct Language {
    const wchar_t* name;
    const wchar_t* title;
    int32_t locale;
};
const Language kLanguages[] = {
    {L"en-us", L"English", 1033}, {L"de-de", L"Deutsch", 1031}, {L"fr-fr", L"Français", 1036},
    {L"da-dk", L"Dansk", 1030},   {L"ja-jp", L"日本語", 1041},
};

// How a text comes out when Qt lays it out in a font on a device, lines `width` wide.
struct Drawn {
    int lines = 0;
    qreal width = 0;
    qreal height = 0;
    QString missing;  // characters no font could draw (they would show as empty boxes)
};

Drawn Draw(const QString& text, const QFont& font, QPaintDevice* device, qreal width, bool wrap) {
    QString laidOut = text;
    laidOut.replace(QChar('\n'), QChar::LineSeparator);
    QTextLayout layout(laidOut, font, device);
    QTextOption option;
    option.setWrapMode(wrap ? QTextOption::WordWrap : QTextOption::NoWrap);
    layout.setTextOption(option);
    Drawn drawn;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        drawn.width = std::max(drawn.width, line.naturalTextWidth());
        drawn.height += line.height();
        ++drawn.lines;
    }
    layout.endLayout();
    // Each character against the raw font that actually drew it: glyph 0 is the empty box.
    for (int at = 0; at < laidOut.size();) {
        const bool pair = laidOut.at(at).isHighSurrogate() && at + 1 < laidOut.size();
        const int length = pair ? 2 : 1;
        const char32_t character = pair ? QChar::surrogateToUcs4(laidOut.at(at), laidOut.at(at + 1))
                                        : laidOut.at(at).unicode();
        // Spaces draw nothing anyway, and one that ends a wrapped line gets no glyph at all.
        if (!QChar::isSpace(character)) {
            const QList<QGlyphRun> runs = layout.glyphRuns(at, length);
            bool drawnWell = !runs.isEmpty();
            for (const QGlyphRun& run : runs) {
                const QList<quint32> glyphs = run.glyphIndexes();
                drawnWell = drawnWell && run.rawFont().supportsCharacter(character) &&
                            std::find(glyphs.begin(), glyphs.end(), 0u) == glyphs.end();
            }
            if (!drawnWell) drawn.missing += laidOut.mid(at, length);
        }
        at += length;
    }
    return drawn;
}

// Checks one text as a control shows it: drawable, and within `area` (single-line controls
// must keep it on one line).
void ExpectFits(const char* control, const QString& text, const QFont& font, QPaintDevice* device,
                const QRect& area, bool wrap) {
    SCOPED_TRACE(std::string(control) + ": " + text.toStdString());
    ASSERT_FALSE(text.isEmpty());
    const Drawn drawn = Draw(text, font, device, area.width(), wrap);
    EXPECT_EQ(drawn.missing, QString()) << "in " << QFontInfo(font).family().toStdString();
    EXPECT_TRUE(wrap || drawn.lines == 1) << drawn.lines << " lines";
    EXPECT_LE(drawn.width, area.width());
    EXPECT_LE(drawn.height, area.height());
}

void ExpectButtonFits(const char* control, QPushButton* button) {
    QStyleOptionButton option;
    option.initFrom(button);
    option.text = button->text();
    if (button->isDefault()) option.features |= QStyleOptionButton::DefaultButton;
    const QRect contents =
        button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button);
    ExpectFits(control, button->text(), button->font(), button, contents, false);
}

// Start-up's own set-up of the application resources over the shipped folder, with
// "DisplayErrors" on, for a product name.
struct Product {
    explicit Product(const std::wstring& name)
        : configuration(std::vector<std::wstring>{L"lumetta-updater", L"/productName", name}) {
        CUpdaterApp::InitializeResources(holder, Shipped(), configuration.GetProductInfo(),
                                         L"en-us");
    }
    static std::wstring Shipped() { return STLHelpers::Utf8ToWide(LUMETTA_SHIPPED_RESOURCES); }

    std::wstring Text(StringID id) { return holder.GetManager()->GetString(id); }
    QString Expanded(StringID id) {
        return QString::fromStdWString(configuration.ExpandPlaceholders(Text(id)));
    }

    ProductConfiguration configuration;
    ResourceManagerHolder holder;
};

// How much of a product name the dialog has room for: all of it; all but in the status
// label, which then ends its line in "..."; or, beyond what the launch button can grow to,
// only the whole words that fit there (and not all of the caption, which the window manager
// shortens itself).
enum class NameLength { Usual, Long, Huge };

// The real dialog, offscreen, through its stages to the end, then its warning boxes.
void ExpectDialogFits(Product& product, NameLength length) {
    TestSupport::TempFolder folder("lumetta-languages");
    Engine::ProductSettings settings;
    settings.downloadURL = L"127.0.0.1/LumettaTestSetup.exe";
    settings.productExecutable = L"lumetta-test-no-product";
    Engine::UpdateEngine engine(settings, (folder / "Update1.exe").wstring());
    UI::UpdaterDialogContext context;
    context.engine = &engine;
    context.startEngine = false;
    context.text = [&product](StringID id) { return product.Text(id); };
    context.expand = [&product](const std::wstring& text) {
        return product.configuration.ExpandPlaceholders(text);
    };
    CUpdaterDlg dialog(context);
    dialog.open();
    ASSERT_TRUE(WaitFor([&] { return dialog.isVisible(); }));
    EXPECT_EQ(dialog.CancelButton()->text(), product.Expanded(StringID_CancelInstallation));
    ExpectButtonFits("cancel button", dialog.CancelButton());

    // The title bar keeps about a quarter of the width for the icon and its buttons.
    EXPECT_EQ(dialog.windowTitle(), product.Expanded(StringID_ProductInstallation));
    QRect titleRoom = dialog.rect();
    titleRoom.setWidth(dialog.width() * 3 / 4);
    if (length == NameLength::Huge) titleRoom.setWidth(1 << 16);  // only the glyphs count
    ExpectFits("caption", dialog.windowTitle(), dialog.font(), &dialog, titleRoom, false);

    CLabel* label = dialog.StatusLabel();
    const QFont labelFont = *label->GetFont()->GetHandle();
    // Only the first stage's text is expanded.
    const std::pair<Engine::UpdateState, StringID> stages[] = {
        {Engine::Preparing, StringID_PreparingForDownload},
        {Engine::Connecting, StringID_ConnectingToDownloadServer},
        {Engine::Downloading, StringID_DownloadingComponents},
        {Engine::Installing, StringID_InstallingComponents},
        {Engine::Finished, StringID_InstallationComplete},
    };
    for (const auto& [state, id] : stages) {
        const QString text = state == Engine::Preparing ? product.Expanded(id)
                                                        : QString::fromStdWString(product.Text(id));
        if (state != Engine::Preparing) engine.GetWorker().SetState(state);
        ASSERT_TRUE(WaitFor([&] { return dialog.StatusText() == text.toStdWString(); }));
        QRect area = label->contentsRect();
        const bool whole = length == NameLength::Usual;
        if (!whole) area.setWidth(1 << 16);  // only the glyphs count
        ExpectFits("status label", text, labelFont, label, area, whole);
    }

    // Finished: "Launch <product>", whole, and "Close".
    ASSERT_TRUE(dialog.LaunchButton()->isVisible());
    const QString launch = product.Expanded(StringID_LaunchProduct);
    if (length == NameLength::Huge) {
        // Whole words, then "...", and the whole text as the tool tip.
        const QString shown = dialog.LaunchButton()->text();
        EXPECT_TRUE(shown.endsWith(QStringLiteral("..."))) << shown.toStdString();
        EXPECT_TRUE(launch.startsWith(shown.chopped(3) + QChar(' '))) << shown.toStdString();
        EXPECT_EQ(dialog.LaunchButton()->toolTip(), launch);
    } else {
        EXPECT_EQ(dialog.LaunchButton()->text(), launch);
    }
    ExpectButtonFits("launch button", dialog.LaunchButton());
    EXPECT_GE(dialog.LaunchButton()->x(), dialog.ProgressBar()->x());
    EXPECT_LT(dialog.LaunchButton()->geometry().right(), dialog.CancelButton()->x());
    EXPECT_EQ(dialog.CancelButton()->text().toStdWString(), product.Text(StringID_Close));
    ExpectButtonFits("close button", dialog.CancelButton());

    // The failure box, and the same box as start-up's restart warning.
    for (const StringID id : {StringID_InstallationFailed, StringID_ComputerMustBeRestarted}) {
        const auto box = CUpdaterDlg::NewFailureBox(product.Expanded(id).toStdWString(),
                                                    product.Text(StringID_Error), &dialog);
        box->open();
        ASSERT_TRUE(WaitFor([&] { return box->isVisible(); }));
        const auto* message = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
        ASSERT_NE(message, nullptr);
        ExpectFits("warning box", message->text(), message->font(), box.get(),
                   message->contentsRect(), true);
        ExpectFits("warning caption", box->windowTitle(), box->font(), box.get(), box->rect(),
                   false);
        box->done(QMessageBox::Ok);
    }
    dialog.done(QDialog::Rejected);
}

class DialogLanguagesTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { TestSupport::EnsureQApplication(); }

    void SetUp() override {
        ASSERT_TRUE(hives.WriteHive("HKEY_CURRENT_USER.reg",
                                    "Windows Registry Editor Version 5.00\r\n\r\n"
                                    "[HKEY_CURRENT_USER\\Software\\ResourceLib]\r\n"
                                    "\"DisplayErrors\"=dword:00000001\r\n"));
    }

    TestSupport::HiveFolder hives;
};

TEST_F(DialogLanguagesTest, EveryLanguageIsListedAndCompleteForTheResourceCheck) {
    Product product(kLongProductName);
    const auto manager = product.holder.GetManager();
    EXPECT_EQ(manager->CheckResources(), L"");
    // The check ran inside the set-up too: a manager of its own reports it passed.
    auto fresh = boost::make_shared<Manager>(boost::make_shared<ResourceLib::ManagerImpl>());
    EXPECT_TRUE(
        fresh->Initialize(Product::Shipped().c_str(), product.holder.GetExtraParams(), -1, false));

    std::vector<ResourceLib::LanguagePtr> listed;
    ASSERT_TRUE(manager->GetResourceManager()->GetLanguageProvider()->GetLanguages(listed));
    ASSERT_EQ(listed.size(), std::size(kLanguages));
    for (size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(listed[i]->GetName(), kLanguages[i].name);
        EXPECT_EQ(listed[i]->GetTitle(), kLanguages[i].title);
        EXPECT_EQ(listed[i]->GetLocale(), kLanguages[i].locale);
    }
}

TEST_F(DialogLanguagesTest, EveryTextIsTranslatedDrawableAndFitsItsControl) {
    Product usual(L"Lumetta Player");
    Product longName(kLongProductName);
    Product huge(L"Lumetta Player Professional Edition for Studios and Broadcasters Worldwide");
    const std::pair<Product*, NameLength> products[] = {
        {&usual, NameLength::Usual}, {&longName, NameLength::Long}, {&huge, NameLength::Huge}};
    std::vector<std::wstring> english;
    for (int id = 0; id <= StringID_Close; ++id) english.push_back(usual.Text(StringID(id)));

    for (const Language& language : kLanguages) {
        for (const auto& [product, length] : products) {
            SCOPED_TRACE(STLHelpers::WideToUtf8(language.name));
            const auto resources = product->holder.GetManager()->GetResourceManager();
            ASSERT_TRUE(resources->SetLanguageVerify(language.name));
            ASSERT_EQ(resources->GetLanguageName(), language.name);
            // A text missing from the language would come, unnoticed, from the English
            // fallback.
            if (product == &usual && language.locale != 1033) {
                for (int id = 0; id <= StringID_Close; ++id)
                    EXPECT_NE(usual.Text(StringID(id)), english[id]) << "text " << id;
            }
            ExpectDialogFits(*product, length);
        }
    }
}

}  // namespace
