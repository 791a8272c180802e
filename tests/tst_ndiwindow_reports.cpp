#include "charts/customplot.h"
#include "resources/vexaresources.h"
#include "tests/support/testhome.h"
#include "tests/support/windowcase.h"

#include <QSignalSpy>

/// Export, import, and the window that can only look at reports.
class TestNdiWindowReports final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void exportAndImport();
    void importOfAnAnalysis_data();
    void importOfAnAnalysis();
    void cancelledDialogsChangeNothing();
    void withoutRuntimeReportsCanBeSeen();

private:
    TestHome m_home;
};

void TestNdiWindowReports::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.use());
}

void TestNdiWindowReports::exportAndImport()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    const Ui::NDIWindow &ui = test.ui();
    emit test.window->fpsSetMetaInfo(60, 90, 2);
    emit test.window->pingSetMetaInfo(60, 10, 2);
    for (int i = 0; i < 50; ++i) {
        emit test.window->frameRender(i % 2, i * 100, 59.94);
        emit test.window->pingRender(i % 2, i * 100, 16.0 + i);
    }
    const QString path = m_home.filePath(QStringLiteral("test.vdf"));
    test.choose(ui.multiOption);
    NextDialog save([&](QDialog *dialog) { chooseFile(dialog, path); });
    ui.btn_export1->click();
    QVERIFY(save.seen);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    QVERIFY(content.startsWith("MULTITEST\nFPSCHART\n60 90\n2\n25\n0 59.94\n200 59.94\n"));
    QVERIFY(content.contains("PINGCHART\n60 70\n2\n25\n0 16\n"));

    // Other charts and another mode, and back to what was exported.
    test.choose(ui.singleOption);
    emit test.window->fpsSetMetaInfo(300, 60, 1);
    emit test.window->pingSetMetaInfo(300, 10, 1);
    NextDialog ask([&](QDialog *dialog) { openReport(dialog, path); });
    ui.btn_import1->click();
    QVERIFY(ask.seen);
    QTRY_VERIFY(ui.multiOption->isChecked());
    QCOMPARE(ui.SourceContainer->currentIndex(), 1);
    QVERIFY(ui.btn_import->property("selected").toBool() && ui.btn_import1->property("selected").toBool());
    QCOMPARE(ui.fpsPlot->seriesCount(), 2);
    QCOMPARE(ui.fpsPlot->axisLengthS(), 60.0);
    QCOMPARE(ui.fpsPlot->axisTop(), 90.0);
    QCOMPARE(ui.fpsPlot->plainPoints(1).size(), std::size_t(25));
    QCOMPARE(ui.pingPlot->plainPoints(1)[24], QPointF(4900, 65));
    test.choose(ui.singleOption);
    test.press(); // a test ends the revision
    QVERIFY(!ui.btn_import->property("selected").toBool());
    test.press();
    QTRY_VERIFY(test.isIdle());
}

void TestNdiWindowReports::importOfAnAnalysis_data()
{
    QTest::addColumn<bool>("toolThere");
    QTest::newRow("with the tool") << true;
    QTest::newRow("without the tool nothing is read") << false;
}

void TestNdiWindowReports::importOfAnAnalysis()
{
    QFETCH(bool, toolThere);
    const QString path = m_home.filePath(QStringLiteral("analysis.vdf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("ANALYSISTEST\nLATENCYCHART\n60 100\n1\n1\n0 1.5 9.75 0.25\nDATARATECHART\n60 100\n1\n1\n0 6.5\n");
    file.close();
    WindowCase test(1, 60000, toolThere);
    QVERIFY(test.isReady(1));
    NextDialog ask([&](QDialog *dialog) { openReport(dialog, path); });
    test.ui().btn_import1->click();
    QVERIFY(test.ui().btn_import->property("selected").toBool());
    QCOMPARE(test.ui().analysisOption->isChecked(), toolThere);
    QCOMPARE(test.ui().analysis_latency_plot->seriesCount(), toolThere ? 1 : 0);
    if (!toolThere)
        return;
    QCOMPARE(test.ui().analysis_latency_plot->maximumPoints(0)[0], QPointF(0, 9.75));
    QCOMPARE(test.ui().analysis_data_plot->plainPoints(0)[0], QPointF(0, 6.5));
}

void TestNdiWindowReports::cancelledDialogsChangeNothing()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    NextDialog box([](QDialog *dialog) { dialog->reject(); });
    test.ui().btn_import1->click();
    QVERIFY(box.seen);
    NextDialog files([](QDialog *dialog) { dialog->reject(); });
    test.ui().btn_export1->click();
    QVERIFY(files.seen);
    QVERIFY(!test.ui().btn_import->property("selected").toBool());
    QVERIFY(test.ui().singleOption->isChecked());
}

void TestNdiWindowReports::withoutRuntimeReportsCanBeSeen()
{
    const QString path = m_home.filePath(QStringLiteral("multiple.vdf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("MULTITEST\nFPSCHART\n60 90\n1\n2\n100 59.94\n200 60\nPINGCHART\n60 10\n1\n1\n100 3\n");
    file.close();
    WindowCase test(2, 60000, true, 0, {}, true);
    test.ndi.setInitializeFails(true);
    const Ui::NDIWindow &ui = test.ui();
    QCOMPARE(ui.label_source->text(), QStringLiteral("NO NDI RUNTIME"));
    QVERIFY(ui.label_source->toolTip().contains(QStringLiteral("https://")));
    QCOMPARE(ui.btn_test->toolTip(), ui.label_source->toolTip());
    QString withoutTest = QString::fromLatin1(allControls);
    withoutTest.remove(QStringLiteral("test "));
    QCOMPARE(usable(ui), withoutTest.split(QLatin1Char(' ')));
    ui.btn_refresh->click();
    QCOMPARE(ui.label_source->text(), QStringLiteral("NO NDI RUNTIME"));

    NextDialog ask([&](QDialog *dialog) { openReport(dialog, path); });
    ui.btn_import1->click();
    QVERIFY(ask.seen);
    QVERIFY(ui.multiOption->isChecked());
    QCOMPARE(ui.fpsPlot->plainPoints(0).size(), std::size_t(2));
    test.window->startStopTest(); // nothing to test: the report stays
    QVERIFY(ui.btn_import->property("selected").toBool());
    QCOMPARE(ui.btn_test->text(), QStringLiteral("TEST"));
    for (QRadioButton *option : {ui.singleOption, ui.analysisOption, ui.benchmarkOption, ui.multiOption}) {
        test.choose(option);
        QVERIFY(!ui.btn_test->isEnabled());
    }
    const QString copy = m_home.filePath(QStringLiteral("copy.vdf"));
    NextDialog save([&](QDialog *dialog) { chooseFile(dialog, copy); });
    ui.btn_export1->click();
    QFile saved(copy);
    QVERIFY(saved.open(QIODevice::ReadOnly) && file.open(QIODevice::ReadOnly));
    QCOMPARE(saved.readAll(), file.readAll());

    QSignalSpy closed(test.window.get(), &NDIWindow::closeWindow);
    test.window->close();
    QCOMPARE(closed.count(), 1);
    test.window.reset();
    QCOMPARE(test.ndi.counts().initialized, 0);
    QCOMPARE(test.ndi.counts().libraryLeft, 0);
    QCOMPARE(test.ndi.counts().findersCreated, 0);
}

QTEST_MAIN(TestNdiWindowReports)
#include "tst_ndiwindow_reports.moc"
