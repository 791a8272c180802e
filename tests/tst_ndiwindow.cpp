#include "charts/customplot.h"
#include "mainwindow/customheader.h"
#include "resources/vexaresources.h"
#include "tests/support/testhome.h"
#include "tests/support/windowcase.h"

#include <QMessageBox>
#include <QSignalSpy>

class TestNdiWindow final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void startsIdleAndSingle();
    void searchResultsThatAreNoList_data();
    void searchResultsThatAreNoList();
    void searchesAgainAfterAnEmptyList();
    void formatsOfTheSources();
    void modesShowTheirPages();
    void detailsTakeTheChartsPlace();
    void tickingSources();
    void singleTestRunsItsTime();
    void singleTestStoppedByTheUser();
    void multipleTestRunsItsTime();
    void nothingToTestStartsNothing_data();
    void nothingToTestStartsNothing();
    void receiversThatEndByThemselves();
    void framesWithoutVideoDrawZeros();
    void framesAfterTheEndAreDropped();
    void figuresAreExactAndPaintedAtAPace_data();
    void figuresAreExactAndPaintedAtAPace();
    void aNewListDuringATest();
    void analysisWithoutToolIsRefused_data();
    void analysisWithoutToolIsRefused();
    void analysisWithoutSamplesEnds();
    void analysisRunsFromItsFirstSample();
    void keysStartAndStop();
    void runtimeThatDoesNotStart();
    void closing_data();
    void closing();

private:
    TestHome m_home;
};

namespace {

/// Counts the events of one type that a widget gets.
class EventCount final : public QObject {
public:
    EventCount(QWidget *widget, QEvent::Type type) : m_type(type) { widget->installEventFilter(this); }
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_count += event->type() == m_type;
        return false;
    }

private:
    QEvent::Type m_type;
    int m_count = 0;
};

} // namespace

void TestNdiWindow::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.use());
    QVERIFY(m_home.enter()); // the analysis writes its command file there
}

void TestNdiWindow::startsIdleAndSingle()
{
    WindowCase test(3);
    QCOMPARE(test.ui().label_source->text(), QStringLiteral("FINDING SOURCES..."));
    QVERIFY(test.isReady(3));
    const Ui::NDIWindow &ui = test.ui();
    QCOMPARE(ui.btn_test->text(), QStringLiteral("TEST"));
    QCOMPARE(usable(ui), words(allControls));
    QVERIFY(ui.singleOption->isChecked());
    QCOMPARE(ui.SourceContainer->currentIndex(), 0);
    QCOMPARE(ui.CentralContainer->currentIndex(), 0);
    QVERIFY(ui.wid_info->isVisible() && !ui.widStatusTable->isVisible());
    QVERIFY(!ui.dataflow->isVisible() && !ui.waiting_spinner->isVisible() && !ui.widPreviewWrapper->isVisible());
    QVERIFY(ui.lblDefaultImage->isVisible() && ui.progress_viewer->isVisible());
    QVERIFY(ui.dev_info->isVisible() && !ui.sys_info->isVisible() && !ui.net_info->isVisible());
    QCOMPARE(ui.sourceList->itemText(2), QStringLiteral("CAM 3"));
    QCOMPARE(ui.L2->text(), QStringLiteral("CAM 1"));
    QCOMPARE(ui.sourceTable->rowCount(), 3);
    QCOMPARE(ui.sourceTable->item(1, 1)->text(), QStringLiteral("2"));
    QCOMPARE(ui.sourceTable->item(1, 2)->text(), QStringLiteral("CAM 2"));
    QCOMPARE(ui.detailTable->item(2, 1)->text(), QStringLiteral("CAM 3"));
    QCOMPARE(ui.tblStatus->rowCount(), 0);
    QVERIFY(!ui.analysisOption->toolTip().isEmpty()); // no tool here
    QVERIFY(!ui.label_system_val->text().isEmpty());
    QVERIFY(!ui.w23->toolTip().isEmpty());
    for (const CustomPlot *chart :
         {ui.fpsPlot, ui.dataPlot, ui.pingPlot, ui.analysis_latency_plot, ui.analysis_data_plot}) {
        const auto *title = chart->findChild<QLabel *>(QStringLiteral("nameLabel"));
        QVERIFY2(title->sizeHint().width() <= title->maximumWidth(), qPrintable(title->text())); // not cut off
        QVERIFY(!title->text().isEmpty());
    }
    ui.sourceList->setCurrentIndex(2);
    QCOMPARE(ui.L2->text(), QStringLiteral("CAM 3"));
    QCOMPARE(ui.lblAnalysisProgressStatusValue->text(), QStringLiteral("CAM 3"));
}

