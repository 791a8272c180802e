#pragma once

#include "charts/previewthread.h"
#include "mainwindow/ndiwindowparts.h"
#include "ndi/ndimetatypes.h"

#include <QElapsedTimer>
#include <QMainWindow>
#include <QTime>
#include <QTimer>

#include <functional>
#include <memory>

class AnalysisView;
class ControlStates;
class FigurePanel;
class FormatProbes;
class MachineTabs;
class ModeSwitch;
class PreviewChoice;
class PreviewFeed;
class PreviewWarmUp;
class SourceLists;
class SourceSearch;
class TestRun;
namespace Ui {
class NDIWindow;
}

/// The program's window: connects the form's controls with the search for sources, the tests, the charts
/// and the records, and knows which of them are usable when. GUI thread; everything slow happens elsewhere
/// and reports by queued signals.
class NDIWindow final : public QMainWindow {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NDIWindow)

public:
    /// Names for others; the window itself tells its state by its controls.
    enum windowStatus { ready, running, stoping, stopeed };
    Q_ENUM(windowStatus)

    explicit NDIWindow(QWidget *parent = nullptr);
    explicit NDIWindow(NDIWindowParts parts, QWidget *parent = nullptr);
    /// Ends everything that still runs and waits for it, then leaves the NDI library.
    ~NDIWindow() override;

    const Ui::NDIWindow &form() const { return *ui; }
    /// Once the window is shown: makes OpenGL ready in idle moments, so that the first test need not. See
    /// PreviewWarmUp.
    void warmUpPreview();

signals:
    /// The window has ended all that it had under way; once.
    void closeWindow();
    /// A sample of graph testIndex: frames per second, ms, MB/s. time in ms.
    void frameRender(int testIndex, int time, double val);
    void pingRender(int testIndex, int time, double val);
    void dataRateRender(int testIndex, int time, double val);
    /// Receive times of an analysis, ms.
    void videoSizeRender(int testIndex, int time, double min_val, double max_val, double avg_val);
    /// New charts of maxX seconds and maxY units.
    void fpsSetMetaInfo(int maxX, int maxY, int sourceCount);
    void dataRateSetMetaInfo(int maxX, int maxY, int sourceCount);
    void pingSetMetaInfo(int maxX, int maxY, int sourceCount);
    void setGraphLabel(int index, QString label);

public slots:
    void click_btn_dev();
    void click_btn_network();
    void click_btn_system();
    /// Searches for sources, unless a search is under way.
    void refreshSource();
    /// Takes the result of a search; see SourceFinder::didFindNIDSources().
    void getNDISource(const NDIlib_source_t *sources, int no_sources);
    void findThreadFinished();
    /// Starts a test in the chosen mode, or stops the running one and writes its record.
    void startStopTest();
    void startBenchmark();
    /// All receivers of a source are gone.
    void sourceTestFinished(int index);
    /// Takes one measurement; see ReceiverController::sourceFrameReceived().
    void sourceFrameReceived(double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                             int ping, int sourceIndex, int indexNum);
    void TimeUpdated();
    /// Ends whatever is under way, with its record, and then sends closeWindow(). Takes at most some seconds.
    void requestClose();
    void trackFinished();
    void importData();
    void exportData();
    void gotVideoDataRate(QTime time, double rate);
    void gotVideoSize(QTime time, double min_value, double max_value, double avg_value);
    void finishAnalysis();
    void stopTest();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    bool initialize();
    void connectSignals();
    void connectCharts();
    void setUpFinder();
    void setUpForRevisionOnly();
    int measurementMinutes() const;
    int measurementMs() const;
    bool startSingle();
    bool startMultiple();
    void startAnalysis();
    void startSourceTest(int sourceIndex, int receivers, int graphIndex);
    void beginRun();
    void armTestTimer(void (NDIWindow::*end)());
    void stopByUser();
    void takeAnalysisSample(QTime time);
    void runDialog(const std::function<void()> &dialog);
    bool isEndingDone() const;
    void analysisEnded();

    const NDIWindowParts m_parts;
    std::unique_ptr<Ui::NDIWindow> ui;
    std::unique_ptr<SourceSearch> m_search; ///< none without the runtime
    std::unique_ptr<FormatProbes> m_probes;
    std::unique_ptr<SourceLists> m_sources; ///< shows what the probes find
    std::unique_ptr<TestRun> m_test;
    std::unique_ptr<AnalysisRun> m_analysis;
    std::unique_ptr<AnalysisView> m_analysisView;
    QTimer testTimer;        ///< single shot, the length of the test
    QTimer progressTimer;    ///< 100 ms; active as long as measurements count
    QElapsedTimer testClock; ///< invalid before the first test
    std::unique_ptr<FigurePanel> m_figures;
    PreviewThread previewThread; ///< asks for the preview's repaints
    std::unique_ptr<PreviewFeed> m_previewFeed;
    std::unique_ptr<PreviewChoice> m_previewChoice;
    std::unique_ptr<PreviewWarmUp> m_previewWarmUp;
    std::unique_ptr<ModeSwitch> m_modes;
    std::unique_ptr<ControlStates> m_controls;
    std::unique_ptr<MachineTabs> m_machineTabs;
    bool m_isLibraryInUse = false; ///< NDIlib_initialize() succeeded
    bool m_isClosing = false;
    int m_emptySearches = 0; ///< in a row
    bool m_isInDialog = false;
};
