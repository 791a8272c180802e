#include "mainwindow/ndiwindow.h"

#include "app/recordfile.h"
#include "app/testrun.h"
#include "app/unusedmemory.h"
#include "charts/cpugputrack.h"
#include "charts/customplot.h"
#include "charts/previewfeed.h"
#include "charts/videoglpreview.h"
#include "mainwindow/analysisview.h"
#include "mainwindow/controlstates.h"
#include "mainwindow/figures.h"
#include "mainwindow/formatprobes.h"
#include "mainwindow/machinetabs.h"
#include "mainwindow/modeswitch.h"
#include "mainwindow/ndiwindowform.h"
#include "mainwindow/previewchoice.h"
#include "mainwindow/previewwarmup.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "mainwindow/reportfiles.h"
#include "mainwindow/resulttables.h"
#include "mainwindow/sourcelists.h"
#include "mainwindow/sourcesearch.h"
#include "mainwindow/windowlog.h"
#include "ndi/ndilib.h"
#include "probes/benchmarkdlg.h"
#include "probes/loadtrack.h"
#include "ui_ndiwindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QPointer>
#include <QShortcut>

#include <utility>

namespace {

constexpr int progressIntervalMs = 100;
constexpr int searchAgainMs = 500; ///< after a search without a source
constexpr int mostEmptySearches = 10;
constexpr int longestEndMs = 2500; ///< receivers and probes end within a second

// Tops of the charts' vertical axes at the start of a test.
constexpr int singleFpsTop = 90;
constexpr int multipleFpsTop = 60;
constexpr int dataRateTop = 100;
constexpr int latencyTop = 10;

} // namespace

NDIWindow::NDIWindow(QWidget *parent) : NDIWindow(NDIWindowParts::ofThisMachine(), parent) {}

NDIWindow::NDIWindow(NDIWindowParts parts, QWidget *parent)
    : QMainWindow(parent), m_parts(std::move(parts)), ui(std::make_unique<Ui::NDIWindow>()),
      m_probes(std::make_unique<FormatProbes>()), m_test(std::make_unique<TestRun>()),
      m_analysis(std::make_unique<AnalysisRun>(m_parts.makeAnalysisWorker)),
      m_analysisView(std::make_unique<AnalysisView>(ui.get()))
{
    registerNdiMetaTypes();
    ui->setupUi(this);
    dressForm(*ui);
    testTimer.setSingleShot(true);
    testTimer.setTimerType(Qt::PreciseTimer);
    orderFocus(*ui);
    m_figures = std::make_unique<FigurePanel>(*ui);
    m_previewFeed = std::make_unique<PreviewFeed>(ui->vidGlPreview);
    m_previewChoice = std::make_unique<PreviewChoice>(ui->cmbPreviewSources, ui->vidGlPreview, ui->widPreviewWrapper,
                                                      ui->lblDefaultImage);
    m_modes = std::make_unique<ModeSwitch>(ui.get(), m_previewChoice.get(), m_parts.analysisToolThere, this);
    m_controls = std::make_unique<ControlStates>(ui.get());
    m_machineTabs = std::make_unique<MachineTabs>(ui.get(), m_parts.adapterProbes());

    const bool canStay = initialize();
    m_previewChoice->reset();
    ui->widPreviewWrapper->hide();
    if (!canStay) {
        // From the event loop, so that whoever made the window can connect first.
        QMetaObject::invokeMethod(this, &NDIWindow::close, Qt::QueuedConnection);
    }
}

NDIWindow::~NDIWindow()
{
    m_isClosing = true;
    m_previewWarmUp.reset();
    ui->loadTrack->sampler->running = false;
    m_probes->stop();
    m_test->disconnect(this);
    m_test->stopReceivers();
    m_analysis.reset();
    previewThread.finish();
    // Whatever uses the library goes before it does.
    m_search.reset();
    m_probes.reset();
    m_test.reset();
    if (m_isLibraryInUse)
        NDIlib_destroy();
}

void NDIWindow::warmUpPreview()
{
    if (m_parts.revisionOnly)
        return;
    m_previewWarmUp = std::make_unique<PreviewWarmUp>(ui->vidGlPreview, [this] { return m_test->isRunning(); });
    m_previewWarmUp->start();
}