void TestNdiWindow::searchResultsThatAreNoList_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("finder failed") << 10000;
    QTest::newRow("no source appeared") << 10001;
    QTest::newRow("0 sources") << 0;
}

void TestNdiWindow::searchResultsThatAreNoList()
{
    QFETCH(int, count);
    WindowCase test(2);
    QVERIFY(test.isReady(2));
    test.check(1)->setChecked(true);
    test.window->getNDISource(nullptr, count);
    QCOMPARE(test.ui().sourceList->count(), 2);
    QCOMPARE(test.ui().sourceTable->rowCount(), 2);
    QCOMPARE(test.ui().tblStatus->rowCount(), 1);
}

void TestNdiWindow::searchesAgainAfterAnEmptyList()
{
    WindowCase test(3, 60000, false, 2);
    QVERIFY(test.isReady(3));
    QCOMPARE(test.ndi.counts().waits, 3);
    QTest::qWait(700); // longer than the pause before another search
    QCOMPARE(test.ndi.counts().waits, 3);
}

void TestNdiWindow::formatsOfTheSources()
{
    WindowCase test(0);
    test.ndi.setScript({hd60});
    const std::array<NDIlib_source_t, 2> sources{NDIlib_source_t{"A", "10.0.0.1:5961"}, NDIlib_source_t{"B", nullptr}};
    test.window->getNDISource(sources.data(), 2);
    const Ui::NDIWindow &ui = test.ui();
    QCOMPARE(ui.detailTable->item(0, 2)->text(), QStringLiteral("10.0.0.1:5961"));
    QCOMPARE(ui.detailTable->item(1, 2)->text(), QString());
    QTRY_VERIFY(ui.detailTable->item(1, 6) && ui.detailTable->item(0, 6));
    QCOMPARE(ui.detailTable->item(1, 3)->text(), QStringLiteral("UYVY"));
    QCOMPARE(ui.detailTable->item(1, 4)->text(), QStringLiteral("59fps"));
    QCOMPARE(ui.detailTable->item(1, 5)->text(), QStringLiteral("1920"));
    QCOMPARE(ui.detailTable->item(1, 6)->text(), QStringLiteral("1080"));
    QCOMPARE(ui.label_videoFormat->text(), QStringLiteral("UYVY"));
    QCOMPARE(ui.label_videoFPS->text(), QStringLiteral("59fps"));
    QCOMPARE(ui.label_videoWidth->text(), QStringLiteral("1920"));
    QCOMPARE(ui.label_videoHeight->text(), QStringLiteral("1080"));
}

void TestNdiWindow::modesShowTheirPages()
{
    WindowCase test(2, 60000, true);
    QVERIFY(test.isReady(2));
    const Ui::NDIWindow &ui = test.ui();
    test.choose(ui.multiOption);
    QCOMPARE(ui.SourceContainer->currentIndex(), 1);
    QCOMPARE(ui.CentralContainer->currentIndex(), 0);
    QCOMPARE(ui.L2->text(), QStringLiteral("  MULTIPLE"));
    QVERIFY(!ui.wid_info->isVisible() && ui.widStatusTable->isVisible());

    test.choose(ui.analysisOption);
    QCOMPARE(ui.SourceContainer->currentIndex(), 0);
    QCOMPARE(ui.CentralContainer->currentIndex(), 1);
    QVERIFY(!ui.widReceiverCount->isVisible());
    QVERIFY(!ui.cmbPreviewSources->isEnabled());
    QCOMPARE(ui.cmbPreviewSources->currentIndex(), 0);

    test.choose(ui.benchmarkOption);
    QVERIFY(!ui.vW1->isVisible() && !ui.SourceContainer->isVisible() && ui.benchmark_container->isVisible());
    QVERIFY(ui.cmbPreviewSources->isEnabled());

    test.choose(ui.singleOption);
    QCOMPARE(ui.CentralContainer->currentIndex(), 0);
    QVERIFY(ui.vW1->isVisible() && ui.SourceContainer->isVisible() && !ui.benchmark_container->isVisible());
    QVERIFY(ui.widReceiverCount->isVisible() && ui.cmbPreviewSources->isEnabled());
    QCOMPARE(ui.L2->text(), QStringLiteral("CAM 1"));
}

