#pragma once

#include "app/recordfile.h"
#include "mainwindow/ndiwindow.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "probes/analysisworker.h"
#include "probes/machinefactsreader.h"
#include "tests/support/fakendi.h"
#include "tests/support/testbase.h"
#include "ui_ndiwindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

// The window on a scripted runtime, and what tests do with it.

inline const FakeFrame hd60 = FakeFrame::ofVideo(1920, 1080, 60000, 1001);
inline const FakeFrame errorFrame = FakeFrame::ofType(NDIlib_frame_type_error);

inline std::vector<FakeFrame> framesWithoutEnd()
{
    return std::vector<FakeFrame>(100000, hd60);
}

inline QVector<QByteArray> namesOf(int count)
{
    QVector<QByteArray> names;
    for (int i = 0; i < count; ++i)
        names.append("CAM " + QByteArray::number(i + 1));
    return names;
}

/// Wine cannot scale window frames; an X server without window manager cannot give the focus to a window
/// that is not there yet. Qt tells both.
inline void expectScreenWarnings()
{
    TestBase::expectWarning(QStringLiteral("EnableNonClientDpiScaling() failed"));
    TestBase::expectWarning(QStringLiteral("XCB error: 8 (BadMatch)"));
    TestBase::expectWarning(QStringLiteral("QPixmap::fromWinHICON()")); // Wine has no pictures for message boxes
}

/// A window on a scripted runtime, shown and with its first list of sources.
class WindowCase {
public:
    explicit WindowCase(int sources, int minuteMs = 60000, bool toolThere = false, int emptyListsBefore = 0,
                        AnalysisRun::MakeWorker makeWorker = {}, bool revisionOnly = false)
    {
        TestBase::expectWarning(QStringLiteral("Could not parse stylesheet"));
        expectScreenWarnings();
        QVector<QVector<QByteArray>> lists(emptyListsBefore);
        lists.append(namesOf(sources));
        ndi.setSourceLists(lists);
        ndi.setScript({errorFrame}); // for the probes of the formats
        // About 60 frames a second, as a real source has: the window must keep up with a dozen receivers.
        ndi.setOnCapture([](int) { std::this_thread::sleep_for(std::chrono::milliseconds(16)); });
        NDIWindowParts parts;
        parts.minuteMs = minuteMs;
        parts.analysisToolThere = [toolThere] { return toolThere; };
        parts.makeAnalysisWorker = makeWorker;
        if (!makeWorker)
            parts.makeAnalysisWorker = [] { return std::make_unique<AnalysisWorker>(QString(), QString()); };
        parts.adapterProbes = [] {
            AdapterProbes probes;
            probes.adapters = [](const std::atomic<bool> &) { return NetworkAdapters(); };
            probes.linkSpeed = [](const NetworkAdapterInfo &, const std::atomic<bool> &) { return QString(); };
            return probes;
        };
        parts.revisionOnly = revisionOnly;
        window = std::make_unique<NDIWindow>(parts);
        window->show();
    }

    bool isReady(int sources)
    {
        return QTest::qWaitFor([&] {
            return window->form().sourceList->count() == sources
                   && window->form().label_source->text() == QStringLiteral("NDI SOURCES");
        });
    }
    const Ui::NDIWindow &ui() const { return window->form(); }
    void choose(QRadioButton *option)
    {
        option->setChecked(true);
        emit option->clicked(true);
    }
    QCheckBox *check(int row) const { return ui().sourceTable->cellWidget(row, 0)->findChild<QCheckBox *>(); }
    void press() { ui().btn_test->click(); }
    bool isIdle() const { return ui().btn_test->text() == QStringLiteral("TEST") && ui().timeList->isEnabled(); }

    FakeNdi ndi;
    std::unique_ptr<NDIWindow> window;
};

/// Does something with the next modal dialog, when it is there.
class NextDialog : public QObject {
public:
    explicit NextDialog(std::function<void(QDialog *)> act, QDialog *after = nullptr) : m_act(std::move(act))
    {
        connect(&m_timer, &QTimer::timeout, this, [this, after] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!dialog || dialog == after || !dialog->isVisible())
                return;
            m_timer.stop();
            seen = true;
            m_act(dialog);
        });
        m_timer.start(10);
    }
    bool seen = false;

private:
    QTimer m_timer;
    std::function<void(QDialog *)> m_act;
};

/// Types a path into a file dialog and accepts it.
inline void chooseFile(QDialog *dialog, const QString &path)
{
    auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    QVERIFY(name);
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
}

/// Accepts the question whether to look at a report, and then chooses this one.
inline void openReport(QDialog *question, const QString &path)
{
    auto *next = new NextDialog([path](QDialog *dialog) { chooseFile(dialog, path); }, question);
    next->setParent(QCoreApplication::instance());
    question->accept();
}

/// Names of the controls that a state may disable, those that are usable.
inline QStringList usable(const Ui::NDIWindow &ui)
{
    const QVector<QPair<QString, const QWidget *>> controls{
        {QStringLiteral("test"), ui.btn_test},           {QStringLiteral("time"), ui.timeList},
        {QStringLiteral("single"), ui.singleOption},     {QStringLiteral("multiple"), ui.multiOption},
        {QStringLiteral("analysis"), ui.analysisOption}, {QStringLiteral("benchmark"), ui.benchmarkOption},
        {QStringLiteral("refresh"), ui.btn_refresh},     {QStringLiteral("import"), ui.btn_import},
        {QStringLiteral("export"), ui.btn_export},       {QStringLiteral("import1"), ui.btn_import1},
        {QStringLiteral("export1"), ui.btn_export1},     {QStringLiteral("source"), ui.sourceList},
        {QStringLiteral("receivers"), ui.threadCount},   {QStringLiteral("preview"), ui.cmbPreviewSources}};
    QStringList names;
    for (const auto &[name, control] : controls) {
        if (control->isEnabled())
            names.append(name);
    }
    return names;
}

inline QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

inline constexpr const char *allControls =
    "test time single multiple analysis benchmark refresh import export import1 export1 source receivers preview";

inline QStringList recordLines()
{
    QFile file(recordPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}
