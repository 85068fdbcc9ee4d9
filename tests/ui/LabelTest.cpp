#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>
#include <QImage>
#include <QMouseEvent>
#include <QPalette>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "UiTestApplication.h"
#include "graphics/SystemMetrics.h"
#include "support/RecordingSink.h"
#include "ui/Label.h"

namespace {

using TestSupport::WaitFor;

constexpr uint32_t kRed = 0x0000FF;
constexpr uint32_t kGreen = 0x00FF00;
constexpr uint32_t kBlue = 0xFF0000;

QRgb Rgb(uint32_t colorref) {
    return qRgb(colorref & 0xFF, (colorref >> 8) & 0xFF, (colorref >> 16) & 0xFF);
}

QImage Render(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

std::vector<QPoint> PixelsOf(const QImage& image, QRgb color) {
    std::vector<QPoint> points;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) == color) points.emplace_back(x, y);
    return points;
}

QRect BoundsOf(const std::vector<QPoint>& points) {
    QRect bounds;
    for (const QPoint& point : points) bounds |= QRect(point, QSize(1, 1));
    return bounds;
}

void Click(QWidget& widget, QEvent::Type type) {
    QMouseEvent event(type, QPointF(2, 2), widget.mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

// Counts paints and keeps the control ids of the commands that reach the watched widgets.
struct EventRecorder : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint;
        if (event->type() == CLabel::CommandEvent::EventType())
            commands.push_back(static_cast<CLabel::CommandEvent*>(event)->controlId);
        return false;
    }
    int paints = 0;
    std::vector<int> commands;
};

class LabelTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { TestSupport::EnsureQApplication(); }

    // A large font without antialiasing, so every text pixel has exactly the text colour.
    static void UseCrispFont(CLabel& label) {
        label.SetLogFont({.height = -28, .weight = 700, .quality = 3, .faceName = L"DejaVu Sans"});
    }
};

TEST_F(LabelTest, FontSetupAndChaining) {
    CLabel label;
    EXPECT_EQ(label.GetTextColor(), CommonGuiLib::GetSysColor(8));
    CLabel& chained = label.SetFontName(L"Arial").SetFontSize(11).SetText(L"Working...");
    EXPECT_EQ(&chained, &label);
    EXPECT_EQ(label.GetLogFont().faceName, L"Arial");
    // 11 points are a cell height of 17: the font drawn has a line height of 17 pixels, or
    // one less where hinting rounds the largest size that fits down.
    EXPECT_EQ(label.GetLogFont().height, 17);
    const int lineHeight = QFontMetrics(*label.GetFont()->GetHandle(), &label).height();
    EXPECT_TRUE(lineHeight == 17 || lineHeight == 16) << lineHeight;
    // The record is what the setters wrote into it.
    label.SetFontName(L"Arial", 238).SetRotation(90, false);
    EXPECT_EQ(std::tie(label.GetLogFont().charSet, label.GetLogFont().escapement,
                       label.GetLogFont().orientation, label.GetLogFont().height),
              std::make_tuple(uint8_t{238}, 900, 900, 17));
    EXPECT_TRUE(label.SetFontBold(true).GetFont()->GetHandle()->bold());
    EXPECT_EQ(label.SetFontBold(false).GetLogFont().weight, 400);
    EXPECT_EQ(label.SetFontName(std::wstring(40, L'x')).GetLogFont().faceName,
              std::wstring(31, L'x'));
    EXPECT_EQ(label.SetFontSize(-10).GetLogFont().height, -16);  // a character height
}