void TestNdiWindow::detailsTakeTheChartsPlace()
{
    WindowCase test(2);
    QVERIFY(test.isReady(2));
    const Ui::NDIWindow &ui = test.ui();
    test.choose(ui.multiOption);
    QVERIFY(ui.middleContainer->isVisible() && !ui.multiInfoContainer->isVisible());
    ui.btn_expanding->click();
    QVERIFY(!ui.middleContainer->isVisible() && ui.multiInfoContainer->isVisible());
    QVERIFY(!ui.btn_expanding->isVisible() && ui.btn_collapsing->isVisible());
    emit ui.detailTable->clickedDetails();
    QVERIFY(ui.middleContainer->isVisible() && !ui.multiInfoContainer->isVisible());
    emit ui.sourceTable->clickedDetails();
    QVERIFY(ui.multiInfoContainer->isVisible());
    test.choose(ui.singleOption);
    QVERIFY(ui.middleContainer->isVisible() && !ui.multiInfoContainer->isVisible());
}

void TestNdiWindow::tickingSources()
{
    WindowCase test(3);
    QVERIFY(test.isReady(3));
    const Ui::NDIWindow &ui = test.ui();
    auto *header = qobject_cast<CustomHeader *>(ui.sourceTable->horizontalHeader());
    QVERIFY(header);
    test.check(2)->setChecked(true);
    test.check(0)->setChecked(true);
    QCOMPARE(ui.tblStatus->rowCount(), 2);
    QCOMPARE(ui.tblStatus->item(0, 0)->text(), QStringLiteral("1"));
    QCOMPARE(ui.tblStatus->item(1, 0)->text(), QStringLiteral("3"));
    QCOMPARE(ui.tblStatus->item(1, 1)->text(), QStringLiteral("CAM 3"));
    QVERIFY(!header->isAllChecked());
    test.check(1)->setChecked(true);
    QVERIFY(header->isAllChecked());
    test.check(1)->setChecked(false);
    QVERIFY(header->isAllChecked()); // mixed: stays
    header->toggle();
    QCOMPARE(ui.tblStatus->rowCount(), 0);
    header->toggle();
    QCOMPARE(ui.tblStatus->rowCount(), 3);
    QVERIFY(header->isAllChecked());
    // A new list begins without marks.
    const NDIlib_source_t source{"NEW", nullptr};
    test.window->getNDISource(&source, 1);
    QVERIFY(!header->isAllChecked());
    QCOMPARE(ui.tblStatus->rowCount(), 0);
    QCOMPARE(ui.sourceTable->rowCount(), 1);
    QVERIFY(!test.check(0)->isChecked());
}

void TestNdiWindow::singleTestRunsItsTime()
{
    WindowCase test(2, 2000); // the preview may take a while to set up
    QVERIFY(test.isReady(2));
    const Ui::NDIWindow &ui = test.ui();
    test.ndi.setScript(framesWithoutEnd());
    ui.sourceList->setCurrentIndex(1);
    ui.threadCount->setCurrentIndex(1); // two receivers
    QSignalSpy fpsMeta(test.window.get(), &NDIWindow::fpsSetMetaInfo);
    QSignalSpy pingMeta(test.window.get(), &NDIWindow::pingSetMetaInfo);
    QSignalSpy rateMeta(test.window.get(), &NDIWindow::dataRateSetMetaInfo);
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QCOMPARE(ui.btn_test->text(), QStringLiteral("STOP"));
    QCOMPARE(usable(ui), words("test single source receivers preview"));
    QCOMPARE(fpsMeta.takeFirst(), (QVariantList{60, 90, 2}));
    QCOMPARE(pingMeta.takeFirst(), (QVariantList{60, 10, 2}));
    QVERIFY(rateMeta.isEmpty());
    QCOMPARE(ui.cmbPreviewSources->count(), 2);
    QCOMPARE(ui.cmbPreviewSources->currentText(), QStringLiteral("2"));
    QCOMPARE(ui.cmbPreviewSources->currentData().toInt(), 1);
    QVERIFY(ui.widPreviewWrapper->isVisible() && !ui.lblDefaultImage->isVisible());

    QTRY_VERIFY(frames.count() > 20);
    QVERIFY(ui.L4->text().endsWith(QStringLiteral("fps")));
    QVERIFY(ui.L8->text().endsWith(QStringLiteral(" ms")));
    QCOMPARE(ui.label_videoFPS->text(), QStringLiteral("59")); // without unit during a test
    QTRY_VERIFY(test.isIdle());

    QCOMPARE(usable(ui), words("test time single multiple analysis refresh import export import1 export1 source "
                               "receivers preview")); // no benchmark after a test that ended by itself
    QCOMPARE(ui.fpsPlot->plainPoints(0).size() + ui.fpsPlot->plainPoints(1).size(), std::size_t(frames.count()));
    QCOMPARE(ui.pingPlot->plainPoints(0).size(), ui.fpsPlot->plainPoints(0).size());
    QCOMPARE(ui.cmbPreviewSources->count(), 1);
    QVERIFY(!ui.widPreviewWrapper->isVisible() && ui.lblDefaultImage->isVisible());
    const QStringList lines = recordLines();
    QCOMPARE(lines.first(), recordHeader());
    QCOMPARE(lines.size() - 2, frames.count()); // header, and nothing behind the last line end
    QVERIFY(lines.at(1).startsWith(QStringLiteral("CAM 2,1920,1080,59,")));
    QVERIFY(QFile::remove(recordPath()));
    QCOMPARE(test.ndi.counts().created, test.ndi.counts().destroyed);
}

