// The Qt side of UpdaterDialogHost.h.
#include <QApplication>
#include <QMessageBox>
#include <QString>

#include <string>
#include <vector>

#include "system/FileHelpers.h"
#include "ui/UpdaterDialog.h"
#include "ui/UpdaterDialogHost.h"

namespace UI {

bool LoadSkin(const std::wstring& path) {
    std::vector<uint8_t> bytes;
    if (!System::ReadWholeFile(path, bytes) || bytes.empty()) return false;
    const QString styleSheet = QString::fromUtf8(reinterpret_cast<const char*>(bytes.data()),
                                                 static_cast<qsizetype>(bytes.size()));
    if (styleSheet.trimmed().isEmpty()) return false;
    qApp->setStyleSheet(styleSheet);
    return true;
}

void ShowWarningBox(const std::wstring& text, const std::wstring& caption) {
    CUpdaterDlg::NewFailureBox(text, caption, nullptr)->exec();
}

bool RunUpdaterDialog(const UpdaterDialogContext& context) {
    CUpdaterDlg dialog(context);
    return dialog.exec() == QDialog::Accepted;
}

}  // namespace UI
