// The progress dialog, offscreen, against a real engine whose worker the tests play
// themselves (states and byte counts set directly), and once against a real failing update.
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <QApplication>
#include <QFontMetrics>
#include <QImage>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include "UiTestApplication.h"
#include "engine/UpdateEngine.h"
#include "support/TestFiles.h"
#include "ui/Label.h"
#include "ui/UpdaterDialog.h"

using namespace AppResources;

namespace {

using TestSupport::WaitFor;

// Counts the events of one type that reach `watched`.
struct EventCounter : QObject {
    EventCounter(QObject* watched, QEvent::Type type) : type(type) {
        watched->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == type;
        return false;
    }
    QEvent::Type type;
    int count = 0;
};

class UpdaterDialogTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { TestSupport::EnsureQApplication(); }

    // Nothing listens on port 80 of 127.0.0.1 outside the tests' network namespaces, so a
    // started worker fails at once; the other tests never start it.
    void SetUp() override {
        Engine::ProductSettings settings;
        settings.downloadURL = L"127.0.0.1/LumettaTestSetup.exe";
        settings.productExecutable = L"lumetta-test-no-product";
        settings.exitEventName = L"lumetta-test-no-product_ExitEvent";
        engine =
            std::make_unique<Engine::UpdateEngine>(settings, (folder / "Update1.exe").wstring());
    }

    // Texts "T<id>"; expansion shows as "<...>", so a test sees which texts were expanded.
    UI::UpdaterDialogContext Context(bool startEngine = false) {
        UI::UpdaterDialogContext context;
        context.engine = engine.get();
        context.startEngine = startEngine;
        context.text = [](StringID id) { return L"T" + std::to_wstring(id); };
        context.expand = [](const std::wstring& text) { return L"<" + text + L">"; };
        context.showFailure = [this](const std::wstring& text, const std::wstring& caption) {
            failures.emplace_back(text, caption);
        };
        return context;
    }

    void SetState(Engine::UpdateState state) { engine->GetWorker().SetState(state); }

    TestSupport::TempFolder folder{"lumetta-dialog"};
    std::unique_ptr<Engine::UpdateEngine> engine;
    std::vector<std::pair<std::wstring, std::wstring>> failures;
};

TEST_F(UpdaterDialogTest, FollowsTheStagesAndLaunchesOnceFinished) {
    UI::UpdaterDialogContext context = Context();
    context.screenshotPath = (folder / "dialog.png").wstring();
    context.autoLaunch = true;
    CUpdaterDlg dialog(context);
    dialog.open();
    ASSERT_TRUE(WaitFor([&] { return dialog.isVisible(); }));

    EXPECT_EQ(dialog.windowTitle().toStdWString(), L"<T7>");
    EXPECT_EQ(dialog.LaunchButton()->text().toStdWString(), L"<T8>");
    EXPECT_EQ(dialog.CancelButton()->text().toStdWString(), L"<T9>");
    EXPECT_EQ(dialog.StatusText(), L"<T0>");
    EXPECT_TRUE(dialog.LaunchButton()->isHidden());
    EXPECT_TRUE(dialog.ProgressBar()->isVisible());
    EXPECT_EQ(dialog.focusWidget(), dialog.CancelButton()) << "the first control taking focus";
    // The template's layout in pixels: the bar lies between the label and the buttons.
    EXPECT_GT(dialog.ProgressBar()->y(), dialog.StatusLabel()->y());
    EXPECT_GT(dialog.CancelButton()->y(), dialog.ProgressBar()->geometry().bottom());
    // One line of status text, in the font it is drawn with, fits the label.
    const CLabel& label = *dialog.StatusLabel();
    EXPECT_LE(QFontMetrics(*label.GetFont()->GetHandle(), &label).height(),
              label.contentsRect().height());

    SetState(Engine::Connecting);
    EXPECT_TRUE(WaitFor([&] { return dialog.StatusText() == L"T1"; }));

    // Unknown size: the range 0 to 0, drawn as an empty bar that stays still.
    engine->GetWorker().OnStart(0);
    EXPECT_TRUE(WaitFor([&] { return dialog.StatusText() == L"T2"; }));
    engine->GetWorker().OnWritten(500);
    dialog.OnUpdateProgress();
    QProgressBar& bar = *dialog.ProgressBar();
    EXPECT_EQ(std::make_tuple(bar.minimum(), bar.maximum(), bar.value()), std::make_tuple(0, 0, 0));
    const QImage unknown = bar.grab().toImage();
    WaitFor([] { return false; }, 300);
    EXPECT_EQ(bar.grab().toImage(), unknown);
    bar.setRange(0, 1);
    EXPECT_EQ(bar.grab().toImage(), unknown) << "the look of an empty bar";

    // A flood of progress events (one per block) leaves one call in the queue, which shows
    // the latest count.
    engine->GetWorker().OnStart(2000);
    QApplication::processEvents();
    EventCounter metaCalls(&dialog, QEvent::MetaCall);
    for (uint32_t written = 1; written <= 1500; ++written) engine->GetWorker().OnWritten(written);
    EXPECT_TRUE(WaitFor([&] { return bar.value() == 1500; }));
    EXPECT_EQ(bar.maximum(), 2000);
    EXPECT_EQ(metaCalls.count, 1);

    SetState(Engine::Installing);
    EXPECT_TRUE(WaitFor([&] { return dialog.StatusText() == L"T3"; }));
    EXPECT_TRUE(dialog.LaunchButton()->isHidden());

    SetState(Engine::Finished);
    EXPECT_TRUE(WaitFor([&] { return dialog.StatusText() == L"T4"; }));
    EXPECT_TRUE(dialog.ProgressBar()->isHidden());
    EXPECT_FALSE(dialog.LaunchButton()->isHidden());
    EXPECT_EQ(dialog.CancelButton()->text().toStdWString(), L"T11");

    // The demo aids: a picture, then "Launch" pressed by itself.
    EXPECT_TRUE(WaitFor([&] { return !dialog.isVisible(); }, 5000));
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(failures.empty());
    const std::string png = TestSupport::ReadFile(folder / "dialog.png");
    EXPECT_EQ(png.substr(0, 4), "\x89PNG");
}