void TestNdiWindow::singleTestStoppedByTheUser()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    const Ui::NDIWindow &ui = test.ui();
    test.ndi.setScript(framesWithoutEnd());
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QTRY_VERIFY(frames.count() > 10);
    test.press();
    const int counted = frames.count();
    QCOMPARE(recordLines().size() - 2, counted); // written at once
    test.press();                                // while receivers end: nothing more happens
    QTRY_VERIFY(test.isIdle());
    QCOMPARE(usable(ui), words(allControls));
    QCOMPARE(frames.count(), counted); // late frames do not count
    QVERIFY(QFile::remove(recordPath()));
    // And again.
    test.press();
    QCOMPARE(ui.btn_test->text(), QStringLiteral("STOP"));
    QTRY_VERIFY(frames.count() > counted);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QVERIFY(QFile::remove(recordPath()));
}

void TestNdiWindow::multipleTestRunsItsTime()
{
    WindowCase test(4, 2000);
    QVERIFY(test.isReady(4));
    const Ui::NDIWindow &ui = test.ui();
    test.choose(ui.multiOption);
    test.ndi.setScript(framesWithoutEnd());
    test.check(1)->setChecked(true);
    test.check(3)->setChecked(true);
    QSignalSpy fpsMeta(test.window.get(), &NDIWindow::fpsSetMetaInfo);
    QSignalSpy pingMeta(test.window.get(), &NDIWindow::pingSetMetaInfo);
    QSignalSpy rateMeta(test.window.get(), &NDIWindow::dataRateSetMetaInfo);
    QSignalSpy labels(test.window.get(), &NDIWindow::setGraphLabel);
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QCOMPARE(usable(ui), words("test multiple source receivers preview"));
    QCOMPARE(fpsMeta.takeFirst(), (QVariantList{60, 60, 2}));
    QCOMPARE(rateMeta.takeFirst(), (QVariantList{60, 100, 2}));
    QCOMPARE(pingMeta.takeFirst(), (QVariantList{60, 10, 2}));
    QCOMPARE(labels.count(), 2);
    QCOMPARE(labels.at(1), (QVariantList{1, QStringLiteral("4")}));
    QCOMPARE(ui.cmbPreviewSources->count(), 3);
    QCOMPARE(ui.cmbPreviewSources->currentData().toInt(), 1);
    QTRY_VERIFY(ui.tblStatus->item(0, 2) && ui.tblStatus->item(1, 3));
    QVERIFY(ui.tblStatus->item(0, 2)->text().endsWith(QStringLiteral("fps")));
    QVERIFY(ui.tblStatus->item(1, 3)->text().endsWith(QStringLiteral("ms")));
    test.check(1)->setChecked(false); // the table is rebuilt under the running test
    QTRY_VERIFY(test.isIdle());
    const QStringList lines = recordLines();
    QCOMPARE(lines.size() - 2, frames.count());
    QVERIFY(lines.filter(QStringLiteral("CAM 2,")).size() > 5);
    QVERIFY(lines.filter(QStringLiteral("CAM 4,")).size() > 5);
    QVERIFY(QFile::remove(recordPath()));
}