bool NDIWindow::initialize()
{
    m_machineTabs->showInfoTab(0);
    m_modes->switchTo(ModeSwitch::Mode::single);
    m_machineTabs->fill();
    m_sources = std::make_unique<SourceLists>(ui.get(), m_probes.get());
    connectSignals();

    if (m_parts.revisionOnly) {
        setUpForRevisionOnly();
    } else {
        m_isLibraryInUse = NDIlib_initialize();
        if (!m_isLibraryInUse) {
            QMessageBox::information(this, QStringLiteral("Error"), QStringLiteral("Can not initialize NDI Lib"),
                                     QMessageBox::Ok);
            return false;
        }
        setUpFinder();
    }
    refreshSource();
    m_machineTabs->fillNetwork();
    return true;
}

void NDIWindow::setUpForRevisionOnly()
{
    ui->label_source->setText(tr("NO NDI RUNTIME"));
    ui->btn_test->setEnabled(false);
    const QString why = tr("The NDI runtime is not installed, so there are no sources to test. "
                           "Reports can be imported. The runtime is at https://ndi.video/tools");
    for (QWidget *control : {static_cast<QWidget *>(ui->label_source), static_cast<QWidget *>(ui->btn_refresh),
                             static_cast<QWidget *>(ui->btn_test)})
        control->setToolTip(why);
}

void NDIWindow::setUpFinder()
{
    m_search = std::make_unique<SourceSearch>();
    connect(&m_search->finder(), &SourceFinder::didFindNIDSources, this, &NDIWindow::getNDISource);
    connect(&m_search->finder(), &SourceFinder::finished, this, &NDIWindow::findThreadFinished);
}

void NDIWindow::connectSignals()
{
    connect(&progressTimer, &QTimer::timeout, this, &NDIWindow::TimeUpdated);
    connect(ui->btn_dev, &QToolButton::clicked, this, &NDIWindow::click_btn_dev);
    connect(ui->btn_network, &QToolButton::clicked, this, &NDIWindow::click_btn_network);
    connect(ui->btn_system, &QToolButton::clicked, this, &NDIWindow::click_btn_system);
    m_modes->connectOptions();
    connect(ui->sourceTable, &QtCustomTableWidget::clickedDetails, this, [this] { m_modes->expandDetails(true); });
    connect(ui->detailTable, &QtCustomTableWidget::clickedDetails, this, [this] { m_modes->expandDetails(false); });
    connect(ui->btn_expanding, &QToolButton::clicked, this, [this] { m_modes->expandDetails(true); });
    connect(ui->btn_collapsing, &QToolButton::clicked, this, [this] { m_modes->expandDetails(false); });
    for (QToolButton *button : {ui->btn_import, ui->btn_import1})
        connect(button, &QToolButton::clicked, this, &NDIWindow::importData);
    for (QToolButton *button : {ui->btn_export, ui->btn_export1})
        connect(button, &QToolButton::clicked, this, &NDIWindow::exportData);
    connect(ui->btn_refresh, &QToolButton::clicked, this, &NDIWindow::refreshSource);
    connect(ui->btn_test, &QToolButton::clicked, this, &NDIWindow::startStopTest);
    connect(ui->loadTrack, &CpuGpuTrack::finished, this, &NDIWindow::trackFinished);
    connect(ui->btn_benchmark, &QToolButton::clicked, this, &NDIWindow::startBenchmark);

    // Not a shortcut of the button: that would go with its text.
    auto *const startStop = new QShortcut(QKeySequence(Qt::CTRL + Qt::Key_Return), this);
    connect(startStop, &QShortcut::activated, ui->btn_test, [this] {
        if (ui->btn_test->isVisible())
            ui->btn_test->click();
    });
    ui->btn_test->setToolTip(tr("Starts a test in the chosen mode, or stops it and writes its record (%1)")
                                 .arg(startStop->key().toString()));

    connectCharts();
    connect(m_test.get(), &TestRun::frameReceived, this, &NDIWindow::sourceFrameReceived);
    connect(m_test.get(), &TestRun::sourceFinished, this, &NDIWindow::sourceTestFinished);
    connect(m_test.get(), &TestRun::frameData, m_previewFeed.get(), &PreviewFeed::takeFrame);
    // A picture is copied when the preview has painted, and only of the source that it shows.
    connect(ui->vidGlPreview, &VideoGlPreview::finishedToRenderPixmap, m_test.get(), &TestRun::requestPicture);
    connect(m_previewChoice.get(), &PreviewChoice::shown, m_test.get(), &TestRun::setPictureSource);
    connect(m_analysis.get(), &AnalysisRun::gotVideoDataRate, this, &NDIWindow::gotVideoDataRate);
    connect(m_analysis.get(), &AnalysisRun::gotVideoSize, this, &NDIWindow::gotVideoSize);
    connect(m_analysis.get(), &AnalysisRun::ended, this, &NDIWindow::analysisEnded);
}

