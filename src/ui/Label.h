// CLabel: an owner-drawn static text. It draws its text itself, with its own font and
// colours, over a solid, two-colour gradient or tiled-image background (or over whatever
// its parent shows, in transparent mode), and can flash its text, draw it raised or
// rotated, and open a web or mail link when clicked.
//
// Colours are COLORREF values (0x00BBGGRR). The font is described as a LOGFONT is
// (CommonGuiLib::LogFont): a positive height is the cell height in pixels (ascent plus
// descent), a negative one the character height.
//
// Every setter returns the label, so calls can be chained:
//   label.SetFontName(L"Arial").SetFontSize(11).SetText(L"Working...");
// Setters never fail; a value Qt cannot show (an unknown face, a missing image) falls
// back to the default font or background.
//
// Thread safety: a QWidget; every operation on the user-interface thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <QCursor>
#include <QEvent>
#include <QWidget>

#include "graphics/Images.h"
#include "graphics/SharedGDIObject.h"

class CLabel : public QWidget {
public:
    // Static-control and window style bits the label reads or keeps.
    static constexpr uint32_t SS_CENTER = 0x1;
    static constexpr uint32_t SS_RIGHT = 0x2;
    static constexpr uint32_t SS_OWNERDRAW = 0xD;
    static constexpr uint32_t SS_NOTIFY = 0x100;
    static constexpr uint32_t SS_CENTERIMAGE = 0x200;
    static constexpr uint32_t WS_BORDER = 0x800000;
    static constexpr uint32_t WS_EX_TRANSPARENT = 0x20;
    static constexpr uint32_t WS_EX_STATICEDGE = 0x20000;

    enum LinkMode : uint32_t { Link_None = 0, Link_Web = 1, Link_Mail = 2 };
    enum FlashMode : uint32_t { Flash_None = 0, Flash_Text = 1, Flash_Background = 2 };

    // Opens a link: a web address (Link_Web) or a "mailto:" address (Link_Mail). Returns
    // whether it was opened; the default opener reports its own failures.
    using LinkOpener = std::function<bool(LinkMode mode, const std::wstring& address)>;

    // What a double click tells the parent widget, sent to it synchronously (the parent
    // sees it in event() or an event filter). `notification` is always 0.
    class CommandEvent : public QEvent {
    public:
        CommandEvent(int controlId, int notification)
            : QEvent(EventType()), controlId(controlId), notification(notification) {}
        static QEvent::Type EventType();

        const int controlId;
        const int notification;
    };

    // Reads the system's window-text and button-face colours and binds the label with the
    // parent's font and style 0 (left-aligned); a dialog binds it again with PreSubclassWindow.
    explicit CLabel(QWidget* parent = nullptr);
    ~CLabel() override;

    // Binds the label to a static control of a dialog: takes the widget's current font
    // (with ClearType-like quality), keeps `staticStyle` for the text alignment (SS_RIGHT,
    // SS_CENTER, SS_CENTERIMAGE) and whether clicks are taken (SS_NOTIFY), and marks the
    // style owner-drawn.
    void PreSubclassWindow(uint32_t staticStyle);