void TestNdiWindow::nothingToTestStartsNothing_data()
{
    QTest::addColumn<int>("sources");
    QTest::addColumn<QString>("mode");
    QTest::newRow("single without sources") << 0 << QStringLiteral("singleOption");
    QTest::newRow("multiple without sources") << 0 << QStringLiteral("multiOption");
    QTest::newRow("multiple without ticks") << 3 << QStringLiteral("multiOption");
    QTest::newRow("analysis without sources") << 0 << QStringLiteral("analysisOption");
}

void TestNdiWindow::nothingToTestStartsNothing()
{
    QFETCH(int, sources);
    QFETCH(QString, mode);
    WindowCase test(sources, 60000, true);
    QVERIFY(test.isReady(sources));
    test.choose(test.window->findChild<QRadioButton *>(mode));
    const QStringList before = usable(test.ui());
    test.press();
    QCOMPARE(test.ui().btn_test->text(), QStringLiteral("TEST"));
    QCOMPARE(usable(test.ui()), before);
}

void TestNdiWindow::receiversThatEndByThemselves()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    test.ndi.setScript({hd60, hd60, hd60, errorFrame});
    const QString before = recordPath();
    test.ui().threadCount->setCurrentIndex(7);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QCOMPARE(recordLines().size() - 2, 24);
    QVERIFY(QFile::remove(recordPath()));
    Q_UNUSED(before)
    QVERIFY(!test.ui().benchmarkOption->isEnabled());
}

void TestNdiWindow::framesWithoutVideoDrawZeros()
{
    WindowCase test(2);
    QVERIFY(test.isReady(2));
    test.choose(test.ui().multiOption);
    test.ndi.setScript({});
    test.check(0)->setChecked(true);
    test.press();
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.window->sourceFrameReceived(59.94, 1234, 0, 59.0, 0, 0, 0, 16, 0, 0);
    QCOMPARE(frames.takeFirst(), (QVariantList{0, 1234, 0.0}));
    QCOMPARE(test.ui().tblStatus->item(0, 2)->text(), QStringLiteral("0fps"));
    QCOMPARE(test.ui().tblStatus->item(0, 3)->text(), QStringLiteral("0ms"));
    test.window->sourceFrameReceived(59.94, 1250, 0, 59.0, 1920, 1080, 0, 16, 0, 7); // no such row
    QCOMPARE(test.ui().tblStatus->rowCount(), 1);
    test.press();
    QCOMPARE(recordLines().size() - 2, 1);
    QVERIFY(QFile::remove(recordPath()));
    QTRY_VERIFY(test.isIdle());
}

void TestNdiWindow::framesAfterTheEndAreDropped()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.ui().L4->setText(QStringLiteral("before"));
    test.window->sourceFrameReceived(59.94, 1250, 0, 59.0, 1920, 1080, 0, 16, 0, 0);
    QCOMPARE(frames.count(), 0);
    QCOMPARE(test.ui().L4->text(), QStringLiteral("before"));
    QCOMPARE(test.ui().cmbPreviewSources->currentText(), QStringLiteral("NONE"));
}

void TestNdiWindow::figuresAreExactAndPaintedAtAPace_data()
{
    QTest::addColumn<bool>("multiple");
    QTest::newRow("panel of a single test") << false;
    QTest::newRow("table of a multiple test") << true;
}