void NDIWindow::connectCharts()
{
    connect(this, &NDIWindow::frameRender, ui->fpsPlot, &CustomPlot::appendNewData);
    connect(this, &NDIWindow::dataRateRender, ui->dataPlot, &CustomPlot::appendNewData);
    connect(this, &NDIWindow::dataRateRender, ui->analysis_data_plot, &CustomPlot::appendNewData);
    connect(this, &NDIWindow::pingRender, ui->pingPlot, &CustomPlot::appendNewData);
    connect(this, &NDIWindow::videoSizeRender, ui->analysis_latency_plot, &CustomPlot::appendNewMultiData);
    connect(this, &NDIWindow::fpsSetMetaInfo, ui->fpsPlot, &CustomPlot::setMetaInfo);
    for (CustomPlot *chart : {ui->dataPlot, ui->analysis_latency_plot, ui->analysis_data_plot})
        connect(this, &NDIWindow::dataRateSetMetaInfo, chart, &CustomPlot::setMetaInfo);
    connect(this, &NDIWindow::pingSetMetaInfo, ui->pingPlot, &CustomPlot::setMetaInfo);
    for (CustomPlot *chart : {ui->fpsPlot, ui->pingPlot})
        connect(this, &NDIWindow::setGraphLabel, chart, &CustomPlot::setGraphLabel);
}

void NDIWindow::click_btn_dev()
{
    m_machineTabs->showInfoTab(0);
}

void NDIWindow::click_btn_system()
{
    m_machineTabs->showInfoTab(1);
}

void NDIWindow::click_btn_network()
{
    m_machineTabs->showInfoTab(2);
}

void NDIWindow::refreshSource()
{
    if (m_isClosing || (!m_search && !m_parts.revisionOnly) || (m_search && !m_search->start()))
        return;
    if (m_search)
        ui->label_source->setText(QStringLiteral("FINDING SOURCES..."));
    const bool toolThere = m_parts.analysisToolThere();
    if (!toolThere && ui->analysisOption->isChecked())
        m_modes->choose(ui->singleOption);
    ui->analysisOption->setToolTip(toolThere ? QString() : ModeSwitch::toolMissingText());
}

void NDIWindow::findThreadFinished()
{
    ui->label_source->setText(QStringLiteral("NDI SOURCES"));
}

void NDIWindow::getNDISource(const NDIlib_source_t *sources, int no_sources)
{
    if (m_isClosing) // no probes any more
        return;
    if (no_sources == SourceFinder::finderFailed || no_sources == SourceFinder::noSourceAppeared || no_sources <= 0) {
        // The first search often ends at once with an empty list: the sources come within the next seconds.
        if (no_sources == 0 && m_sources->catalog().count() == 0 && m_emptySearches++ < mostEmptySearches)
            QTimer::singleShot(searchAgainMs, this, &NDIWindow::refreshSource);
        return;
    }
    m_emptySearches = 0;
    m_sources->replace(sources, no_sources);
    qCDebug(windowLog, "sources listed: %d", no_sources);
}

int NDIWindow::measurementMinutes() const
{
    return qBound(TestRun::shortestMinutes, ui->timeList->currentIndex() + 1, TestRun::longestMinutes);
}

int NDIWindow::measurementMs() const
{
    return measurementMinutes() * m_parts.minuteMs;
}

void NDIWindow::startStopTest()
{
    if (m_parts.revisionOnly)
        return;
    if (m_test->isRunning()) {
        stopByUser();
        return;
    }
    m_analysis->abort(); // the tool goes on for a while after its test
    m_test->clearRows();
    markRevision(*ui, false);
    bool started = false;
    if (ui->singleOption->isChecked())
        started = startSingle();
    else if (ui->multiOption->isChecked())
        started = startMultiple();
    else if (ui->analysisOption->isChecked())
        startAnalysis();
    if (started)
        armTestTimer(&NDIWindow::stopTest);
}

void NDIWindow::stopByUser()
{
    testTimer.stop();
    m_test->stopReceivers(); // while the timers run, its last measurements count
    progressTimer.stop();
    previewThread.stop();
    m_controls->allowBenchmark();
    m_test->writeRecordIfAny();
}

