#include "ui/internal/ProgressBar.h"

#include <QStyleOptionProgressBar>
#include <QStylePainter>

namespace UI::internal {

void ProgressBar::paintEvent(QPaintEvent* event) {
    if (minimum() != maximum()) {
        QProgressBar::paintEvent(event);
        return;
    }
    // The style starts its busy animation only when asked to draw a busy bar; an empty one
    // of a range that is not empty never is.
    QStylePainter painter(this);
    QStyleOptionProgressBar option;
    initStyleOption(&option);
    option.minimum = 0;
    option.maximum = 1;
    option.progress = 0;
    painter.drawControl(QStyle::CE_ProgressBar, option);
}

}  // namespace UI::internal
