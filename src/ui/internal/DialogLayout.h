// Qt widgets from a dialog template resource: the template is read from the running
// executable, its dialog units become pixels by the base units of the dialog's font (a
// horizontal unit is a quarter of the font's average character width, a vertical unit an
// eighth of its height), and each control becomes the nearest Qt widget.
//
// Thread safety: the user-interface thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include <QFont>
#include <QIcon>
#include <QRect>

#include "platform/DialogTemplate.h"

class QPushButton;
class QString;
class QWidget;

namespace UI::internal {

// Dialog template `id` of the running executable. Throws std::runtime_error naming the
// template when it is missing or malformed.
Platform::DialogTemplate LoadDialogTemplate(uint16_t id);

// Group icon `id` of the running executable, in every size it has; a null icon without it.
QIcon LoadModuleIcon(uint16_t id);

class DialogUnits {
public:
    explicit DialogUnits(const QFont& font);

    int BaseX() const { return baseX; }
    int BaseY() const { return baseY; }
    QRect ToPixels(int x, int y, int cx, int cy) const;

private:
    int baseX;
    int baseY;
};

// The template's font as a Qt font (the face falls back to Qt's choice when it is missing).
QFont DialogFont(const Platform::DialogTemplate& dialogTemplate);

// Builds the template's controls as children of `dialog` and sizes the dialog. A text
// control whose id `makeText` answers with a widget gets that widget instead of a plain
// label. Returns the controls by id (controls without an id are not listed).
std::map<uint32_t, QWidget*> BuildControls(
    const Platform::DialogTemplate& dialogTemplate, QWidget* dialog,
    const std::function<QWidget*(const Platform::DialogItem&)>& makeText);

// Sets `text` on `button`. A text wider than the button makes it grow to the left, as far
// as x = `leftmost`; one still too wide loses whole words from its end, replaced by "...",
// and shows in full as the button's tool tip. Words are cut only when not even the first
// one fits.
void FitButtonText(QPushButton* button, const QString& text, int leftmost);

}  // namespace UI::internal