void TestNdiWindow::figuresAreExactAndPaintedAtAPace()
{
    QFETCH(bool, multiple);
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    const Ui::NDIWindow &ui = test.ui();
    if (multiple) {
        test.choose(ui.multiOption);
        test.check(0)->setChecked(true);
    }
    test.ndi.setScript({});
    test.press();
    QVERIFY(QTest::qWaitForWindowExposed(test.window.get()));
    const auto measure = [&](int interval) {
        test.window->sourceFrameReceived(interval / 7.0, interval, 0, 59.0, 1920, 1080, 0, interval, 0, 0);
    };
    ui.cmbPreviewSources->setCurrentIndex(0);
    measure(1); // makes the cells
    QCoreApplication::processEvents();

    QWidget *const shown = multiple ? ui.tblStatus->viewport() : static_cast<QWidget *>(ui.L8);
    const EventCount paints(shown, QEvent::Paint);
    const EventCount layouts(shown->parentWidget(), QEvent::LayoutRequest);
    // Charts and figures of the panel are painted without what lies below them; the table is not.
    const EventCount below(multiple ? ui.ping : ui.middleContainer, QEvent::Paint);
    QElapsedTimer clock;
    clock.start();
    for (int interval = 2; interval < 302; ++interval) {
        measure(interval);
        const QString number = QString::number(interval);
        QCOMPARE(ui.L4->text(), QString::number(interval / 7.0, 'g', 6) + QStringLiteral("fps"));
        QCOMPARE(ui.L8->text(), number + QStringLiteral(" ms"));
        if (multiple)
            QCOMPARE(ui.tblStatus->item(0, 3)->text(), number + QStringLiteral("ms"));
        QCoreApplication::processEvents();
    }
    QVERIFY2(paints.count() <= clock.elapsed() / 50 + 2, qPrintable(QString::number(paints.count())));
    QCOMPARE(layouts.count(), 0);
    QCOMPARE(below.count(), 0);

    const int before = paints.count();
    measure(302);
    QTRY_VERIFY(paints.count() > before); // the last figure is painted, too
    test.press();
    QVERIFY(QFile::remove(recordPath()));
    QTRY_VERIFY(test.isIdle());
}

void TestNdiWindow::aNewListDuringATest()
{
    WindowCase test(3);
    QVERIFY(test.isReady(3));
    test.ndi.setScript(framesWithoutEnd());
    test.ui().sourceList->setCurrentIndex(2);
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QTRY_VERIFY(frames.count() > 3);
    const NDIlib_source_t other{"OTHER", nullptr};
    test.window->getNDISource(&other, 1);
    const int before = frames.count();
    QTRY_VERIFY(frames.count() > before + 3);
    test.press();
    const QStringList lines = recordLines();
    QCOMPARE(lines.filter(QStringLiteral("CAM 3,")).size(), lines.size() - 2);
    QVERIFY(QFile::remove(recordPath()));
    QTRY_VERIFY(test.isIdle());
}

void TestNdiWindow::analysisWithoutToolIsRefused_data()
{
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("after");
    QTest::newRow("OK goes to SINGLE") << true << QStringLiteral("singleOption");
    QTest::newRow("closing the box goes back") << false << QStringLiteral("multiOption");
}

void TestNdiWindow::analysisWithoutToolIsRefused()
{
    QFETCH(bool, accept);
    QFETCH(QString, after);
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    test.choose(test.ui().multiOption);
    NextDialog box([accept](QDialog *dialog) { accept ? dialog->accept() : dialog->reject(); });
    test.choose(test.ui().analysisOption);
    QVERIFY(box.seen);
    QVERIFY(test.window->findChild<QRadioButton *>(after)->isChecked());
    QCOMPARE(test.ui().CentralContainer->currentIndex(), 0);
}

void TestNdiWindow::analysisWithoutSamplesEnds()
{
    WindowCase test(1, 60000, true);
    QVERIFY(test.isReady(1));
    const Ui::NDIWindow &ui = test.ui();
    test.choose(ui.analysisOption);
    QSignalSpy rateMeta(test.window.get(), &NDIWindow::dataRateSetMetaInfo);
    test.press();
    QCOMPARE(rateMeta.takeFirst(), (QVariantList{60, 100, 1}));
    QCOMPARE(ui.btn_test->text(), QStringLiteral("STOP"));
    QCOMPARE(usable(ui), words("analysis source receivers"));
    QVERIFY(ui.waiting_spinner->isVisible() && !ui.progress_viewer->isVisible());
    QTRY_VERIFY(test.isIdle()); // there is no tool behind this run
    QVERIFY(!ui.waiting_spinner->isVisible() && ui.progress_viewer->isVisible());
    QVERIFY(ui.btn_test->isEnabled() && ui.benchmarkOption->isEnabled());
}