void NDIWindow::beginRun()
{
    m_test->begin(m_sources->catalog().names());
    progressTimer.start(progressIntervalMs);
    testClock.start();
    // The loop of an earlier test may still be ending.
    previewThread.finish();
}

bool NDIWindow::startSingle()
{
    const int source = ui->sourceList->currentIndex();
    if (!m_sources->catalog().contains(source))
        return false;
    const int receivers = qBound(TestRun::fewestReceivers, ui->threadCount->currentIndex() + 1, TestRun::mostReceivers);
    const int lengthS = measurementMinutes() * 60;
    beginRun();
    emit fpsSetMetaInfo(lengthS, singleFpsTop, receivers);
    emit pingSetMetaInfo(lengthS, latencyTop, receivers);
    orderFocus(*ui); // the legends have new buttons
    qCDebug(windowLog, "test started: single, %d receivers", receivers);
    startSourceTest(source, receivers, 0);
    m_previewChoice->offer({{QString::number(source + 1), source}});
    m_controls->enter(ControlStates::single);
    return true;
}

bool NDIWindow::startMultiple()
{
    const QVector<int> checked = m_sources->checkedRows();
    QVector<QPair<QString, int>> previews;
    for (const int row : checked)
        previews.append({QString::number(row + 1), row});
    if (checked.isEmpty()) {
        m_previewChoice->reset();
        return false;
    }
    const int lengthS = measurementMinutes() * 60;
    beginRun();
    emit fpsSetMetaInfo(lengthS, multipleFpsTop, checked.size());
    emit dataRateSetMetaInfo(lengthS, dataRateTop, checked.size());
    emit pingSetMetaInfo(lengthS, latencyTop, checked.size());
    orderFocus(*ui);
    qCDebug(windowLog, "test started: multiple, %d receivers", checked.size());
    for (int k = 0; k < checked.size(); ++k) {
        emit setGraphLabel(k, QString::number(checked.at(k) + 1));
        startSourceTest(checked.at(k), 1, k);
    }
    m_previewChoice->offer(previews);
    m_controls->enter(ControlStates::multiple);
    return true;
}

void NDIWindow::startAnalysis()
{
    const QString source = ui->sourceList->currentText().trimmed();
    if (source.isEmpty() || !m_parts.analysisToolThere())
        return;
    m_controls->enter(ControlStates::analysis);
    const int lengthS = measurementMinutes() * 60;
    emit dataRateSetMetaInfo(lengthS, dataRateTop, 1);
    m_analysisView->wait();
    m_analysis->start(source, lengthS);
    qCDebug(windowLog, "analysis started");
}

/// One dialog at a time. The window may be gone when it ends.
void NDIWindow::runDialog(const std::function<void()> &dialog)
{
    if (m_isInDialog)
        return;
    m_isInDialog = true;
    const QPointer<NDIWindow> self(this);
    dialog();
    if (self)
        m_isInDialog = false;
}

void NDIWindow::startBenchmark()
{
    runDialog([] { BenchmarkDlg().exec(); });
}

void NDIWindow::exportData()
{
    runDialog([this] { exportCharts(this, *ui); });
}

void NDIWindow::importData()
{
    runDialog(
        [this] { importCharts(this, *ui, *m_modes, m_parts.analysisToolThere, [this] { m_analysis->abort(); }); });
}

void NDIWindow::startSourceTest(int sourceIndex, int receivers, int graphIndex)
{
    m_test->startSource(m_sources->catalog().source(sourceIndex), sourceIndex, receivers, graphIndex);
    previewThread.setWidget(ui->vidGlPreview);
    previewThread.start();
}

void NDIWindow::armTestTimer(void (NDIWindow::*end)())
{
    testTimer.stop();
    testTimer.start(measurementMs());
    disconnect(&testTimer, &QTimer::timeout, this, &NDIWindow::finishAnalysis);
    disconnect(&testTimer, &QTimer::timeout, this, &NDIWindow::stopTest);
    connect(&testTimer, &QTimer::timeout, this, end);
}

