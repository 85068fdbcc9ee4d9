#include "ui/UpdaterDialog.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <stdexcept>
#include <utility>

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMetaObject>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QShowEvent>
#include <QString>
#include <QTimer>

#include "engine/UpdateEngine.h"
#include "resources/UpdaterResources.h"
#include "ui/Label.h"
#include "ui/internal/DialogLayout.h"

using namespace AppResources;

namespace {

// The label's look, whatever the dialog font is.
constexpr const wchar_t* kLabelFace = L"Arial";
constexpr uint8_t kLabelCharSet = 0;
constexpr int kLabelPointSize = 11;
// Draws of the bar are at least this far apart: a fast download sends an event per block,
// far more than anyone can see.
constexpr int kProgressIntervalMs = 20;
// Time the finished dialog stays on screen before the demo presses "Launch" by itself.
constexpr int kDemoLaunchDelayMs = 1000;

StringID LabelTextFor(Engine::UpdateState state) {
    switch (state) {
        case Engine::Preparing:
            return StringID_PreparingForDownload;
        case Engine::Connecting:
            return StringID_ConnectingToDownloadServer;
        case Engine::Downloading:
            return StringID_DownloadingComponents;
        case Engine::Installing:
            return StringID_InstallingComponents;
        default:
            return StringID_InstallationComplete;
    }
}

}  // namespace

CUpdaterDlg::CUpdaterDlg(UI::UpdaterDialogContext dialogContext, QWidget* parent)
    : QDialog(parent), context(std::move(dialogContext)) {
    if (context.engine == nullptr)
        throw std::invalid_argument("the progress dialog needs an update engine");
    if (!context.text) throw std::invalid_argument("the progress dialog needs its texts");

    const Platform::DialogTemplate dialogTemplate =
        UI::internal::LoadDialogTemplate(IDD_UPDATER_DIALOG);
    setWindowTitle(QString::fromStdWString(dialogTemplate.title));
    const auto controls = UI::internal::BuildControls(
        dialogTemplate, this, [this](const Platform::DialogItem& item) -> QWidget* {
            if (item.id != IDC_UPDATE_STATUS) return nullptr;
            label = new CLabel(this);
            label->PreSubclassWindow(item.style);
            label->SetText(item.title.text);
            return label;
        });
    const auto control = [&controls](uint32_t id) -> QWidget* {
        const auto found = controls.find(id);
        return found == controls.end() ? nullptr : found->second;
    };
    progress = qobject_cast<QProgressBar*>(control(IDC_UPDATE_PROGRESS));
    launchButton = qobject_cast<QPushButton*>(control(1));  // IDOK
    cancelButton = qobject_cast<QPushButton*>(control(2));  // IDCANCEL
    if (!label || !progress || !launchButton || !cancelButton)
        throw std::runtime_error("dialog template 102 lacks the label, the bar or a button");

    setWindowIcon(UI::internal::LoadModuleIcon(IDR_MAINFRAME));
    connect(launchButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancelButton, &QPushButton::clicked, this, &CUpdaterDlg::reject);
    for (QPushButton* button : {launchButton, cancelButton}) {
        if (button->isDefault() && defaultButton == nullptr) defaultButton = button;
        // Return is handled below, the same way whichever button has the focus.
        button->setAutoDefault(false);
    }

    context.engine->AddListener(this);
}

CUpdaterDlg::~CUpdaterDlg() {
    context.engine->RemoveListener(this);
}

void CUpdaterDlg::OnStateChanged() {
    QMetaObject::invokeMethod(
        this, [this] { OnUpdateState(); }, Qt::QueuedConnection);
}

void CUpdaterDlg::OnProgress() {
    // The counts live in the engine; one queued call reads whatever is latest. The exchanges
    // pair up, so the handler sees at least the counts written before the call it takes.
    if (m_progressQueued.exchange(true, std::memory_order_acq_rel)) return;
    QMetaObject::invokeMethod(
        this, [this] { DrawProgress(); }, Qt::QueuedConnection);
}

void CUpdaterDlg::DrawProgress() {
    OnUpdateProgress();
    // Events stay held off for one interval; then what arrived meanwhile is drawn once.
    QTimer::singleShot(kProgressIntervalMs, this, [this] {
        m_progressQueued.exchange(false, std::memory_order_acq_rel);
        OnUpdateProgress();
    });
}

void CUpdaterDlg::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!initialized) {
        initialized = true;
        OnInitDialog();
    }
}

