#include "ui/internal/DialogLayout.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <QFontMetrics>
#include <QFrame>
#include <QLabel>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QString>
#include <QStringList>

#include "platform/IconGroup.h"
#include "system/ModuleResources.h"
#include "ui/internal/ProgressBar.h"

namespace UI::internal {
namespace {

// Control styles the builder tells apart.
constexpr uint32_t kButtonTypeMask = 0x0F;
constexpr uint32_t BS_DEFPUSHBUTTON = 0x01;
constexpr uint32_t kStaticTypeMask = 0x1F;
constexpr uint32_t SS_ICON = 0x03;
constexpr uint32_t SS_ETCHEDHORZ = 0x10;
constexpr uint32_t SS_CENTER = 0x01;
constexpr uint32_t SS_RIGHT = 0x02;
constexpr uint32_t kNoId16 = 0xFFFF;
constexpr uint32_t kNoId32 = 0xFFFFFFFF;
// The system's large icon: an icon control takes this size, whatever the template says.
constexpr int kIconSize = 32;

int MulDiv(int value, int numerator, int denominator) {
    const long long product = static_cast<long long>(value) * numerator;
    // Rounded half away from zero, as the system's scaling does.
    return static_cast<int>((product + (product >= 0 ? denominator / 2 : -denominator / 2)) /
                            denominator);
}

QWidget* MakeStatic(const Platform::DialogItem& item, QWidget* parent,
                    const std::function<QWidget*(const Platform::DialogItem&)>& makeText) {
    const uint32_t type = item.style & kStaticTypeMask;
    if (type == SS_ICON) {
        auto* label = new QLabel(parent);
        const QIcon icon = item.title.isOrdinal ? LoadModuleIcon(item.title.ordinal) : QIcon();
        if (!icon.isNull()) label->setPixmap(icon.pixmap(kIconSize, kIconSize));
        return label;
    }
    if (type == SS_ETCHEDHORZ) {
        auto* line = new QFrame(parent);
        line->setFrameShape(QFrame::HLine);
        line->setFrameShadow(QFrame::Sunken);
        return line;
    }
    if (makeText) {
        if (QWidget* custom = makeText(item)) return custom;
    }
    auto* label = new QLabel(QString::fromStdWString(item.title.text), parent);
    const Qt::Alignment horizontal = type == SS_CENTER  ? Qt::AlignHCenter
                                     : type == SS_RIGHT ? Qt::AlignRight
                                                        : Qt::AlignLeft;
    label->setAlignment(horizontal | Qt::AlignTop);
    return label;
}

QWidget* MakeControl(const Platform::DialogItem& item, QWidget* parent,
                     const std::function<QWidget*(const Platform::DialogItem&)>& makeText) {
    const std::wstring& windowClass = item.windowClass.text;
    if (windowClass == L"Button") {
        auto* button = new QPushButton(QString::fromStdWString(item.title.text), parent);
        button->setDefault((item.style & kButtonTypeMask) == BS_DEFPUSHBUTTON);
        return button;
    }
    if (windowClass == L"Static") return MakeStatic(item, parent, makeText);
    if (windowClass == L"msctls_progress32") {
        auto* bar = new ProgressBar(parent);
        bar->setTextVisible(false);
        bar->setRange(0, 100);
        bar->setValue(0);
        return bar;
    }
    // A class this dialog does not know keeps its place, empty.
    return new QWidget(parent);
}

}  // namespace

Platform::DialogTemplate LoadDialogTemplate(uint16_t id) {
    const System::ModuleResource resource = System::FindModuleResource(
        L"", Platform::ResourceName(id), Platform::ResourceName(Platform::RT_DIALOG));
    const std::string name = "dialog template " + std::to_string(id);
    if (!resource) throw std::runtime_error(name + " is missing from the executable's resources");
    Platform::DialogTemplate dialogTemplate;
    if (Platform::DialogTemplate::Parse(resource.data, dialogTemplate) != 0)
        throw std::runtime_error(name + " in the executable's resources is malformed");
    return dialogTemplate;
}

QIcon LoadModuleIcon(uint16_t id) {
    QIcon icon;
    const auto image = System::GetModuleResources(L"");
    if (!image) return icon;
    for (const int size : {16, 32, 48}) {
        std::vector<uint8_t> ico;
        if (Platform::LoadIconFromImage(*image, Platform::ResourceName(id), Platform::LANG_NEUTRAL,
                                        size, size, ico) != 0)
            return icon;
        QPixmap pixmap;
        if (pixmap.loadFromData(ico.data(), static_cast<unsigned>(ico.size()), "ICO"))
            icon.addPixmap(pixmap);
    }
    return icon;
}

DialogUnits::DialogUnits(const QFont& font) {
    const QFontMetrics metrics(font);
    // The average width of the Latin letters, rounded, as the system measures it.
    const int width = metrics.horizontalAdvance(
        QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
    baseX = std::max(1, (width / 26 + 1) / 2);
    baseY = std::max(1, metrics.height());
}

QRect DialogUnits::ToPixels(int x, int y, int cx, int cy) const {
    return QRect(MulDiv(x, baseX, 4), MulDiv(y, baseY, 8), MulDiv(cx, baseX, 4),
                 MulDiv(cy, baseY, 8));
}

QFont DialogFont(const Platform::DialogTemplate& dialogTemplate) {
    QFont font;
    if (!dialogTemplate.hasFont) return font;
    if (!dialogTemplate.typeface.empty())
        font.setFamily(QString::fromStdWString(dialogTemplate.typeface));
    if (dialogTemplate.pointSize > 0) font.setPointSize(dialogTemplate.pointSize);
    if (dialogTemplate.weight > 0)
        font.setWeight(static_cast<QFont::Weight>(
            std::clamp(static_cast<int>(dialogTemplate.weight), 1, 1000)));
    font.setItalic(dialogTemplate.italic);
    return font;
}

std::map<uint32_t, QWidget*> BuildControls(
    const Platform::DialogTemplate& dialogTemplate, QWidget* dialog,
    const std::function<QWidget*(const Platform::DialogItem&)>& makeText) {
    dialog->setFont(DialogFont(dialogTemplate));
    const DialogUnits units(dialog->font());
    dialog->setFixedSize(units.ToPixels(0, 0, dialogTemplate.cx, dialogTemplate.cy).size());

    std::map<uint32_t, QWidget*> controls;
    for (const Platform::DialogItem& item : dialogTemplate.items) {
        QWidget* control = MakeControl(item, dialog, makeText);
        QRect place = units.ToPixels(item.x, item.y, item.cx, item.cy);
        if (item.windowClass.text == L"Static" && (item.style & kStaticTypeMask) == SS_ICON)
            place.setSize(QSize(kIconSize, kIconSize));
        control->setGeometry(place);
        control->setVisible((item.style & Platform::WS_VISIBLE) != 0);
        if (item.id != kNoId16 && item.id != kNoId32) controls[item.id] = control;
    }
    return controls;
}

void FitButtonText(QPushButton* button, const QString& text, int leftmost) {
    // The width the style asks for the text, margins and frame included.
    const auto needed = [button](const QString& shown) {
        button->setText(shown);
        return button->sizeHint().width();
    };
    button->setToolTip(QString());
    const int width = needed(text);
    QRect place = button->geometry();
    if (width <= place.width()) return;
    place.setLeft(std::max(leftmost, place.right() + 1 - width));
    button->setGeometry(place);
    if (width <= place.width()) return;

    button->setToolTip(text);
    const QString ellipsis = QStringLiteral("...");
    QStringList words = text.split(QChar(' '), Qt::SkipEmptyParts);
    while (words.size() > 1) {
        words.removeLast();
        const QString shown = words.join(QChar(' ')) + ellipsis;
        if (needed(shown) <= place.width()) return;
    }
    // Not even one word fits: cut inside it, within what the style's margins leave.
    const int margins = width - button->fontMetrics().horizontalAdvance(text);
    button->setText(button->fontMetrics().elidedText(text, Qt::ElideRight,
                                                     std::max(0, place.width() - margins)));
}

}  // namespace UI::internal