void NDIWindow::sourceFrameReceived(double fps, int time, int format, double defaultFPS, int width, int height,
                                    int dataRate, int ping, int sourceIndex, int indexNum)
{
    Q_UNUSED(dataRate)
    if (!progressTimer.isActive()) { // the test is over
        m_previewChoice->reset();
        return;
    }
    if (width == 0 && height == 0) { // no video
        emit frameRender(indexNum, time, 0.0);
        emit pingRender(indexNum, time, 0.0);
        m_figures->showNoVideo(indexNum);
        return;
    }
    m_test->addRow(fps, time, defaultFPS, width, height, ping, sourceIndex, indexNum);
    emit frameRender(indexNum, time, fps);
    emit pingRender(indexNum, time, ping);
    m_figures->show(indexNum, {fps, defaultFPS, static_cast<quint32>(format), width, height, ping});
}

void NDIWindow::TimeUpdated()
{
    const double share = testClock.isValid() ? static_cast<double>(testClock.elapsed()) / measurementMs() : 0.0;
    ui->progress_viewer->setValue(qMin(share * 100.0, 100.0));
}

void NDIWindow::takeAnalysisSample(QTime time)
{
    if (!m_analysisView->takeSample(time))
        return;
    progressTimer.start(progressIntervalMs);
    testClock.start();
    armTestTimer(&NDIWindow::finishAnalysis);
}

void NDIWindow::gotVideoDataRate(QTime time, double rate)
{
    takeAnalysisSample(time);
    m_analysisView->showDataRate(rate);
    emit dataRateRender(0, m_analysisView->msSinceStart(time), rate);
}

void NDIWindow::gotVideoSize(QTime time, double min_value, double max_value, double avg_value)
{
    takeAnalysisSample(time);
    m_analysisView->showLatency(min_value, max_value, avg_value);
    emit videoSizeRender(0, m_analysisView->msSinceStart(time), min_value, max_value, avg_value);
}

void NDIWindow::stopTest()
{
    m_test->stopReceivers(); // with the last measurements for the record
    m_test->writeRecordIfAny();
    testTimer.stop();
    previewThread.stop();
    if (progressTimer.isActive()) {
        TimeUpdated();
        progressTimer.stop();
    }
}

void NDIWindow::sourceTestFinished(int index)
{
    m_previewChoice->reset();
    const bool wasRunning = m_test->isRunning();
    m_test->forget(index);
    if (m_test->isRunning())
        return;
    if (wasRunning && (testTimer.isActive() || m_test->hasRows()))
        stopTest(); // all receivers ended by themselves
    m_controls->enter(ControlStates::idle);
    progressTimer.stop();
    QTimer::singleShot(0, this, [] { returnUnusedMemory(); }); // the receivers go first
    // Not after an analysis.
    if (wasRunning)
        qCDebug(windowLog, "test ended: last record '%s'", qUtf8Printable(recordPath()));
}

void NDIWindow::finishAnalysis()
{
    stopTest();
    sourceTestFinished(0);
    m_controls->allowBenchmark();
    ui->btn_test->setEnabled(true);
    m_analysisView->end();
    qCDebug(windowLog, "analysis ended");
}

/// A tool that ended without a sample would leave the window waiting for ever.
void NDIWindow::analysisEnded()
{
    if (m_analysisView->isWaiting())
        finishAnalysis();
}

bool NDIWindow::isEndingDone() const
{
    return !m_test->isRunning() && m_probes->isIdle() && !previewThread.isRunning()
           && (!m_search || !m_search->isRunning());
}

void NDIWindow::requestClose()
{
    if (m_isClosing)
        return;
    m_isClosing = true;
    if (m_test->isRunning())
        startStopTest();
    m_probes->stop();
    m_analysis->abort();
    previewThread.stop();
    if (m_search)
        m_search->requestEnd();
    ui->loadTrack->sampler->running = false;

    // Receivers, probes and the preview report their ends through the event loop.
    QElapsedTimer waited;
    waited.start();
    QEventLoop loop;
    QTimer poll;
    connect(&poll, &QTimer::timeout, &loop, [&] {
        previewThread.stop();
        if (isEndingDone() || waited.elapsed() > longestEndMs)
            loop.quit();
    });
    poll.start(20);
    // With glib, what came into the queue together with the event that brought us here does not wake a loop inside.
    QCoreApplication::sendPostedEvents();
    if (!isEndingDone())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    emit closeWindow();
}

void NDIWindow::closeEvent(QCloseEvent *event)
{
    requestClose();
    event->accept();
}

/// Others connect to it; the window has nothing to do then.
void NDIWindow::trackFinished() {}

void NDIWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    sizeStatusColumns(ui->tblStatus);
}