void CUpdaterDlg::OnInitDialog() {
    setWindowTitle(QString::fromStdWString(ExpandedText(StringID_ProductInstallation)));
    // A long product name widens the launch button into the free room on its left, up to
    // the margin that the bar keeps.
    UI::internal::FitButtonText(
        launchButton, QString::fromStdWString(ExpandedText(StringID_LaunchProduct)), progress->x());
    UI::internal::FitButtonText(cancelButton,
                                QString::fromStdWString(ExpandedText(StringID_CancelInstallation)),
                                cancelButton->x());
    label->SetFontName(kLabelFace, kLabelCharSet).SetFontSize(kLabelPointSize);
    // The label has room for one line: a text that a long product name makes too wide ends
    // in "..." rather than in a second line cut off at the bottom.
    label->SetEndEllipsis(true);
    if (context.startEngine) context.engine->Start();
    label->SetText(ExpandedText(StringID_PreparingForDownload));
    // Focus to the first control that takes it, as the window may be activated only later,
    // when the launch button has appeared before it.
    for (QWidget* widget = nextInFocusChain(); widget != this;
         widget = widget->nextInFocusChain()) {
        if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus)) {
            widget->setFocus(Qt::TabFocusReason);
            break;
        }
    }
}

void CUpdaterDlg::OnUpdateState() {
    if (m_failureBoxOpen) return;
    Engine::UpdateEngine& engine = *context.engine;
    if (engine.IsFailed() && !m_cancelled) {
        ReportFailure();
        return;
    }
    const Engine::UpdateState state = engine.GetState();
    const bool finished = state >= Engine::Finished;  // any unknown stage counts as the end
    if (finished) {
        progress->hide();
        if (!context.runWithProduct) launchButton->show();
        UI::internal::FitButtonText(cancelButton, QString::fromStdWString(Text(StringID_Close)),
                                    cancelButton->x());
    }
    label->SetText(Text(LabelTextFor(state)));
    if (finished && !m_cancelled) RunDemoAids();
}

void CUpdaterDlg::OnUpdateProgress() {
    uint32_t total = context.engine->GetTotalSize();
    uint32_t done = context.engine->GetDownloadedSize();
    // A size the server did not tell gives the range 0 to 0, which the bar draws empty.
    // The bar counts in int: halve both counts until the size fits.
    while (total > static_cast<uint32_t>(INT_MAX)) {
        total >>= 1;
        done >>= 1;
    }
    progress->setRange(0, static_cast<int>(total));
    progress->setValue(static_cast<int>(std::min(done, total)));
}

void CUpdaterDlg::ReportFailure() {
    if (!m_errorShown) {
        m_errorShown = true;
        m_failureBoxOpen = true;
        const std::wstring text = ExpandedText(StringID_InstallationFailed);
        const std::wstring caption = Text(StringID_Error);
        if (context.showFailure) {
            context.showFailure(text, caption);
        } else {
            NewFailureBox(text, caption, this)->exec();
        }
        m_failureBoxOpen = false;
    }
    // The worker has ended by itself; only the window goes.
    QDialog::reject();
}

std::unique_ptr<QMessageBox> CUpdaterDlg::NewFailureBox(const std::wstring& text,
                                                        const std::wstring& caption,
                                                        QWidget* parent) {
    return std::make_unique<QMessageBox>(QMessageBox::Warning, QString::fromStdWString(caption),
                                         QString::fromStdWString(text), QMessageBox::Ok, parent);
}

void CUpdaterDlg::reject() {
    m_cancelled = true;
    context.engine->Cancel();
    QDialog::reject();
}

void CUpdaterDlg::closeEvent(QCloseEvent* event) {
    if (context.engine->GetState() != Engine::Finished) {
        // Closing the window must not stop a download or an installation under way.
        event->ignore();
        showMinimized();
        return;
    }
    QDialog::closeEvent(event);
}

void CUpdaterDlg::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter || (event->modifiers() & ~Qt::KeypadModifier) != 0) {
        QDialog::keyPressEvent(event);
        return;
    }
    auto* target = qobject_cast<QPushButton*>(focusWidget());
    if (target == nullptr || !target->isVisible()) target = defaultButton;
    if (target != nullptr && target->isVisible() && target->isEnabled()) target->click();
}

void CUpdaterDlg::RunDemoAids() {
    if (demoAidsDone || (context.screenshotPath.empty() && !context.autoLaunch)) return;
    demoAidsDone = true;
    // After the texts of this state have been laid out and painted.
    QTimer::singleShot(0, this, [this] {
        if (!context.screenshotPath.empty())
            grab().save(QString::fromStdWString(context.screenshotPath), "PNG");
    });
    if (context.autoLaunch && !context.runWithProduct)
        QTimer::singleShot(kDemoLaunchDelayMs, this, [this] { launchButton->click(); });
}

std::wstring CUpdaterDlg::StatusText() const {
    return label->GetText();
}

std::wstring CUpdaterDlg::Text(StringID id) const {
    return context.text(id);
}

std::wstring CUpdaterDlg::ExpandedText(StringID id) const {
    std::wstring text = context.text(id);
    return context.expand ? context.expand(text) : text;
}
