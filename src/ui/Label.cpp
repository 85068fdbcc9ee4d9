#include "ui/Label.h"

#include <QChar>
#include <QColor>
#include <QCoreApplication>
#include <QFont>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QString>
#include <QTextLayout>
#include <QTextOption>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "foundation/Check.h"
#include "graphics/SystemMetrics.h"
#include "system/ShellHelpers.h"

namespace {

constexpr int kColorWindowFrame = 6;
constexpr int kColorWindowText = 8;
constexpr int kColorButtonFace = 15;
constexpr int kColorButtonShadow = 16;
constexpr int kColorButtonHighlight = 20;

constexpr int kFlashPeriodMs = 500;
constexpr int kGradientBands = 100;
// A LOGFONT face name holds 31 characters and its terminator.
constexpr std::size_t kMaxFaceLength = 31;
constexpr int32_t kWeightNormal = 400;
constexpr int32_t kWeightBold = 700;
constexpr uint8_t kClearTypeQuality = 5;

QColor ToQColor(uint32_t colorref) {
    return QColor(colorref & 0xFF, (colorref >> 8) & 0xFF, (colorref >> 16) & 0xFF);
}

bool OpenWithShell(CLabel::LinkMode mode, const std::wstring& address) {
    if (mode == CLabel::Link_Mail) return System::ShellOpen(address, L"", System::SW_SHOWNORMAL);
    return System::OpenUrl(address);
}

std::wstring CutFaceName(const std::wstring& faceName) {
    return faceName.size() > kMaxFaceLength ? faceName.substr(0, kMaxFaceLength) : faceName;
}

// Static controls take '&' as the mark of a mnemonic ("&&" is a plain '&'), so the label
// does as well.
int TextFlags(uint32_t savedStyle, bool endEllipsis, const QString& text, bool& elide) {
    elide = false;
    if (savedStyle & CLabel::SS_CENTERIMAGE) {
        // A single line is centred both ways; text with line breaks only horizontally.
        if (!text.contains(QStringLiteral("\r\n")))
            return Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextShowMnemonic;
        return Qt::AlignHCenter | Qt::AlignTop | Qt::TextShowMnemonic;
    }
    int flags = Qt::AlignTop | Qt::TextWordWrap | Qt::TextShowMnemonic;
    if (savedStyle & CLabel::SS_RIGHT)
        flags |= Qt::AlignRight;
    else if (savedStyle & CLabel::SS_CENTER)
        flags |= Qt::AlignHCenter;
    else
        flags |= Qt::AlignLeft;
    if (text.contains(QChar('\t'))) flags |= Qt::TextExpandTabs;
    elide = endEllipsis;
    return flags;
}

// Word-wrapped text whose last visible line ends in "..." when the text does not fit
// `rect`, either because more lines follow or because that line is too wide itself.
QString ElideWrapped(const QString& text, const QFont& font, const QRect& rect,
                     QPaintDevice* device) {
    QString laidOut = text;
    laidOut.replace(QChar('\n'), QChar::LineSeparator);
    QTextLayout layout(laidOut, font, device);
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    qreal height = 0;
    int lastStart = -1;
    for (;;) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) break;
        line.setLineWidth(rect.width());
        if (lastStart >= 0 && height + line.height() > rect.height()) break;
        lastStart = line.textStart();
        height += line.height();
    }
    layout.endLayout();
    if (lastStart < 0) return text;
    QString tail = text.mid(lastStart);
    tail.replace(QChar('\n'), QChar(' '));
    const QFontMetrics metrics(font, device);
    return text.left(lastStart) +
           metrics.elidedText(tail, Qt::ElideRight, rect.width(), Qt::TextShowMnemonic);
}

// A horizontal gradient in at most 100 bands of equal width (the last one takes what the
// division leaves), the colour stepping per channel in 8.8 fixed point.
void PaintBands(QPainter& painter, const QRect& rect, uint32_t from, uint32_t to) {
    const int width = rect.width();
    const int bands = std::min(kGradientBands, width);
    if (bands <= 0) return;
    const int bandWidth = width / bands;
    int value[3];
    int step[3];
    for (int channel = 0; channel < 3; ++channel) {
        const int start = static_cast<int>((from >> (8 * channel)) & 0xFF);
        const int end = static_cast<int>((to >> (8 * channel)) & 0xFF);
        value[channel] = start * 256;
        step[channel] = (end - start) * 256 / bands;
    }
    for (int band = 0; band < bands; ++band) {
        const int left = rect.x() + band * bandWidth;
        const int right = band == bands - 1 ? rect.x() + width : left + bandWidth;
        painter.fillRect(QRect(left, rect.y(), right - left, rect.height()),
                         QColor(value[0] / 256, value[1] / 256, value[2] / 256));
        for (int channel = 0; channel < 3; ++channel) value[channel] += step[channel];
    }
}

}  // namespace