TEST_F(UpdaterDialogTest, WithTheProductRunningOffersOnlyClose) {
    UI::UpdaterDialogContext context = Context();
    context.runWithProduct = true;
    CUpdaterDlg dialog(context);
    dialog.open();
    ASSERT_TRUE(WaitFor([&] { return dialog.isVisible(); }));

    // The close box minimises while the update runs.
    SetState(Engine::Downloading);
    dialog.close();
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.isMinimized());

    SetState(Engine::Finished);
    EXPECT_TRUE(WaitFor([&] { return dialog.StatusText() == L"T4"; }));
    EXPECT_TRUE(dialog.LaunchButton()->isHidden());
    EXPECT_EQ(dialog.CancelButton()->text().toStdWString(), L"T11");

    dialog.close();
    EXPECT_TRUE(WaitFor([&] { return !dialog.isVisible(); }));
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_TRUE(failures.empty());
}

TEST_F(UpdaterDialogTest, AFailingUpdateShowsOneBoxAndEndsTheDialog) {
    CUpdaterDlg dialog(Context(/*startEngine=*/true));
    dialog.open();
    EXPECT_TRUE(
        WaitFor([&] { return !dialog.isVisible() && engine->GetState() == Engine::Finished; }));
    EXPECT_TRUE(engine->IsFailed());
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    // Notices of the same end that arrive later show nothing more.
    dialog.OnStateChanged();
    dialog.OnUpdateState();
    QApplication::processEvents();
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_EQ(failures[0].first, L"<T5>");  // text expanded, caption not
    EXPECT_EQ(failures[0].second, L"T10");
    EXPECT_FALSE(engine->GetWorker().IsCancelled());  // the engine was not asked
}

// The worker's events come from its own thread; a dialog closed while they still arrive
// must neither see them nor be reached after it is gone.
TEST_F(UpdaterDialogTest, EventsFromTheWorkerThreadReachTheDialog) {
    auto dialog = std::make_unique<CUpdaterDlg>(Context());
    dialog->open();
    ASSERT_TRUE(WaitFor([&] { return dialog->isVisible(); }));
    std::atomic<bool> stop{false};
    std::thread worker([&] {
        SetState(Engine::Connecting);
        engine->GetWorker().OnStart(4000);
        for (uint32_t done = 0; done <= 4000; done += 100) engine->GetWorker().OnWritten(done);
        SetState(Engine::Installing);
        while (!stop.load()) engine->GetWorker().OnWritten(4000);
    });
    EXPECT_TRUE(WaitFor(
        [&] { return dialog->StatusText() == L"T3" && dialog->ProgressBar()->value() == 4000; }));
    dialog.reset();
    QApplication::processEvents();
    stop = true;
    worker.join();
}

TEST_F(UpdaterDialogTest, CancelAsksTheEngineAndShowsNoBox) {
    CUpdaterDlg dialog(Context());
    dialog.open();
    ASSERT_TRUE(WaitFor([&] { return dialog.isVisible(); }));
    dialog.CancelButton()->click();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_TRUE(engine->GetWorker().IsCancelled());
    // Events that follow the cancel show nothing.
    engine->GetWorker().OnFinish(false);
    SetState(Engine::Finished);
    dialog.OnUpdateState();
    EXPECT_TRUE(failures.empty());
}

// Holds the worker in its first event, as a long setup run holds it in Installing, until
// released (or 20 s have passed).
struct HoldingObserver : Engine::IUpdateEvents {
    void OnStateChanged() override {
        if (entered.exchange(true)) return;
        for (int i = 0; i < 2000 && !released.load(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    void OnProgress() override {}
    std::atomic<bool> entered{false}, released{false};
};

TEST_F(UpdaterDialogTest, CancelWaitsForTheWorkerWhileTheWindowKeepsWorking) {
    HoldingObserver holder;
    engine->AddListener(&holder);
    CUpdaterDlg dialog(Context(/*startEngine=*/true));
    dialog.open();
    ASSERT_TRUE(WaitFor([&] { return holder.entered.load(); }));

    // Runs only if the window's thread handles events while the cancel waits.
    bool buttonEnabled = true, visible = false;
    QTimer::singleShot(100, &dialog, [&] {
        buttonEnabled = dialog.CancelButton()->isEnabled();
        visible = dialog.isVisible();
        dialog.reject();  // Esc meanwhile: ignored
        holder.released = true;
    });
    dialog.CancelButton()->click();
    EXPECT_TRUE(holder.released.load()) << "the window froze while the cancel waited";
    EXPECT_FALSE(buttonEnabled);
    EXPECT_TRUE(visible) << "the window stays until the worker has ended";
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(engine->GetState(), Engine::Finished);
    EXPECT_TRUE(engine->IsFailed());
    EXPECT_TRUE(failures.empty());
    engine->RemoveListener(&holder);
}

}  // namespace