void TestNdiWindow::analysisRunsFromItsFirstSample()
{
    WindowCase test(1, 300, true);
    QVERIFY(test.isReady(1));
    const Ui::NDIWindow &ui = test.ui();
    test.choose(ui.analysisOption);
    test.press();
    QSignalSpy rates(test.window.get(), &NDIWindow::dataRateRender);
    QSignalSpy sizes(test.window.get(), &NDIWindow::videoSizeRender);
    test.window->gotVideoDataRate(QTime(10, 0, 0), 6.7975);
    QVERIFY(!ui.waiting_spinner->isVisible() && ui.progress_viewer->isVisible());
    QCOMPARE(ui.lblDataRateValue->text(), QStringLiteral("6.7975MBps"));
    QCOMPARE(rates.takeFirst(), (QVariantList{0, 0, 6.7975}));
    test.window->gotVideoSize(QTime(10, 0, 0, 250), 0.2, 9.75, 1.5);
    QCOMPARE(ui.lblLatencyValue->text(), QStringLiteral("Avg: 1.5mS  Min: 0.2mS  Max: 9.75mS"));
    QCOMPARE(sizes.takeFirst(), (QVariantList{0, 250, 0.2, 9.75, 1.5}));
    QCOMPARE(ui.analysis_latency_plot->averagePoints(0)[0], QPointF(250, 1.5));
    QCOMPARE(ui.analysis_data_plot->plainPoints(0)[0], QPointF(0, 6.7975));
    QTRY_VERIFY(test.isIdle());
    QVERIFY(ui.btn_test->isEnabled() && ui.benchmarkOption->isEnabled());
}

void TestNdiWindow::keysStartAndStop()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    QVERIFY(QTest::qWaitForWindowExposed(test.window.get()));
    QApplication::setActiveWindow(test.window.get());
    QTest::keyClick(test.window.get(), Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(test.ui().btn_test->text(), QStringLiteral("STOP"));
    QTest::keyClick(test.window.get(), Qt::Key_Return, Qt::ControlModifier);
    QTRY_VERIFY(test.isIdle());
    QVERIFY(test.ui().btn_test->toolTip().contains(QStringLiteral("Ctrl+Return")));
}

void TestNdiWindow::runtimeThatDoesNotStart()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    expectScreenWarnings();
    FakeNdi ndi;
    ndi.setInitializeFails(true);
    QString text;
    QString title;
    NextDialog box([&](QDialog *dialog) {
        auto *message = qobject_cast<QMessageBox *>(dialog);
        if (message) {
            text = message->text();
            title = message->windowTitle();
        }
        dialog->accept();
    });
    NDIWindow window;
    QSignalSpy closed(&window, &NDIWindow::closeWindow);
    QVERIFY(box.seen);
    QCOMPARE(text, QStringLiteral("Can not initialize NDI Lib"));
    QCOMPARE(title, QStringLiteral("Error"));
    QTRY_COMPARE(closed.count(), 1);
}

void TestNdiWindow::closing_data()
{
    QTest::addColumn<QString>("state");
    QTest::newRow("while searching") << QStringLiteral("searching");
    QTest::newRow("idle") << QStringLiteral("idle");
    QTest::newRow("single test") << QStringLiteral("single");
    QTest::newRow("stopping") << QStringLiteral("stopping");
    QTest::newRow("analysis") << QStringLiteral("analysis");
}

void TestNdiWindow::closing()
{
    QFETCH(QString, state);
    WindowCase test(2, 60000, true);
    QSignalSpy closed(test.window.get(), &NDIWindow::closeWindow);
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    if (state != QLatin1String("searching"))
        QVERIFY(test.isReady(2));
    if (state == QLatin1String("single") || state == QLatin1String("stopping")) {
        test.ndi.setScript(framesWithoutEnd());
        test.press();
        QTRY_VERIFY(frames.count() > 5);
    }
    if (state == QLatin1String("stopping"))
        test.press();
    if (state == QLatin1String("analysis")) {
        test.choose(test.ui().analysisOption);
        test.press();
    }
    QElapsedTimer clock;
    clock.start();
    test.window->requestClose();
    test.window->requestClose();                                                    // once is enough
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed()))); // a promise
    QCOMPARE(closed.count(), 1);
    if (frames.count() > 0) {
        QCOMPARE(recordLines().size() - 2, frames.count());
        QVERIFY(QFile::remove(recordPath()));
    }
    test.window.reset();
    QCOMPARE(test.ndi.counts().created, test.ndi.counts().destroyed);
    QCOMPARE(test.ndi.counts().findersCreated, test.ndi.counts().findersDestroyed);
    QCOMPARE(test.ndi.counts().libraryLeft, 1);
}

QTEST_MAIN(TestNdiWindow)
#include "tst_ndiwindow.moc"