QEvent::Type CLabel::CommandEvent::EventType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

CLabel::CLabel(QWidget* parent)
    : QWidget(parent),
      m_textColor(CommonGuiLib::GetSysColor(kColorWindowText)),
      m_faceColor(CommonGuiLib::GetSysColor(kColorButtonFace)),
      m_opener(OpenWithShell) {
    // Every pixel is painted in paintEvent (Qt's backing store already buffers it), so
    // nothing is erased first; transparent mode turns this off.
    setAttribute(Qt::WA_OpaquePaintEvent);
    PreSubclassWindow(0);
}

CLabel::~CLabel() = default;

void CLabel::PreSubclassWindow(uint32_t staticStyle) {
    m_logFont = CommonGuiLib::DescribeFont(CommonGuiLib::WrapFont(new QFont(font())));
    m_logFont.faceName = CutFaceName(m_logFont.faceName);
    m_logFont.quality = kClearTypeQuality;
    MakeFont();
    m_savedStyle = staticStyle;
    m_style = staticStyle | SS_OWNERDRAW;
    // A static control without SS_NOTIFY lets clicks through to what lies beneath.
    setAttribute(Qt::WA_TransparentForMouseEvents, (m_style & SS_NOTIFY) == 0);
    UpdateFrame();  // the new style may have dropped a border set before
    Redraw();
}

CLabel& CLabel::SetBackground(uint32_t color, uint32_t secondColor, uint32_t fillMode) {
    m_backgroundColor = color;
    m_secondColor = secondColor;
    m_fillMode = fillMode;
    m_hasBackgroundBrush = fillMode == 0;
    Redraw();
    return *this;
}

CLabel& CLabel::SetTextColor(uint32_t color) {
    m_textColor = color;
    Redraw();
    return *this;
}

CLabel& CLabel::SetText(const std::wstring& text) {
    if (text != m_text) {
        m_text = text;
        Redraw();
    }
    return *this;
}

