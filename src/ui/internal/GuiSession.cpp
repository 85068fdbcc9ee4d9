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

struct GuiSession::Impl {
    explicit Impl(const char* programPath)
        : program(programPath != nullptr ? programPath : ""),
          argv{program.data(), nullptr},
          application(argc, argv) {}
    // Qt reads its own options ("-platform", "-reverse", "-style", ...) from the arguments
    // it is given and may end the process over them; the updater's arguments are its own,
    // so Qt sees the program's path alone.
    std::string program;
    int argc = 1;
    char* argv[2];
    QApplication application;
};

GuiSession::GuiSession(const char* programPath) : impl(std::make_unique<Impl>(programPath)) {}

GuiSession::~GuiSession() = default;

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
    QMessageBox box(QMessageBox::Warning, QString::fromStdWString(caption),
                    QString::fromStdWString(text), QMessageBox::Ok);
    box.exec();
}

bool RunUpdaterDialog(const UpdaterDialogContext& context) {
    CUpdaterDlg dialog(context);
    return dialog.exec() == QDialog::Accepted;
}

}  // namespace UI
