// The dialog's progress bar. A range of 0 to 0 is what the dialog sets for a download of
// unknown size; a common control shows that as an empty bar, where Qt would animate a busy
// indicator. This bar draws it empty and keeps the range as it was set.
//
// Thread safety: a QWidget; the user-interface thread only.
#pragma once

#include <QProgressBar>

class QPaintEvent;

namespace UI::internal {

class ProgressBar : public QProgressBar {
public:
    explicit ProgressBar(QWidget* parent) : QProgressBar(parent) {}

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace UI::internal
