// Makes the pictures of the documents by using the window as a person would: vexa_screens FOLDER.
#include "charts/customplot.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/screens/stage.h"
#include "tests/standin_analysis/standincontrol.h"
#include "ui_ndiwindow.h"
#include "widgets/darkstyle.h"
#include "widgets/stylesheetnoise.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFont>
#include <QLineEdit>
#include <QtTest>

#include <cmath>
#include <cstdio>

namespace {

void chooseFile(QDialog *dialog, const QString &path)
{
    auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
}

void showIdle(Stage &stage)
{
    stage.openWindow();
    stage.save("idle");
    stage.ui().btn_system->click();
    stage.save("tab-system");
    stage.ui().btn_network->click();
    stage.save("tab-network");
    stage.ui().btn_dev->click();
    stage.save("tab-device");
}

void showSingle(Stage &stage)
{
    stage.openWindow();
    const Ui::NDIWindow &ui = stage.ui();
    ui.threadCount->setCurrentIndex(7);
    ui.btn_test->click();
    stage.awaitProgress(70);
    stage.save("single-running");
    stage.awaitIdle();
    stage.save("single-finished");
}

/// The report of the test that has just ended.
void showRevision(Stage &stage)
{
    const Ui::NDIWindow &ui = stage.ui();
    const QString path = stage.filePath("report.vdf");
    stage.withDialog([&] { ui.btn_export1->click(); }, [&](QDialog *dialog) { chooseFile(dialog, path); });
    stage.openWindow();
    const Ui::NDIWindow &fresh = stage.ui();
    stage.withDialog([&] { fresh.btn_import1->click(); },
                     [&](QDialog *question) {
                         stage.save("revision-question");
                         // The choice of the file comes when the question has gone.
                         Stage::whenDialogComes([path](QDialog *dialog) { chooseFile(dialog, path); }, question);
                         question->accept();
                     });
    stage.save("revision");
}

void showMultiple(Stage &stage)
{
    stage.openWindow();
    const Ui::NDIWindow &ui = stage.ui();
    stage.choose(ui.multiOption);
    for (int row = 1; row < 7; ++row)
        ui.sourceTable->cellWidget(row, 0)->findChild<QCheckBox *>()->setChecked(true);
    ui.btn_test->click();
    stage.awaitProgress(70);
    stage.save("multiple-running");
    ui.btn_test->click();
    stage.awaitIdle();
    ui.btn_expanding->click();
    stage.save("details");
    ui.btn_collapsing->click();
}

void showAnalysis(Stage &stage)
{
    stage.openWindow();
    const Ui::NDIWindow &ui = stage.ui();
    StandinControl tools;
    stage.choose(ui.analysisOption);
    ui.btn_test->click();
    stage.await("the analysis tool", [&] { return tools.waitForTools(); });
    stage.save("analysis-waiting");
    // Half a minute of its output, which carries its own times.
    constexpr int seconds = 40;
    for (int second = 0; second < seconds; ++second) {
        const double phase = second * 0.7;
        const QByteArray time = "12:01:" + QByteArray::number(second + 10).rightJustified(2, '0') + ".250: ";
        const QByteArray rate = QByteArray::number(15.6 + 0.8 * std::sin(phase), 'f', 3);
        const QByteArray least = QByteArray::number(1.4 + 0.3 * std::sin(phase * 1.3), 'f', 2);
        const QByteArray mean = QByteArray::number(2.6 + 0.5 * std::sin(phase * 0.9), 'f', 2);
        const QByteArray most = QByteArray::number(5.1 + 1.4 * std::cos(phase * 1.1), 'f', 2);
        tools.tell("out", time + "Video data rate (MBps) Avg=" + rate + "\r\n" + time + "Video recv (mS) Min=" + least
                              + " Avg=" + mean + " Max=" + most + "\r\n");
    }
    stage.await("the last sample", [&] {
        return ui.analysis_latency_plot->seriesCount() == 1
               && ui.analysis_latency_plot->averagePoints(0).size() == seconds;
    });
    stage.awaitProgress(5);
    stage.save("analysis-running");
    tools.tell("exit 0");
    tools.waitUntilGone();
}

void showBenchmark(Stage &stage)
{
    stage.openWindow();
    const Ui::NDIWindow &ui = stage.ui();
    stage.choose(ui.benchmarkOption);
    stage.save("benchmark");
    stage.withDialog([&] { ui.btn_benchmark->click(); },
                     [&](QDialog *dialog) {
                         dialog->findChild<QAbstractButton *>(QStringLiteral("btn_test"))->click();
                         auto *result = dialog->findChild<QWidget *>(QStringLiteral("widBenchmarkInfo"));
                         stage.await("the result of the benchmark", [result] { return result->isVisible(); });
                         stage.save("benchmark-result");
                         dialog->reject();
                     });
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fputs("vexa_screens FOLDER\n", stderr);
        return 2;
    }
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QApplication::setStyle(new DarkStyle);
    const StyleSheetNoiseFilter filter;
    initVexaResources();
    loadFonts();
    QFont font(QStringLiteral("Kumbh Sans"));
    font.setWeight(QFont::Bold);
    QApplication::setFont(font);
    QApplication::setQuitOnLastWindowClosed(false);
    Stage stage(QDir(QString::fromLocal8Bit(argv[1])).absolutePath()); // the stage changes the folder
    if (!stage.setUp()) {
        std::fputs("vexa_screens: the stage could not be set up\n", stderr);
        return 1;
    }
    showIdle(stage);
    showAnalysis(stage);
    showBenchmark(stage);
    showSingle(stage);
    showRevision(stage);
    showMultiple(stage);
    return 0;
}