TEST_F(LabelTest, BackgroundsSolidGradientAndTiled) {
    CLabel label;
    label.resize(250, 20);
    EXPECT_EQ(Render(label).pixel(5, 5), Rgb(CommonGuiLib::GetSysColor(15)));

    label.SetBackground(kBlue);
    EXPECT_EQ(Render(label).pixel(249, 19), Rgb(kBlue));

    // 100 bands of 2 pixels; the last one also takes the 50 pixels the division leaves.
    label.SetBackground(0x000000, 0xFFFFFF, 1);
    QImage image = Render(label);
    EXPECT_EQ(image.pixel(2, 10), qRgb(2, 2, 2));  // 255 * 256 / 100 = 652 per band
    EXPECT_EQ(image.pixel(198, 19), qRgb(252, 252, 252));
    EXPECT_EQ(image.pixel(249, 0), qRgb(252, 252, 252));

    QImage tile(10, 10, QImage::Format_ARGB32);
    tile.fill(qRgb(255, 0, 0));
    tile.setPixel(0, 0, qRgb(0, 0, 255));
    label.SetBackgroundImage(
        boost::make_shared<CommonGuiLib::SharedGDIObjectImpl<0>>(new QImage(tile)));
    image = Render(label);
    EXPECT_EQ(image.pixel(10, 10), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(11, 10), qRgb(255, 0, 0));
}

TEST_F(LabelTest, RaisedTextIsTheTextMovedByOnePixel) {
    CLabel label;
    label.resize(120, 40);
    UseCrispFont(label);
    label.SetBackground(kBlue).SetTextColor(kRed).SetRaisedTextColor(kGreen).SetText(L"HIM");
    const std::vector<QPoint> text = PixelsOf(Render(label), Rgb(kRed));
    ASSERT_GT(text.size(), 20u);
    for (const int offset : {1, -1}) {
        const QImage raised = Render(label.SetRaisedText(true, offset == 1));
        for (const QPoint& point : text) {
            const QPoint moved = point + QPoint(offset, offset);
            if (raised.rect().contains(moved)) {
                ASSERT_EQ(raised.pixel(moved), Rgb(kGreen));
            }
        }
    }
}

TEST_F(LabelTest, AlignmentFollowsTheStaticStyle) {
    CLabel label;
    label.resize(200, 60);
    label.SetBackground(kBlue).SetTextColor(kRed).SetText(L"II");
    label.PreSubclassWindow(CLabel::SS_RIGHT);
    UseCrispFont(label);
    QRect bounds = BoundsOf(PixelsOf(Render(label), Rgb(kRed)));
    EXPECT_GT(bounds.right(), 185);

    // Centred both ways on one line, unless the text has a line break.
    label.PreSubclassWindow(CLabel::SS_CENTERIMAGE);
    UseCrispFont(label);
    bounds = BoundsOf(PixelsOf(Render(label), Rgb(kRed)));
    EXPECT_NEAR(bounds.center().x(), 100, 3);
    EXPECT_NEAR(bounds.center().y(), 30, 4);
    label.SetText(L"II\r\nII");
    bounds = BoundsOf(PixelsOf(Render(label), Rgb(kRed)));
    EXPECT_NEAR(bounds.center().x(), 100, 3);
    EXPECT_LT(bounds.top(), 15);

    // Only one line fits: it ends in an ellipsis instead of the rest being cut off.
    label.PreSubclassWindow(0);
    UseCrispFont(label);
    const std::wstring text = L"HIM HIM HIM HIM HIM";
    const QString elided = QFontMetrics(*label.GetFont()->GetHandle(), &label)
                               .elidedText(QString::fromStdWString(text), Qt::ElideRight, 200);
    ASSERT_TRUE(elided.endsWith(QChar(0x2026)));
    const QImage expected = Render(label.SetText(elided.toStdWString()));
    EXPECT_NE(Render(label.SetText(text)), expected);
    EXPECT_EQ(Render(label.SetEndEllipsis(true)), expected);
}

TEST_F(LabelTest, TransparentLabelKeepsTheParentsPixels) {
    QWidget parent;
    parent.resize(100, 40);
    parent.setPalette(QPalette(QColor(0, 255, 0)));
    parent.setAutoFillBackground(true);
    CLabel label(&parent);
    label.setGeometry(10, 10, 60, 20);
    label.SetBackground(kBlue);
    EXPECT_EQ(Render(parent).pixel(15, 15), Rgb(kBlue));
    label.SetTransparent(true);
    EXPECT_EQ(Render(parent).pixel(15, 15), qRgb(0, 255, 0));
    EXPECT_EQ(Render(parent).pixel(69, 29), qRgb(0, 255, 0));
}

