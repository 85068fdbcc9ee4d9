// CUpdaterDlg: the progress dialog, the only window of the updater. Built from dialog
// template 102 of the executable's resources, it starts the update when it is first shown,
// shows the stage in its status label and the download in its bar, offers "Cancel
// Installation" while the update runs and, once it has finished, "Launch" and "Close".
//
// The worker learns nothing of the window: its events (OnStateChanged, OnProgress) arrive
// on the worker thread and only queue a call to the dialog's thread, whose handlers read
// the engine's current values. Several queued calls may therefore show the same state.
// Progress arrives once per received block; at most one progress call waits in the queue
// at a time and the bar is drawn at most every 20 ms, so a fast download cannot flood the
// user-interface thread.
//
// Keyboard: focus starts on the first control that takes it in tab order; Return presses
// the focused push button, else the template's default button when it is shown.
//
// Ends with QDialog::Accepted only through the launch button; with QDialog::Rejected
// through the cancel button, Esc, the close box once finished, or a failure.
//
// Thread safety: the user-interface thread for everything except OnStateChanged and
// OnProgress, which any thread may call.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include <QDialog>

#include "engine/IUpdateEvents.h"
#include "ui/UpdaterDialogHost.h"

class QCloseEvent;
class QKeyEvent;
class QMessageBox;
class QProgressBar;
class QPushButton;
class QShowEvent;

class CLabel;

class CUpdaterDlg : public QDialog, public Engine::IUpdateEvents {
public:
    // Builds the window and registers with the engine. Throws std::invalid_argument when
    // the context lacks the engine or the texts, std::runtime_error when the template
    // cannot be read.
    explicit CUpdaterDlg(UI::UpdaterDialogContext context, QWidget* parent = nullptr);
    // Leaves the engine's observers first, so that no event reaches a half-destroyed dialog.
    ~CUpdaterDlg() override;

    // Worker events: queue the handlers below and return at once.
    void OnStateChanged() override;
    void OnProgress() override;

    // Esc, the cancel button and the close box once finished: cancels the update and ends
    // the dialog once the worker has ended (a running setup is let finish first). The
    // window keeps painting while it waits; the cancel button is disabled, and a second
    // request is ignored.
    void reject() override;

    // The handlers of the queued events. Public for tests that drive the dialog directly.
    void OnUpdateState();
    void OnUpdateProgress();

    // The warning box that reports a failed update (or, without parent, a start that cannot
    // go on), not yet shown.
    static std::unique_ptr<QMessageBox> NewFailureBox(const std::wstring& text,
                                                      const std::wstring& caption, QWidget* parent);

    // The controls, for tests.
    CLabel* StatusLabel() const { return label; }
    std::wstring StatusText() const;
    QProgressBar* ProgressBar() const { return progress; }
    QPushButton* LaunchButton() const { return launchButton; }
    QPushButton* CancelButton() const { return cancelButton; }

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void OnInitDialog();
    std::wstring Text(AppResources::StringID id) const;
    std::wstring ExpandedText(AppResources::StringID id) const;
    void DrawProgress();
    void ReportFailure();
    void WaitForCancel();
    void RunDemoAids();

    UI::UpdaterDialogContext context;
    CLabel* label = nullptr;  // the controls are Qt children of the dialog
    QProgressBar* progress = nullptr;
    QPushButton* launchButton = nullptr;
    QPushButton* cancelButton = nullptr;
    QPushButton* defaultButton = nullptr;  // the template's default push button, if any
    // Set from queuing a progress call until one interval after it was drawn; the worker
    // queues another only when it is clear.
    std::atomic<bool> m_progressQueued{false};
    bool initialized = false;
    bool m_cancelled = false;
    bool m_errorShown = false;
    // While the failure box runs its own event loop, later state events wait for it: the
    // dialog closes only once the box is gone.
    bool m_failureBoxOpen = false;
    bool demoAidsDone = false;
};