    // `fillMode` 0: a solid background of `color`; otherwise a horizontal gradient from
    // `color` (left) to `secondColor` (right).
    virtual CLabel& SetBackground(uint32_t color, uint32_t secondColor = 0, uint32_t fillMode = 0);
    virtual CLabel& SetTextColor(uint32_t color);
    // Redraws only when `text` differs from the text shown.
    virtual CLabel& SetText(const std::wstring& text);
    virtual CLabel& SetFontBold(bool bold);
    // Face names longer than 31 characters are cut to 31, as a LOGFONT holds no more.
    // `charSet` goes into the description; Qt chooses the script from the text itself.
    virtual CLabel& SetFontName(const std::wstring& faceName, uint8_t charSet = 0);
    virtual CLabel& SetFontUnderline(bool underline);
    virtual CLabel& SetFontItalic(bool italic);
    // A cell height of points x 1.6 pixels (11 points give 17); negative sizes give a
    // character height instead, 0 the default size.
    virtual CLabel& SetFontSize(int points);
    virtual CLabel& SetSunkenEdge(bool enable);
    virtual CLabel& SetBorder(bool enable);
    // Transparent: no background is drawn, the parent shows through.
    virtual CLabel& SetTransparent(bool transparent);
    // The text disappears on every other tick of a 500 ms timer.
    virtual CLabel& SetTextFlashing(bool enable);
    // Runs the 500 ms timer; the drawing does not change.
    virtual CLabel& SetBackgroundFlashing(bool enable);
    // A click opens the link target (or the text) as a web address, unless
    // `notifyParentOnly`. A link makes the label take clicks.
    virtual CLabel& SetWebLink(bool enable, bool notifyParentOnly = false);
    // The cursor shown over the label; null restores the parent's cursor.
    virtual CLabel& SetLinkCursor(const QCursor* cursor);
    // A second copy of the text in the raised-text colour, one pixel down and right
    // (`downRight`) or up and left.
    virtual CLabel& SetRaisedText(bool enable, bool downRight = false);
    // The text drawn from the centre of the label along a baseline turned `degrees`
    // counter-clockwise, when `enable`.
    virtual CLabel& SetRotation(int degrees, bool enable = true);
    virtual CLabel& SetRaisedTextColor(uint32_t color);
    virtual CLabel& SetLogFont(const CommonGuiLib::LogFont& logFont);
    // A click opens "mailto:" followed by the label's text, unless `notifyParentOnly`.
    virtual CLabel& SetMailLink(bool enable, bool notifyParentOnly = false);
    // The web address a click opens; empty: the label's text.
    virtual CLabel& SetLinkTarget(const std::wstring& text);
    // Tiled from the top-left corner over the background; an empty holder or a null
    // image leaves the solid or gradient background.
    virtual CLabel& SetBackgroundImage(const CommonGuiLib::SharedBitmap& image);
    // Overlong text ends in "..." instead of being cut off.
    virtual CLabel& SetEndEllipsis(bool enable);

    // The identifier a double click reports to the parent (CommandEvent::controlId).
    void SetControlId(int id) { m_controlId = id; }
    int ControlId() const { return m_controlId; }

    // Replaces the program that opens links (tests use this); an empty function restores
    // the default (the user's browser or mail program).
    void SetLinkOpener(LinkOpener opener);

    std::wstring GetText() const { return m_text; }
    uint32_t GetTextColor() const { return m_textColor; }
    const CommonGuiLib::LogFont& GetLogFont() const { return m_logFont; }
    // The font the text is drawn with; never an empty holder.
    const CommonGuiLib::SharedFont& GetFont() const { return m_font; }
    uint32_t GetStyle() const { return m_style; }
    uint32_t GetExStyle() const { return m_exStyle; }
    uint32_t GetFlashMode() const { return m_flashMode; }
    bool IsFlashOn() const { return m_flashOn; }
    bool IsTimerActive() const { return m_timerId != 0; }
    LinkMode GetLinkMode() const { return m_linkMode; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void Redraw();
    void MakeFont();
    void SetFlashing(bool enable, FlashMode mode);
    void SetLink(LinkMode mode, bool enable, bool notifyParentOnly);
    void UpdateFrame();
    void OpenLink();
    void PaintBackground(QPainter& painter, const QRect& client) const;
    void PaintText(QPainter& painter, const QRect& client);

    uint32_t m_textColor;
    uint32_t m_raisedTextColor = 0xFFFFFF;
    uint32_t m_faceColor;  // COLOR_BTNFACE, the background when none is set
    bool m_hasBackgroundBrush = false;
    CommonGuiLib::LogFont m_logFont;
    CommonGuiLib::SharedFont m_font;
    bool m_flashOn = false;
    int m_timerId = 0;
    LinkMode m_linkMode = Link_None;
    bool m_transparent = false;
    bool m_raisedText = false;
    bool m_notifyParentOnly = false;
    bool m_rotate = false;
    uint32_t m_flashMode = Flash_None;
    std::optional<QCursor> m_linkCursor;
    bool m_raisedDownRight = false;
    uint32_t m_fillMode = 0;
    uint32_t m_secondColor = 0;
    uint32_t m_backgroundColor = 0;
    std::wstring m_linkTarget;
    CommonGuiLib::SharedBitmap m_image;
    uint32_t m_savedStyle = 0;
    bool m_endEllipsis = false;

    std::wstring m_text;
    uint32_t m_style = 0;
    uint32_t m_exStyle = 0;
    int m_controlId = 0;
    LinkOpener m_opener;
};