TEST_F(LabelTest, SettingTheSameTextDoesNotRepaint) {
    QWidget window;
    CLabel label(&window);
    EventRecorder counter;
    label.installEventFilter(&counter);
    window.show();
    label.SetText(L"Downloading");
    ASSERT_TRUE(WaitFor([&] { return counter.paints > 0; }));
    QApplication::processEvents();
    const int before = counter.paints;
    label.SetText(L"Downloading");
    QApplication::processEvents();
    EXPECT_EQ(counter.paints, before);
    label.SetText(L"Installing");
    EXPECT_TRUE(WaitFor([&] { return counter.paints > before; }));
}

TEST_F(LabelTest, ClicksOpenLinksUnlessOnlyTheParentIsNotified) {
    QWidget parent;
    EventRecorder recorder;
    parent.installEventFilter(&recorder);
    CLabel label(&parent);
    label.SetControlId(1001);
    std::vector<std::pair<CLabel::LinkMode, std::wstring>> opened;
    label.SetLinkOpener([&](CLabel::LinkMode mode, const std::wstring& address) {
        opened.emplace_back(mode, address);
        return true;
    });
    label.SetText(L"https://example.org/").SetWebLink(true);
    Click(label, QEvent::MouseButtonPress);
    label.SetText(L"someone@example.org").SetLinkTarget(L"https://example.org/t");
    Click(label, QEvent::MouseButtonPress);
    label.SetMailLink(true);  // writes to the text, whatever the link target
    Click(label, QEvent::MouseButtonPress);

    ASSERT_EQ(opened.size(), 3u);
    EXPECT_EQ(opened[0], std::make_pair(CLabel::Link_Web, std::wstring(L"https://example.org/")));
    EXPECT_EQ(opened[1].second, L"https://example.org/t");
    EXPECT_EQ(opened[2],
              std::make_pair(CLabel::Link_Mail, std::wstring(L"mailto:someone@example.org")));

    // Only the parent hears of clicks; a double click still reaches it.
    label.SetWebLink(true, true);
    Click(label, QEvent::MouseButtonPress);
    Click(label, QEvent::MouseButtonDblClick);
    EXPECT_EQ(opened.size(), 3u);
    EXPECT_EQ(recorder.commands, std::vector<int>{1001});

    // A web link without an address is reported and opens nothing.
    TestSupport::RecordingSink sink;
    TestSupport::ScopedReportingSink scoped(&sink);
    label.SetWebLink(true).SetLinkTarget(L"").SetText(L"");
    Click(label, QEvent::MouseButtonPress);
    EXPECT_EQ(opened.size(), 3u);
    ASSERT_EQ(sink.reports.size(), 1u);
    EXPECT_NE(sink.reports[0].first.find(L"((!url.empty()))"), std::wstring::npos);
    EXPECT_EQ(sink.reports[0].second, Reporting::GuardedError);
}

TEST_F(LabelTest, TextFlashingAlternatesWithBlack) {
    CLabel label;
    label.resize(120, 40);
    UseCrispFont(label);
    label.SetTextColor(kRed).SetText(L"HIM").SetTextFlashing(true);
    EXPECT_EQ(label.GetFlashMode(), CLabel::Flash_Text);
    const QImage hidden = Render(label);
    EXPECT_TRUE(PixelsOf(hidden, Rgb(kRed)).empty());
    EXPECT_FALSE(PixelsOf(hidden, qRgb(0, 0, 0)).empty());
    ASSERT_TRUE(WaitFor([&] { return label.IsFlashOn(); }));
    EXPECT_FALSE(PixelsOf(Render(label), Rgb(kRed)).empty());
    ASSERT_TRUE(WaitFor([&] { return !label.IsFlashOn(); }));
    EXPECT_FALSE(PixelsOf(Render(label.SetTextFlashing(false)), Rgb(kRed)).empty());
    EXPECT_FALSE(label.IsTimerActive());
}

}  // namespace