CLabel& CLabel::SetFontBold(bool bold) {
    m_logFont.weight = bold ? kWeightBold : kWeightNormal;
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetFontName(const std::wstring& faceName, uint8_t charSet) {
    m_logFont.charSet = charSet;
    m_logFont.faceName = CutFaceName(faceName);
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetFontUnderline(bool underline) {
    m_logFont.underline = underline;
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetFontItalic(bool italic) {
    m_logFont.italic = italic;
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetFontSize(int points) {
    // A font of that many points is asked for by its cell height; the font mapper's answer
    // gives the height and width, everything else of the description stays.
    CommonGuiLib::LogFont sized;
    sized.height =
        static_cast<int32_t>(std::clamp(std::trunc(static_cast<double>(points) * 1.6),
                                        static_cast<double>(std::numeric_limits<int32_t>::min()),
                                        static_cast<double>(std::numeric_limits<int32_t>::max())));
    sized.faceName = m_logFont.faceName;
    const CommonGuiLib::LogFont made =
        CommonGuiLib::DescribeFont(CommonGuiLib::CreateFontIndirect(sized));
    m_logFont.height = made.height;
    m_logFont.width = made.width;
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetSunkenEdge(bool enable) {
    m_exStyle = enable ? (m_exStyle | WS_EX_STATICEDGE) : (m_exStyle & ~WS_EX_STATICEDGE);
    UpdateFrame();
    return *this;
}

CLabel& CLabel::SetBorder(bool enable) {
    m_style = enable ? (m_style | WS_BORDER) : (m_style & ~WS_BORDER);
    UpdateFrame();
    return *this;
}

CLabel& CLabel::SetTransparent(bool transparent) {
    m_transparent = transparent;
    m_exStyle |= WS_EX_TRANSPARENT;
    setAttribute(Qt::WA_OpaquePaintEvent, !transparent);
    Redraw();
    return *this;
}

CLabel& CLabel::SetTextFlashing(bool enable) {
    SetFlashing(enable, Flash_Text);
    return *this;
}

CLabel& CLabel::SetBackgroundFlashing(bool enable) {
    SetFlashing(enable, Flash_Background);
    return *this;
}

CLabel& CLabel::SetWebLink(bool enable, bool notifyParentOnly) {
    SetLink(Link_Web, enable, notifyParentOnly);
    return *this;
}

CLabel& CLabel::SetLinkCursor(const QCursor* cursor) {
    if (cursor) {
        m_linkCursor = *cursor;
        setCursor(*cursor);
    } else {
        m_linkCursor.reset();
        unsetCursor();
    }
    return *this;
}

CLabel& CLabel::SetRaisedText(bool enable, bool downRight) {
    m_raisedText = enable;
    m_raisedDownRight = downRight;
    Redraw();
    return *this;
}

CLabel& CLabel::SetRotation(int degrees, bool enable) {
    const auto angle = static_cast<int32_t>(
        std::clamp<int64_t>(static_cast<int64_t>(degrees) * 10, std::numeric_limits<int32_t>::min(),
                            std::numeric_limits<int32_t>::max()));
    m_logFont.escapement = angle;
    m_logFont.orientation = angle;
    m_rotate = enable;
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetRaisedTextColor(uint32_t color) {
    m_raisedTextColor = color;
    Redraw();
    return *this;
}

CLabel& CLabel::SetLogFont(const CommonGuiLib::LogFont& logFont) {
    m_logFont = logFont;
    m_logFont.faceName = CutFaceName(logFont.faceName);
    MakeFont();
    Redraw();
    return *this;
}

CLabel& CLabel::SetMailLink(bool enable, bool notifyParentOnly) {
    SetLink(Link_Mail, enable, notifyParentOnly);
    return *this;
}

CLabel& CLabel::SetLinkTarget(const std::wstring& text) {
    m_linkTarget = text;
    return *this;
}

CLabel& CLabel::SetBackgroundImage(const CommonGuiLib::SharedBitmap& image) {
    m_image = image;
    return *this;
}

CLabel& CLabel::SetEndEllipsis(bool enable) {
    m_endEllipsis = enable;
    return *this;
}

void CLabel::SetLinkOpener(LinkOpener opener) {
    m_opener = opener ? std::move(opener) : LinkOpener(OpenWithShell);
}

void CLabel::Redraw() {
    // Qt merges repeated requests into one paint; a transparent label also has the
    // parent's pixels beneath it repainted.
    update();
}

void CLabel::MakeFont() {
    m_font = CommonGuiLib::CreateFontIndirect(m_logFont);
}

void CLabel::SetFlashing(bool enable, FlashMode mode) {
    if (m_timerId != 0) {
        killTimer(m_timerId);
        m_timerId = 0;
    }
    if (enable) {
        m_flashOn = false;
        m_timerId = startTimer(kFlashPeriodMs);
        m_flashMode = mode;
    } else if (mode == Flash_Text) {
        m_flashMode = Flash_None;
        // The text may have been hidden by the last tick.
        Redraw();
    }
}

void CLabel::SetLink(LinkMode mode, bool enable, bool notifyParentOnly) {
    m_linkMode = enable ? mode : Link_None;
    m_notifyParentOnly = notifyParentOnly;
    m_style = enable ? (m_style | SS_NOTIFY) : (m_style & ~SS_NOTIFY);
    setAttribute(Qt::WA_TransparentForMouseEvents, (m_style & SS_NOTIFY) == 0);
}

void CLabel::UpdateFrame() {
    // The border and the sunken edge lie outside the client area, as a window's
    // non-client frame does.
    const int margin = ((m_style & WS_BORDER) ? 1 : 0) + ((m_exStyle & WS_EX_STATICEDGE) ? 1 : 0);
    setContentsMargins(margin, margin, margin, margin);
    update();
}

void CLabel::OpenLink() {
    if (m_notifyParentOnly) return;
    if (m_linkMode == Link_Web) {
        const std::wstring url = m_linkTarget.empty() ? m_text : m_linkTarget;
        if (CHECK_GUARDED(!url.empty()).Failed()) return;
        m_opener(Link_Web, url);
    } else if (m_linkMode == Link_Mail) {
        m_opener(Link_Mail, L"mailto:" + m_text);
    }
}

void CLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QRect outer = rect();
    if (m_style & WS_BORDER) {
        const QColor frame = ToQColor(CommonGuiLib::GetSysColor(kColorWindowFrame));
        painter.fillRect(outer.x(), outer.y(), outer.width(), 1, frame);
        painter.fillRect(outer.x(), outer.bottom(), outer.width(), 1, frame);
        painter.fillRect(outer.x(), outer.y(), 1, outer.height(), frame);
        painter.fillRect(outer.right(), outer.y(), 1, outer.height(), frame);
        outer.adjust(1, 1, -1, -1);
    }
    if ((m_exStyle & WS_EX_STATICEDGE) && outer.isValid()) {
        const QColor shadow = ToQColor(CommonGuiLib::GetSysColor(kColorButtonShadow));
        const QColor light = ToQColor(CommonGuiLib::GetSysColor(kColorButtonHighlight));
        painter.fillRect(outer.x(), outer.bottom(), outer.width(), 1, light);
        painter.fillRect(outer.right(), outer.y(), 1, outer.height(), light);
        painter.fillRect(outer.x(), outer.y(), outer.width(), 1, shadow);
        painter.fillRect(outer.x(), outer.y(), 1, outer.height(), shadow);
    }
    const QRect client = contentsRect();
    if (client.isEmpty()) return;
    painter.setClipRect(client);
    if (!m_transparent) PaintBackground(painter, client);
    PaintText(painter, client);
}

void CLabel::PaintBackground(QPainter& painter, const QRect& client) const {
    if (CommonGuiLib::BitmapWidth(m_image) > 0 && CommonGuiLib::BitmapHeight(m_image) > 0) {
        const CommonGuiLib::Rect area{client.x(), client.y(), client.x() + client.width(),
                                      client.y() + client.height()};
        CommonGuiLib::DrawTiled(painter, m_image, area, 0, false, false);
    } else if (m_fillMode == 0) {
        painter.fillRect(client, ToQColor(m_hasBackgroundBrush ? m_backgroundColor : m_faceColor));
    } else {
        PaintBands(painter, client, m_backgroundColor, m_secondColor);
    }
}

void CLabel::PaintText(QPainter& painter, const QRect& client) {
    QColor color = ToQColor(m_textColor);
    // Text flashing hides the text on every other tick by drawing it in the background's
    // own colour.
    if (!m_flashOn && m_flashMode == Flash_Text)
        color = m_hasBackgroundBrush ? ToQColor(m_backgroundColor) : QColor(Qt::black);
    const QFont* font = m_font ? m_font->GetHandle() : nullptr;
    painter.setFont(font ? *font : this->font());
    painter.setPen(color);
    QString text = QString::fromStdWString(m_text);

    if (m_rotate) {
        // Rotated text starts at the centre, on its baseline.
        painter.save();
        painter.translate(client.x() + client.width() / 2, client.y() + client.height() / 2);
        painter.rotate(-m_logFont.escapement / 10.0);
        painter.drawText(QPointF(0, 0), text);
        painter.restore();
        return;
    }

    bool elide = false;
    const int flags = TextFlags(m_savedStyle, m_endEllipsis, text, elide);
    if (!(flags & Qt::TextSingleLine)) text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (elide) text = ElideWrapped(text, painter.font(), client, this);
    painter.drawText(client, flags, text);
    if (m_raisedText) {
        const int offset = m_raisedDownRight ? 1 : -1;
        painter.setPen(ToQColor(m_raisedTextColor));
        painter.drawText(client.translated(offset, offset), flags, text);
    }
}

void CLabel::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_timerId) {
        m_flashOn = !m_flashOn;
        Redraw();
        return;
    }
    QWidget::timerEvent(event);
}

void CLabel::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        OpenLink();
        event->accept();
        return;
    }
    QWidget::mousePressEvent(event);
}

void CLabel::mouseDoubleClickEvent(QMouseEvent* event) {
    // Only the parent learns of a double click; the press before it opened the link.
    if (event->button() == Qt::LeftButton) {
        if (QWidget* parent = parentWidget()) {
            CommandEvent command(m_controlId, 0);
            QCoreApplication::sendEvent(parent, &command);
        }
        event->accept();
        return;
    }
    QWidget::mouseDoubleClickEvent(event);
}

void CLabel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::ApplicationPaletteChange) {
        m_faceColor = CommonGuiLib::GetSysColor(kColorButtonFace);
        Redraw();
    }
    QWidget::changeEvent(event);
}
